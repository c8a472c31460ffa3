#include "orvo/id3.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <ios>
#include <istream>
#include <iterator>
#include <new>
#include <random>
#include <sstream>
#include <string>
#include <type_traits>

#include "orvo/errors.h"
#include "tests/support/allocations.h"
#include "tests/support/capture.h"
#include "tests/support/files.h"
#include "tests/support/id3_writer.h"
#include "tests/support/interpose/calls.h"
#include "tests/support/standard_library.h"

namespace {

using orvo::NoID3Found;
using orvo::NotACOMM;
using orvo_test::BigEndian;
using orvo_test::Id3Comment;
using orvo_test::Id3Frame;
using orvo_test::Id3Tag;
using testing::ThrowsMessage;

constexpr unsigned char kExtendedHeader = 0x40;

static_assert(sizeof(orvo::ID3Header) == 10);
static_assert(std::is_trivially_copyable_v<orvo::ID3Header>);
static_assert(std::is_move_assignable_v<orvo::COMMFrame>);

std::string GetComment(const std::string& bytes) {
  std::istringstream stream(bytes);
  return orvo::get_comm(stream);
}

orvo::ID3Header HeaderOf(const std::string& bytes) {
  orvo::ID3Header header;
  std::memcpy(&header, bytes.data(), sizeof header);
  return header;
}

TEST(ID3Header, IsZeroAtFirst) {
  const orvo::ID3Header header;
  EXPECT_EQ(header.id_str(), std::string(3, '\0'));
  EXPECT_EQ(header.get_size(), 0U);
}

TEST(ID3Header, NamesItsIdentifier) {
  EXPECT_EQ(HeaderOf("ID3xxxxxxx").id_str(), "ID3");
  EXPECT_EQ(HeaderOf("RIFFxxxxxx").id_str(), "RIF");
}

TEST(ID3Header, CombinesSevenBitsOfEachSizeByte) {
  EXPECT_EQ(HeaderOf(Id3Tag(257, "")).get_size(), 257U);
  EXPECT_EQ(HeaderOf("ID3vvf\x01\x02\x03\x04").get_size(),
            (1U << 21) + (2U << 14) + (3U << 7) + 4U);
  EXPECT_EQ(HeaderOf("ID3vvf\x7f\x7f\x7f\x7f").get_size(), 0x0fffffffU);
}

TEST(ID3Header, DoesNotMaskTheTopBitsOfTheSize) {
  EXPECT_EQ(HeaderOf("ID3vvf\xff\xff\xff\xff").get_size(), 0x1fffffffU);
  EXPECT_EQ(HeaderOf(std::string("ID3vvf\0\0\x80\x80", 10)).get_size(),
            0x4080U);
}

TEST(ID3Header, TellsItsFlags) {
  const struct {
    unsigned char flags;
    bool unsynchronisation;
    bool extended_header;
    bool experimental;
  } cases[] = {
      {0x00, false, false, false}, {0x80, true, false, false},
      {0x40, false, true, false},  {0x20, false, false, true},
      {0x1f, false, false, false}, {0xff, true, true, true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(int{c.flags});
    const orvo::ID3Header header = HeaderOf(Id3Tag("", c.flags));
    EXPECT_EQ(header.unsynchronisation(), c.unsynchronisation);
    EXPECT_EQ(header.extended_header(), c.extended_header);
    EXPECT_EQ(header.experimental(), c.experimental);
  }
}

TEST(ExtendedHeader, SkipsWhatFollowsTheFirstTenBytes) {
  const struct {
    std::uint32_t size;
    int position;
  } cases[] = {{0, 10}, {5, 10}, {6, 10}, {7, 11}, {10, 14}, {20, 24}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.size);
    std::istringstream stream(BigEndian(c.size) + std::string(100, 'x'));
    EXPECT_EQ(orvo::ExtendedHeader(stream).size(), c.size);
    EXPECT_EQ(stream.tellg(), c.position);
  }
}

TEST(FrameHeader, ReadsIdentifierAndSize) {
  std::istringstream stream("TIT2" + BigEndian(0x81020384) + "ffrest");
  const orvo::FrameHeader header(stream);
  EXPECT_EQ(header.id_str(), "TIT2");
  EXPECT_EQ(header.size(), 0x81020384U);
  EXPECT_EQ(stream.tellg(), 10);
}

TEST(FrameHeader, TakesMissingBytesForZero) {
  std::istringstream stream("TI");
  const orvo::FrameHeader header(stream);
  EXPECT_EQ(header.id_str(), std::string("TI\0\0", 4));
  EXPECT_EQ(header.size(), 0U);
}

TEST(COMMFrame, HoldsThePartsOfAComment) {
  std::istringstream stream(Id3Comment("about", "text\nof it") + "rest");
  const orvo::COMMFrame frame(stream);
  EXPECT_EQ(frame.id_str(), "COMM");
  EXPECT_EQ(frame.header.size(), 20U);
  EXPECT_EQ(frame.encoding, 0);
  EXPECT_EQ(std::string(frame.language, 3), "eng");
  EXPECT_EQ(frame.description, "about");
  EXPECT_EQ(frame.text, "text\nof it");
  EXPECT_EQ(stream.tellg(), 30);
}

TEST(COMMFrame, KeepsTheOrderOfItsParts) {
  std::istringstream stream(Id3Comment("about", "text"));
  const orvo::COMMFrame frame(stream);
  const void* const parts[] = {&frame.header, &frame.encoding, frame.language,
                               &frame.description, &frame.text};
  EXPECT_EQ(parts[0], &frame);
  EXPECT_TRUE(
      std::is_sorted(std::begin(parts), std::end(parts), std::less<>()));
}

TEST(COMMFrame, IsMovable) {
  std::istringstream stream(Id3Comment("a", "first") +
                            Id3Comment("b", "second"));
  orvo::COMMFrame frame(stream);
  std::memcpy(frame.language, "deu", 3);
  frame = orvo::COMMFrame(stream);
  EXPECT_EQ(frame.text, "second");
  EXPECT_EQ(std::string(frame.language, 3), "eng");
}

TEST(COMMFrame, IsCopied) {
  std::istringstream stream(Id3Comment("a", "first") +
                            Id3Comment("b", "second"));
  const orvo::COMMFrame first(stream);
  orvo::COMMFrame copy(first);
  EXPECT_EQ(copy.text, "first");
  EXPECT_EQ(copy.header.size(), first.header.size());
  const orvo::COMMFrame second(stream);
  std::memcpy(copy.language, "deu", 3);
  copy = second;
  EXPECT_EQ(copy.description, "b");
  EXPECT_EQ(std::string(copy.language, 3), "eng");
  const orvo::COMMFrame moved(std::move(copy));
  EXPECT_EQ(moved.text, "second");
}

TEST(COMMFrame, RejectsAndSkipsAnotherFrame) {
  std::istringstream stream(Id3Frame("TIT2", "title") + "rest");
  EXPECT_THAT([&] { orvo::COMMFrame{stream}; },
              ThrowsMessage<NotACOMM>("Not a COMM frame."));
  EXPECT_EQ(stream.tellg(), 15);
  EXPECT_EQ(stream.get(), 'r');
}

TEST(COMMFrame, RejectsAnotherEncodingAndStaysBehindTheLanguage) {
  std::istringstream stream(Id3Comment("about", "text", 1));
  EXPECT_THAT([&] { orvo::COMMFrame{stream}; },
              ThrowsMessage<NotACOMM>("Only encoding == 0 is supported."));
  EXPECT_EQ(stream.tellg(), 14);
}

TEST(COMMFrame, ReadsFramesBeyond4GiB) {
  const orvo_test::TemporaryFolder folder;
  const std::string path = folder / "sparse";
  const std::streamoff start = (std::streamoff{1} << 32) + 7;
  {
    std::ofstream file(path, std::ios_base::binary);
    file.seekp(start);
    file << Id3Frame("TIT2", "title") << Id3Comment("", "far away") << "rest";
  }
  std::ifstream file(path, std::ios_base::binary);
  file.seekg(start);
  EXPECT_THROW(orvo::COMMFrame{file}, NotACOMM);
  EXPECT_EQ(orvo::COMMFrame(file).text, "far away");
}

TEST(GetComm, ReturnsTheTextOfAComment) {
  EXPECT_EQ(GetComment(Id3Tag(Id3Comment("", "hello"))), "hello");
  EXPECT_EQ(GetComment(Id3Tag(Id3Comment("about", "hello"))), "hello");
}

TEST(GetComm, ReturnsTheFirstOfSeveralComments) {
  EXPECT_EQ(GetComment(Id3Tag(Id3Comment("", "one") + Id3Comment("", "two"))),
            "one");
  EXPECT_EQ(GetComment(Id3Tag(Id3Comment("", "") + Id3Comment("", "two"))), "");
}

TEST(GetComm, KeepsEveryByteOfTheText) {
  std::string text;
  for (int byte = 0; byte < 256; ++byte) text += static_cast<char>(byte);
  EXPECT_EQ(GetComment(Id3Tag(Id3Comment("", text))), text);
}

TEST(GetComm, ReturnsLongTextsWhole) {
  const std::string text(300000, 'x');
  EXPECT_EQ(GetComment(Id3Tag(Id3Comment("", text) + "rest")), text);
}

TEST(GetComm, SkipsOtherFramesBySize) {
  EXPECT_EQ(
      GetComment(Id3Tag(Id3Frame("TIT2", "COMM title") + Id3Frame("TPE1", "") +
                        Id3Comment("", "comment"))),
      "comment");
}

TEST(GetComm, ReadsFrameSizesAsPlainNumbers) {
  EXPECT_EQ(GetComment(Id3Tag(Id3Frame("APIC", std::string(200, 'x')) +
                              Id3Comment("", "comment"))),
            "comment");
}

TEST(GetComm, ReturnsNothingWithoutAComment) {
  EXPECT_EQ(GetComment(Id3Tag("")), "");
  EXPECT_EQ(GetComment(Id3Tag(Id3Frame("TIT2", "title"))), "");
  EXPECT_EQ(GetComment(Id3Tag(Id3Frame("comm", "title"))), "");
}

TEST(GetComm, PassesPadding) {
  EXPECT_EQ(GetComment(Id3Tag(std::string(1000, '\0')) + "audio"), "");
  EXPECT_EQ(GetComment(Id3Tag(std::string(30, '\0') + Id3Comment("", "late"))),
            "late");
}

TEST(GetComm, HasNoTextIfTheDescriptionFillsTheFrame) {
  const std::string body = std::string("\0engdescription\0", 16);
  EXPECT_EQ(GetComment(Id3Tag(Id3Frame("COMM", body) + "rest")), "");
}

TEST(GetComm, HasNoTextIfTheDescriptionPassesTheEndOfTheFrame) {
  const std::string body = std::string("\0engdescription\0text", 20);
  EXPECT_EQ(GetComment(Id3Tag(Id3Frame("COMM", 8, body))), "");
  EXPECT_EQ(GetComment(Id3Tag(Id3Frame("COMM", 15, body))), "");
  EXPECT_EQ(GetComment(Id3Tag(Id3Frame("COMM", 17, body))), "t");
  EXPECT_EQ(GetComment(Id3Tag(Id3Frame("COMM", 0, body))), "");
}

TEST(GetComm, StopsAtTheEndIfTheDescriptionHasNone) {
  const std::string body = std::string("\0eng", 4) + "no zero byte";
  EXPECT_EQ(GetComment(Id3Tag(Id3Frame("COMM", body))), "");
  EXPECT_EQ(GetComment(Id3Tag(Id3Frame("COMM", 1000, body))), "");
}

TEST(GetComm, PassesCommentsInOtherEncodings) {
  EXPECT_EQ(
      GetComment(Id3Tag(Id3Comment("", "", 1) + Id3Comment("", "second"))), "");
  // The search goes on behind the language; ten bytes there are a frame.
  const std::string body = "\1eng" + Id3Frame("XXXX", "");
  EXPECT_EQ(
      GetComment(Id3Tag(Id3Frame("COMM", body) + Id3Comment("", "second"))),
      "second");
}

TEST(GetComm, FindsAFrameInsideACommentInAnotherEncoding) {
  const std::string body = "\1eng" + Id3Comment("", "inside");
  EXPECT_EQ(
      GetComment(Id3Tag(Id3Frame("COMM", body) + Id3Comment("", "behind"))),
      "inside");
}

TEST(GetComm, SkipsAnExtendedHeader) {
  const std::string comment = Id3Comment("", "hello");
  const std::string flags_and_padding(6, '\0');
  EXPECT_EQ(GetComment(Id3Tag(BigEndian(6) + flags_and_padding + comment,
                              kExtendedHeader)),
            "hello");
  EXPECT_EQ(
      GetComment(Id3Tag(BigEndian(10) + flags_and_padding + "CRC!" + comment,
                        kExtendedHeader)),
      "hello");
}

TEST(GetComm, IgnoresFlagsOfFramesAndHeaders) {
  const std::string flags = "\xff\xff";
  const std::string padding = "\xff\xff\xff\xff";
  const std::string title = "TIT2" + BigEndian(5) + flags + "title";
  const std::string comment =
      "COMM" + BigEndian(10) + flags + std::string("\0eng\0", 5) + "hello";
  EXPECT_EQ(GetComment(Id3Tag(title + comment)), "hello");
  EXPECT_EQ(GetComment(Id3Tag(title + comment, 0xa0)), "hello");
  EXPECT_EQ(GetComment(Id3Tag(BigEndian(6) + flags + padding + title + comment,
                              kExtendedHeader)),
            "hello");
}

TEST(GetComm, StopsBehindAnExtendedHeaderOfAnySize) {
  for (const std::uint32_t size : {0x7fffffffU, 0x80000000U, 0xffffffffU}) {
    SCOPED_TRACE(size);
    EXPECT_EQ(GetComment(Id3Tag(BigEndian(size) + std::string(50, '\0'),
                                kExtendedHeader)),
              "");
  }
}

TEST(GetComm, NamesTheBytesThatAreNoTag) {
  EXPECT_THAT([] { GetComment("RIFF....WAVEfmt "); },
              ThrowsMessage<NoID3Found>("No ID3 tag found. RIF"));
  EXPECT_THAT([] { GetComment("id3456789012"); },
              ThrowsMessage<NoID3Found>("No ID3 tag found. id3"));
  EXPECT_THAT([] { GetComment("\xff\xfb\x90"); },
              ThrowsMessage<NoID3Found>("No ID3 tag found. \xff\xfb\x90"));
}

TEST(GetComm, NamesOnlyBytesThatWereRead) {
  EXPECT_THAT([] { GetComment("RI"); },
              ThrowsMessage<NoID3Found>("No ID3 tag found. RI"));
  EXPECT_THAT([] { GetComment("I"); },
              ThrowsMessage<NoID3Found>("No ID3 tag found. I"));
  EXPECT_THAT([] { GetComment(""); },
              ThrowsMessage<NoID3Found>("No ID3 tag found. "));
}

// A comment at an exact position, behind one frame that fills the gap.
std::string CommentAt(std::size_t position) {
  return Id3Frame("XXXX", std::string(position - 20, 'x')) +
         Id3Comment("", "found");
}

TEST(GetComm, ReadsAFrameThatBeginsAtTheEndOfTheTag) {
  EXPECT_EQ(GetComment(Id3Tag(490, CommentAt(500))), "found");
  EXPECT_EQ(GetComment(Id3Tag(489, CommentAt(500))), "");
}

TEST(GetComm, ReadsAFrameThatBeginsAtByte10000) {
  EXPECT_EQ(GetComment(Id3Tag(CommentAt(10000))), "found");
  EXPECT_EQ(GetComment(Id3Tag(CommentAt(10001))), "");
}

TEST(GetComm, HasTheSameLimitsInFiles) {
  const orvo_test::TemporaryFolder folder;
  const struct {
    std::size_t position;
    const char* text;
  } cases[] = {{8190, "found"}, {8191, "found"},  {8192, "found"},
               {9999, "found"}, {10000, "found"}, {10001, ""}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.position);
    orvo_test::WriteFile(folder / "file", Id3Tag(CommentAt(c.position)));
    std::ifstream file(folder / "file", std::ios_base::binary);
    EXPECT_EQ(orvo::get_comm(file), c.text);
  }
}

TEST(GetComm, MeasuresItsLimitsFromTheStartOfTheStream) {
  std::istringstream stream(std::string(100, 'x') + Id3Tag(150, CommentAt(70)));
  stream.seekg(100);
  EXPECT_EQ(orvo::get_comm(stream), "");

  std::istringstream near(std::string(100, 'x') + Id3Tag(160, CommentAt(70)));
  near.seekg(100);
  EXPECT_EQ(orvo::get_comm(near), "found");
}

TEST(GetComm, StopsWhenATruncatedTagEnds) {
  const std::string tag =
      Id3Tag(BigEndian(10) + std::string(6, '\0') + "CRC!" +
                 Id3Frame("TIT2", "title") + Id3Comment("about", "hello"),
             kExtendedHeader);
  const std::size_t text_start = tag.size() - 5;
  for (std::size_t size = 3; size <= tag.size(); ++size) {
    SCOPED_TRACE(size);
    const std::string text =
        size > text_start ? std::string("hello", size - text_start) : "";
    EXPECT_EQ(GetComment(tag.substr(0, size)), text);
  }
  for (std::size_t size = 0; size < 3; ++size) {
    SCOPED_TRACE(size);
    EXPECT_THAT(
        [&] { GetComment(tag.substr(0, size)); },
        ThrowsMessage<NoID3Found>("No ID3 tag found. " + tag.substr(0, size)));
  }
}

// Counts more bytes as available than it has, as a file that shrinks does.
class ShrunkenBuffer : public std::stringbuf {
 public:
  using std::stringbuf::stringbuf;

 protected:
  std::streamsize showmanyc() override { return 1000; }
};

TEST(GetComm, StopsWhenAStreamHasLessThanItsBufferPromises) {
  const std::string tag =
      Id3Tag(1000, Id3Frame("TIT2", 100, "") + Id3Comment("", "not reached"));
  for (std::size_t size = 10; size <= tag.size(); ++size) {
    SCOPED_TRACE(size);
    ShrunkenBuffer buffer(tag.substr(0, size), std::ios_base::in);
    std::istream stream(&buffer);
    EXPECT_EQ(orvo::get_comm(stream), "");
  }
}

constexpr std::uint32_t kFrameSizes[] = {0x00100000, 0x0fffffff, 0x7fffffff,
                                         0x80000000, 0xfffffff0, 0xffffffff};

TEST(GetComm, YieldsTheBytesThatAFrameOfAnySizeReallyHas) {
  const std::string body = std::string("\0eng\0", 5) + "short";
  const orvo_test::TemporaryFolder folder;
  for (const std::uint32_t size : kFrameSizes) {
    SCOPED_TRACE(size);
    const std::string tag = Id3Tag(Id3Frame("COMM", size, body));
    EXPECT_EQ(GetComment(tag), "short");

    orvo_test::WriteFile(folder / "file", tag);
    std::ifstream file(folder / "file", std::ios_base::binary);
    const std::string text = orvo::get_comm(file);
    EXPECT_EQ(text, "short");
    EXPECT_LT(text.capacity(), 100U);
  }
}

TEST(GetComm, StopsBehindAnotherFrameOfAnySize) {
  const orvo_test::TemporaryFolder folder;
  for (const std::uint32_t size : kFrameSizes) {
    SCOPED_TRACE(size);
    const std::string tag =
        Id3Tag(Id3Frame("TIT2", size, "title") + Id3Comment("", "not reached"));
    EXPECT_EQ(GetComment(tag), "");

    orvo_test::WriteFile(folder / "file", tag);
    std::ifstream file(folder / "file", std::ios_base::binary);
    EXPECT_EQ(orvo::get_comm(file), "");
  }
}

TEST(GetComm, AllocatesNothingBeyondItsResult) {
  std::string frames;
  for (int i = 0; i < 100; ++i) frames += Id3Frame("TIT2", "title");
  std::istringstream stream(
      Id3Tag(frames + Id3Comment("", std::string(100, 'x'))));
  const long before = orvo_test::CountAllocations();
  const std::string text = orvo::get_comm(stream);
  EXPECT_EQ(orvo_test::CountAllocations() - before, 1);
  EXPECT_EQ(text.size(), 100U);
}

TEST(GetComm, PassesOnThatMemoryRunsOut) {
  const std::string tag =
      Id3Tag(Id3Comment(std::string(100, 'd'), std::string(100, 't')));
  for (long after = 0; after < 2; ++after) {
    SCOPED_TRACE(after);
    std::istringstream stream(tag);
    const orvo_test::ScopedAllocationFailure failure(after, 1);
    EXPECT_THROW(orvo::get_comm(stream), std::bad_alloc);
  }
}

// How often get_comm() reads from a file that holds a large frame, and many
// bytes behind it that no disk has to hold.
int CountReads(std::size_t header_end, bool buffered) {
  const orvo_test::TemporaryFolder folder;
  const std::string path = folder / "sparse";
  constexpr std::uint32_t kSize = 60 << 20;
  orvo_test::WriteFile(
      path, Id3Tag(kSize, Id3Frame("XXXX", std::string(header_end - 30, 'x')) +
                              Id3Frame("APIC", kSize, "")));
  std::filesystem::resize_file(path, 64 << 20);

  std::ifstream file;
  if (!buffered) file.rdbuf()->pubsetbuf(nullptr, 0);
  file.open(path, std::ios_base::binary);
  int reads = 0;
  const orvo_test::ScopedHook hook(
      orvo_test::read_calls, [&](int descriptor, void* data, std::size_t size) {
        ++reads;
        return orvo_test::read_calls.Real(descriptor, data, size);
      });
  EXPECT_EQ(orvo::get_comm(file), "");
  return reads;
}

TEST(GetComm, PassesALargeFrameWithoutReadingIt) {
  ORVO_NEEDS_LIBSTDCXX();
  // A file stream's buffer is empty behind 8191 bytes.
  for (const std::size_t header_end : {8000U, 8190U, 8191U, 8192U}) {
    SCOPED_TRACE(header_end);
    const int buffered = CountReads(header_end, true);
    EXPECT_GT(buffered, 0);
    EXPECT_LT(buffered, 10);
    EXPECT_LT(CountReads(header_end, false), 10);
  }
}

// Bytes without positions, as of a pipe.
class PipeBuffer : public std::streambuf {
 public:
  explicit PipeBuffer(std::string bytes) : bytes_(std::move(bytes)) {
    setg(bytes_.data(), bytes_.data(), bytes_.data() + bytes_.size());
  }

 private:
  std::string bytes_;
};

// The search, a frame at a time.
std::string PlainGetComm(std::istream& stream) {
  orvo::ID3Header tag;
  stream.read(reinterpret_cast<char*>(&tag), sizeof tag);
  const std::streamoff end =
      std::min(std::streamoff{tag.get_size()} + 10, std::streamoff{10000});
  for (;;) {
    const std::streamoff position = stream.tellg();
    if (position < 0 || position > end) return "";
    try {
      return orvo::COMMFrame(stream).text;
    } catch (const NotACOMM&) {
      continue;
    }
  }
}

// Frames of all kinds, also of sizes that they do not have.
std::string RandomTag(std::mt19937& random) {
  std::string frames;
  while (random() % 40 != 0) {
    const std::string body(random() % (random() % 8 == 0 ? 6000 : 40), 'b');
    switch (random() % 12) {
      case 0:
        frames += Id3Comment("", "text", static_cast<char>(random() % 10 == 0));
        break;
      case 1:
        frames += Id3Frame("TXXX", static_cast<std::uint32_t>(random()), body);
        break;
      case 2:
        frames += std::string(random() % 30, '\0');
        break;
      default:
        frames += Id3Frame(random() % 4 == 0 ? "COMX" : "TXXX", body);
    }
    if (random() % 20 == 0) frames.resize(random() % (frames.size() + 1));
  }
  const auto size = static_cast<std::uint32_t>(frames.size());
  return Id3Tag(random() % 2 == 0 ? size : size / 2, frames);
}

TEST(GetComm, IsTheSearchFrameByFrameOverRandomTags) {
  constexpr unsigned kSeed = 10000;
  SCOPED_TRACE(testing::Message() << "seed " << kSeed);
  std::mt19937 random(kSeed);  // NOLINT(cert-msc*): the same in every run
  const orvo_test::TemporaryFolder folder;
  for (int round = 0; round < 1000; ++round) {
    SCOPED_TRACE(round);
    const std::string tag = RandomTag(random);
    std::istringstream plain(tag);
    const std::string comment = PlainGetComm(plain);

    std::istringstream stream(tag);
    EXPECT_EQ(orvo::get_comm(stream), comment);
    EXPECT_EQ(stream.tellg(), plain.tellg());
    EXPECT_EQ(stream.rdstate(), plain.rdstate());

    orvo_test::WriteFile(folder / "file", tag);
    std::ifstream file(folder / "file", std::ios_base::binary);
    EXPECT_EQ(orvo::get_comm(file), comment);
  }
}

TEST(GetComm, FindsNothingInAStreamThatCannotSeek) {
  PipeBuffer buffer(Id3Tag(Id3Comment("", "hello")));
  std::istream stream(&buffer);
  EXPECT_EQ(orvo::get_comm(stream), "");
}

TEST(GetComm, EndsForAStreamThatHasFailed) {
  std::istringstream stream("ID3");
  stream.setstate(std::ios_base::failbit);
  EXPECT_THAT([&] { orvo::get_comm(stream); },
              ThrowsMessage<NoID3Found>("No ID3 tag found. "));
}

TEST(GetComm, PassesTheExceptionsOfAStreamOn) {
  std::istringstream stream(Id3Tag(Id3Frame("TIT2", 100, "")));
  stream.exceptions(std::ios_base::failbit);
  EXPECT_THROW(orvo::get_comm(stream), std::ios_base::failure);
}

TEST(GetComm, ReadsFilesOfOtherProjects) {
  const struct {
    const char* name;
    std::string comment;
  } cases[] = {
      {"mediafile-full.mp3", std::string("0\0\0", 3)},
      {"mp3agic-dummyframes.mp3", "COMMENT123456789012345678901"},
      {"mp3agic-v1andv23tags.mp3", "COMMENT123456789012345678901"},
      {"mp3agic-v23tagwithbpm.mp3", "COMMENT123456789012345678901"},
      {"mp3agic-v24tagswithalbumimage.mp3", "COMMENT123456789012345678901"},
      {"mp3agic-withitunescomment.mp3", "COMMENT123456789012345678901"},
      {"tika-testAACid3.aac", "Test Comment"},
      {"tika-testMP3id3v1_v2.mp3", "Test Comment"},
      {"tika-testMP3id3v2.mp3", "Test Comment"},
      {"tika-testMP3lyrics.mp3", "Test Comment"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const std::string path =
        orvo_test::SourcePath(std::string("tests/data/id3/") + c.name);
    std::ifstream file(path, std::ios_base::binary);
    ASSERT_TRUE(file);
    EXPECT_EQ(orvo::get_comm(file), c.comment);
    EXPECT_EQ(GetComment(orvo_test::ReadFile(path)), c.comment);
  }
}

TEST(GetComm, ReadsTagsWrittenById3v2) {
  const orvo_test::TemporaryFolder folder;
  const std::string path = folder / "song.mp3";
  orvo_test::WriteFile(path, std::string(1000, 'a'));
  const int status =
      orvo_test::RunProgram({"/usr/bin/env", "id3v2", "--artist", "Somebody",
                             "--comment", "about:a comment:eng", path})
          .exit_status;
  if (status != 0) GTEST_SKIP() << "id3v2 is not installed";
  std::ifstream file(path, std::ios_base::binary);
  EXPECT_EQ(orvo::get_comm(file), "a comment");
}

TEST(GetComm, ReadsTagsWrittenByMutagen) {
  const orvo_test::TemporaryFolder folder;
  const std::string path = folder / "song.mp3";
  const int status =
      orvo_test::RunProgram(
          {"/usr/bin/python3", "-c",
           "import sys\n"
           "from mutagen.id3 import ID3, COMM, TIT2\n"
           "tag = ID3()\n"
           "tag.add(TIT2(encoding=3, text='title'))\n"
           "tag.add(COMM(encoding=0, lang='eng', desc='', text='caf\\xe9'))\n"
           "tag.save(sys.argv[1], v2_version=3)\n",
           path})
          .exit_status;
  if (status != 0) GTEST_SKIP() << "mutagen is not installed";
  std::ifstream file(path, std::ios_base::binary);
  // A terminating zero is written, and part of the text.
  EXPECT_EQ(orvo::get_comm(file), std::string("caf\xe9\0", 5));
}

}  // namespace

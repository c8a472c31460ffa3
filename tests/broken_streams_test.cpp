// Streams that fail, throw or refuse to seek at each of their bytes, and frames
// that promise more than there is memory.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <ios>
#include <iostream>
#include <istream>
#include <new>
#include <sstream>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <vector>

#include "orvo/id3.h"
#include "orvo/uuid.h"
#include "tests/support/capture.h"
#include "tests/support/files.h"
#include "tests/support/id3_writer.h"

namespace {

using orvo_test::Id3Comment;
using orvo_test::Id3Frame;
using orvo_test::Id3Tag;

enum class Fault {
  kEnds,         // Nothing can be read from the byte on.
  kThrows,       // Reading the byte throws.
  kCannotSeek,   // Neither seeking nor telling works from the byte on.
  kThrowsAtSeek  // The same with an exception.
};
constexpr Fault kFaults[] = {Fault::kEnds, Fault::kThrows, Fault::kCannotSeek,
                             Fault::kThrowsAtSeek};

struct Broken : std::runtime_error {
  Broken() : std::runtime_error("broken") {}
};

// Holds a text and breaks at one of its bytes.
class BrokenBuffer : public std::streambuf {
 public:
  BrokenBuffer(const std::string& text, std::size_t place, Fault fault)
      : size_(text.size()), place_(std::min(place, size_)), fault_(fault) {
    char* const begin = const_cast<char*>(text.data());
    const bool reads = fault == Fault::kEnds || fault == Fault::kThrows;
    setg(begin, begin, begin + (reads ? place_ : size_));
  }

  // How often the buffer was asked for more than it gives without a question.
  long calls() const { return calls_; }

  // Goes to a byte past all faults.
  void GoTo(std::size_t position) { gbump(static_cast<int>(position)); }

 protected:
  int_type underflow() override {
    ++calls_;
    if (fault_ == Fault::kThrows) throw Broken();
    return traits_type::eof();
  }

  pos_type seekoff(off_type offset, std::ios_base::seekdir direction,
                   std::ios_base::openmode) override {
    ++calls_;
    if (gptr() - eback() >= static_cast<std::ptrdiff_t>(place_)) {
      if (fault_ == Fault::kCannotSeek) return -1;
      if (fault_ == Fault::kThrowsAtSeek) throw Broken();
    }
    const off_type here = gptr() - eback();
    const off_type target = direction == std::ios_base::cur ? here + offset
                            : direction == std::ios_base::end
                                ? static_cast<off_type>(size_) + offset
                                : offset;
    if (target < 0 || target > static_cast<off_type>(size_)) return -1;
    // Beyond the fault only the end is left.
    setg(eback(), eback() + std::min<off_type>(target, egptr() - eback()),
         egptr());
    return target;
  }

  pos_type seekpos(pos_type position, std::ios_base::openmode which) override {
    return seekoff(position, std::ios_base::beg, which);
  }

 private:
  std::size_t size_;
  std::size_t place_;
  Fault fault_;
  long calls_ = 0;
};

// What get_comm() answers, or the message of its own error.
std::string CommentIn(std::istream& stream) {
  try {
    return orvo::get_comm(stream);
  } catch (const orvo::NoID3Found& error) {
    return error.what();
  }
}

std::string CommentIn(const std::string& text) {
  std::istringstream stream(text);
  return CommentIn(stream);
}

struct Input {
  std::string name;
  std::string text;
};

std::vector<Input> Corpus() {
  std::vector<Input> corpus = {
      {"a comment", Id3Tag(Id3Comment("about", "hello"))},
      {"a comment behind frames",
       Id3Tag(Id3Frame("TIT2", "title") +
              Id3Frame("TPE1", std::string(5000, 'x')) +
              Id3Comment("", std::string(9000, 't')))},
      {"an extended header",
       Id3Tag(orvo_test::BigEndian(10) + std::string(10, '\0') +
                  Id3Comment("", "hello"),
              0x40)},
      {"another encoding",
       Id3Tag(Id3Comment("a", "b", 1) + Id3Comment("", "c"))},
      {"padding", Id3Tag(std::string(3000, '\0'))},
      {"gigabytes",
       Id3Tag(Id3Frame("COMM", 0xffffffff, std::string(5000, '\0')))},
  };
  for (const auto& entry : std::filesystem::directory_iterator(
           orvo_test::SourcePath("tests/data/id3"))) {
    const std::string extension = entry.path().extension();
    if (extension != ".mp3" && extension != ".aac") continue;
    corpus.push_back(
        {entry.path().filename(), orvo_test::ReadFile(entry.path())});
  }
  return corpus;
}

// As often as a reader may ask, which skips frames of at least ten bytes on the
// ten thousand first bytes, or reads a text in pieces.
constexpr long kMostCalls = 4000;

bool BeginsWith(const std::string& text, const std::string& prefix) {
  return text.compare(0, prefix.size(), prefix) == 0;
}

// Whether an answer is one that a stream with this fault may lead to: where the
// bytes just end, that of the same bytes in a whole stream; otherwise the first
// part of a comment, or that nothing was found.
bool IsDescribed(const std::string& answer, const std::string& whole,
                 const std::string& cut, Fault fault) {
  switch (fault) {
    case Fault::kEnds:
      return answer == cut;
    case Fault::kThrows:
      return BeginsWith(cut, answer);
    case Fault::kCannotSeek:
    case Fault::kThrowsAtSeek:
      return answer.empty() || answer == whole;
  }
  return false;
}

using Reader = std::function<std::string(std::istream&)>;

// How many bytes of all files lead a reader to a wrong answer or to too much
// work, and how many faults were tried.
struct Figures {
  long faults = 0;
  long wrong = 0;
  long endless = 0;
};

Figures BreakEverywhere(const Input& input, const Reader& read) {
  Figures figures;
  const std::string whole = CommentIn(input.text);
  for (std::size_t place = 0; place <= input.text.size(); ++place) {
    const std::string cut = CommentIn(input.text.substr(0, place));
    for (const Fault fault : kFaults) {
      BrokenBuffer buffer(input.text, place, fault);
      std::istream stream(&buffer);
      const std::string answer = read(stream);
      ++figures.faults;
      if (!IsDescribed(answer, whole, cut, fault)) ++figures.wrong;
      if (buffer.calls() > kMostCalls) ++figures.endless;
    }
  }
  return figures;
}

std::string ReadComment(std::istream& stream) {
  return CommentIn(stream);
}

TEST(BrokenStreams, LeadTheCommentReaderToTheDescribedAnswer) {
  long faults = 0;
  for (const Input& input : Corpus()) {
    SCOPED_TRACE(input.name);
    const Figures figures = BreakEverywhere(input, ReadComment);
    EXPECT_EQ(figures.wrong, 0);
    EXPECT_EQ(figures.endless, 0);
    faults += figures.faults;
  }
  EXPECT_GT(faults, 100000);
  std::cout << "broken streams: " << faults
            << " faults for the comment reader\n";
}

// Exceptions that the caller has asked for pass.
TEST(BrokenStreams, ThrowWhatTheirUserWants) {
  const std::string text =
      Id3Tag(Id3Frame("TIT2", "title") + Id3Comment("about", "hello"));
  const std::string whole = CommentIn(text);
  int thrown = 0;
  for (std::size_t place = 0; place <= text.size(); ++place) {
    const std::string cut = CommentIn(text.substr(0, place));
    for (const Fault fault : kFaults) {
      BrokenBuffer buffer(text, place, fault);
      std::istream stream(&buffer);
      stream.exceptions(std::ios_base::badbit | std::ios_base::failbit);
      try {
        EXPECT_TRUE(IsDescribed(CommentIn(stream), whole, cut, fault)) << place;
      } catch (const std::ios_base::failure&) {
        ++thrown;
      } catch (const Broken&) {
        ++thrown;
      }
    }
  }
  EXPECT_GT(thrown, 100);
}

constexpr std::size_t kUuidSize = 16;

// Reads a UUID of which so many bytes come before the fault; whether it is
// sound.
bool ReadsUuidUpTo(const std::string& text, std::size_t start,
                   std::size_t place, Fault fault) {
  BrokenBuffer buffer(text, place, fault);
  buffer.GoTo(start);
  std::istream stream(&buffer);
  const orvo::UUID uuid(stream, false);
  if (buffer.calls() > 2) return false;

  const bool reads = fault == Fault::kEnds || fault == Fault::kThrows;
  const std::size_t end = reads ? std::min(place, text.size()) : text.size();
  const std::size_t there = std::min(end - start, kUuidSize);
  std::string bytes = text.substr(start, there);
  bytes.resize(kUuidSize);
  const bool failed = fault == Fault::kThrows ? stream.bad() : stream.eof();
  // Bytes that were not read are zero.
  return orvo::UUID(reinterpret_cast<const unsigned char*>(bytes.data())) ==
             uuid &&
         (there == kUuidSize ? stream.good() : failed);
}

TEST(BrokenStreams, LeaveAUuidWithTheBytesThatWereRead) {
  long faults = 0;
  for (const Input& input : Corpus()) {
    SCOPED_TRACE(input.name);
    for (std::size_t place = 0; place <= input.text.size(); ++place) {
      const std::size_t start =
          place - std::min(place, place % (kUuidSize + 1));
      for (const Fault fault :
           {Fault::kEnds, Fault::kThrows, Fault::kCannotSeek}) {
        ASSERT_TRUE(ReadsUuidUpTo(input.text, start, place, fault)) << place;
        ++faults;
      }
    }
  }
  EXPECT_GT(faults, 100000);
  std::cout << "broken streams: " << faults << " faults for UUIDs\n";
}

// What the checks above have to catch.

TEST(BreakEverywhere, SeesAReaderThatKeepsAskingAStreamThatEnds) {
  const auto ask = [](std::istream& stream) {
    for (long i = 0; i <= kMostCalls; ++i) {
      stream.clear();
      stream.get();
    }
    return std::string();
  };
  EXPECT_GT(BreakEverywhere({"a short tag", "ID3"}, ask).endless, 0);
}

TEST(BreakEverywhere, SeesAReaderThatMakesBytesUp) {
  const auto fill = [](std::istream& stream) {
    std::string text = CommentIn(stream);
    if (stream.eof()) text.resize(5, ' ');
    return text;
  };
  const Input input = {"a comment", Id3Tag(Id3Comment("about", "hello"))};
  EXPECT_GT(BreakEverywhere(input, fill).wrong, 0);
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define ORVO_TEST_TAKES_ALL_ADDRESSES
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define ORVO_TEST_TAKES_ALL_ADDRESSES
#endif
#endif

#ifndef ORVO_TEST_TAKES_ALL_ADDRESSES  // as the sanitizers do

// Whether an act is true in a child that has half a gigabyte of addresses.
template <typename Act>
bool SucceedsInHalfAGigabyte(Act act) {
  std::cout.flush();
  const pid_t child = fork();
  if (child == 0) {
    const rlimit limit = {512UL << 20, 512UL << 20};
    if (setrlimit(RLIMIT_AS, &limit) != 0) _exit(2);
    try {
      _exit(act() ? 0 : 1);
    } catch (const std::bad_alloc&) {
      _exit(3);
    }
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

TEST(HalfAGigabyte, IsEnoughForFramesThatPromiseMore) {
  const std::uint32_t sizes[] = {0x20000000, 0x7fffffff, 0x80000000, 0xfffffff5,
                                 0xffffffff};
  for (const std::uint32_t size : sizes) {
    SCOPED_TRACE(size);
    const struct {
      const char* what;
      std::string text;
      std::string comment;
    } cases[] = {
        {"a comment",
         Id3Tag(Id3Frame("COMM", size, std::string("\0engabout\0hello", 15))),
         "hello"},
        {"a description without an end",
         Id3Tag(Id3Frame("COMM", size, std::string("\0engabout", 9))), ""},
        {"another frame", Id3Tag(Id3Frame("APIC", size, "picture")), ""},
        {"an extended header",
         Id3Tag(orvo_test::BigEndian(size) + "123456", 0x40), ""},
        {"a tag", Id3Tag(0xfffffff, Id3Frame("TIT2", "title")), ""},
    };
    for (const auto& c : cases) {
      SCOPED_TRACE(c.what);
      const auto reads = [&] { return CommentIn(c.text) == c.comment; };
      EXPECT_TRUE(SucceedsInHalfAGigabyte(reads));
      const orvo_test::TemporaryFolder folder;
      orvo_test::WriteFile(folder / "file", c.text);
      EXPECT_TRUE(SucceedsInHalfAGigabyte([&] {
        std::ifstream file(folder / "file", std::ios_base::binary);
        return CommentIn(file) == c.comment;
      }));
    }
  }
}

// What the limit has to catch.
TEST(HalfAGigabyte, IsNotEnoughForAReaderThatBelievesASize) {
  EXPECT_FALSE(SucceedsInHalfAGigabyte([] {
    const std::string text = Id3Frame("COMM", 0xffffffff, "");
    std::istringstream stream(text);
    return !std::string(orvo::FrameHeader(stream).size(), ' ').empty();
  }));
}

#endif

}  // namespace

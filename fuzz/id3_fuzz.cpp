#include "fuzz/fuzz.h"
#include "fuzz/memory_stream.h"
#include "orvo/id3.h"

namespace {

using orvo_fuzz::Expect;

// The same reader over bytes that are all there, with positions of its own.
class ModelReader {
 public:
  // Seeks beyond the end succeed if past_end is true.
  ModelReader(std::string_view bytes, bool past_end)
      : bytes_(bytes), past_end_(past_end) {}

  bool failed() const { return failed_; }
  std::uint64_t position() const { return position_; }

  // Fewer bytes than asked for are a failure.
  std::string_view Read(std::uint64_t count) {
    const std::string_view found = Rest().substr(0, count);
    if (found.size() < count) failed_ = true;
    position_ += found.size();
    return found;
  }

  // A failed number is 0 from the byte on that is missing.
  std::uint32_t ReadBigEndian() {
    std::string bytes(Read(4));
    bytes.resize(4);
    std::uint32_t number = 0;
    for (const char c : bytes) {
      number = number * 256 + static_cast<unsigned char>(c);
    }
    return number;
  }

  void Skip(std::uint64_t count) {
    if (position_ + count > bytes_.size() && !past_end_) {
      failed_ = true;
    } else {
      position_ += count;
    }
  }

  std::string ReadToZero() {
    if (failed_) return "";
    std::string text;
    for (const char c : Rest()) {
      ++position_;
      if (c == '\0') return text;
      text += c;
    }
    failed_ = true;
    return text;
  }

  std::string_view Rest() const {
    if (failed_ || position_ > bytes_.size()) return {};
    return bytes_.substr(position_);
  }

 private:
  std::string_view bytes_;
  bool past_end_;
  std::uint64_t position_ = 0;
  bool failed_ = false;
};

struct Comment {
  std::string error;
  std::string identifier;
  std::uint32_t size = 0;
  std::string description;
  std::string text;
};

// The frame, or why there is none.
Comment ReadComment(ModelReader* reader) {
  Comment comment;
  comment.identifier = reader->Read(4);
  comment.identifier.resize(4);
  comment.size = reader->ReadBigEndian();
  reader->Read(2);
  if (comment.identifier != "COMM") {
    reader->Skip(comment.size);
    comment.error = "Not a COMM frame.";
    return comment;
  }
  const std::uint64_t end = reader->position() + comment.size;
  const std::string_view encoding_and_language = reader->Read(4);
  if (!encoding_and_language.empty() && encoding_and_language[0] != 0) {
    comment.error = "Only encoding == 0 is supported.";
    return comment;
  }
  comment.description = reader->ReadToZero();
  const std::uint64_t position = reader->position();
  if (position < end) comment.text = reader->Rest().substr(0, end - position);
  return comment;
}

struct Result {
  std::string error;
  std::string text;
};

Result ModelGetComm(std::string_view bytes, bool past_end) {
  if (bytes.substr(0, 3) != "ID3") {
    return {"No ID3 tag found. " + std::string(bytes.substr(0, 3)), ""};
  }
  ModelReader reader(bytes, past_end);
  const std::string_view tag = reader.Read(10);
  if (reader.failed()) return {};
  std::uint64_t end = 10;
  for (std::size_t i = 6; i < 10; ++i) {
    // Kept on purpose: the top bits are not masked, so bits may meet.
    const auto byte = static_cast<unsigned char>(tag[i]);
    end = i == 6 ? byte : (end << 7 | byte);
  }
  end += 10;
  if ((tag[5] & 0x40) != 0) {
    const std::uint32_t size = reader.ReadBigEndian();
    reader.Read(6);
    if (size > 6) reader.Skip(size - 6);
  }
  while (!reader.failed() && reader.position() <= end &&
         reader.position() <= 10000) {
    const Comment comment = ReadComment(&reader);
    if (comment.error.empty()) return {"", comment.text};
  }
  return {};
}

void TestGetComm(std::string_view bytes, std::size_t piece, bool past_end) {
  static orvo_fuzz::MemoryStream stream;
  const Result expected = ModelGetComm(bytes, past_end);
  try {
    const std::string text =
        orvo::get_comm(stream.Open(bytes, piece, past_end));
    Expect(expected.error.empty() && text == expected.text);
    Expect(text.size() <= bytes.size());
  } catch (const orvo::NoID3Found& error) {
    Expect(std::strcmp(error.what(), expected.error.c_str()) == 0);
  }
}

void TestFrame(std::string_view bytes, std::size_t piece, bool past_end) {
  static orvo_fuzz::MemoryStream stream;
  ModelReader reader(bytes, past_end);
  const Comment expected = ReadComment(&reader);
  std::istream& opened = stream.Open(bytes, piece, past_end);
  try {
    const orvo::COMMFrame frame(opened);
    Expect(expected.error.empty());
    Expect(frame.id_str() == "COMM" && frame.header.size() == expected.size);
    Expect(frame.description == expected.description);
    Expect(frame.text == expected.text);
  } catch (const orvo::NotACOMM& error) {
    Expect(std::strcmp(error.what(), expected.error.c_str()) == 0);
    const std::streamoff position = opened.tellg();
    Expect(reader.failed()
               ? position == -1
               : position == static_cast<std::streamoff>(reader.position()));
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  orvo_fuzz::Input input(data, size);
  const auto mode = input.Take<std::uint8_t>();
  const bool past_end = (mode & 1) != 0;
  const bool frame = (mode & 6) == 6;
  // In small pieces, or all at once.
  const std::size_t piece = (mode & 8) != 0 ? 1 + mode / 16 : 1 << 20;
  std::string bytes = input.TakeRest();
  // Now and then there is enough padding to come to the end of the search.
  if (mode == 0x72) bytes.resize(bytes.size() + 12000);
  if (frame) {
    TestFrame(bytes, piece, past_end);
  } else {
    TestGetComm(bytes, piece, past_end);
  }
  return 0;
}

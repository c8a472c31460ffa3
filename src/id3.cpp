#include "orvo/id3.h"

#include <algorithm>
#include <ios>
#include <istream>
#include <utility>

#include "orvo/errors.h"

namespace orvo {
namespace {

// Kept on purpose: only this much of a file is searched, however large its tag.
constexpr std::streamoff kSearchLimit = 10000;

std::uint32_t FromBigEndian(const unsigned char* bytes) {
  return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 |
         std::uint32_t{bytes[2]} << 8 | std::uint32_t{bytes[3]};
}

void ReadBytes(std::istream& stream, void* bytes, std::streamsize size) {
  stream.read(static_cast<char*>(bytes), size);
}

void SkipForward(std::istream& stream, std::uint32_t count) {
  // A seek would make a file stream drop its buffer, which mostly holds what
  // comes next; reading on is left to seeks because they may pass the end.
  if (stream.good() && count < stream.rdbuf()->in_avail()) {
    stream.ignore(count);
  } else {
    stream.seekg(count, std::ios_base::cur);
  }
}

// Piece by piece: the count may promise more than the stream holds.
void AppendBytes(std::istream& stream, std::int64_t count, std::string* text) {
  char piece[4096];
  while (count > 0 && stream) {
    stream.read(piece, std::min<std::int64_t>(count, sizeof piece));
    text->append(piece, static_cast<std::size_t>(stream.gcount()));
    count -= stream.gcount();
  }
}

}  // namespace

static_assert(sizeof(ID3Header) == 10);

std::string ID3Header::id_str() const {
  return std::string(identifier, sizeof identifier);
}

std::uint32_t ID3Header::get_size() const {
  return std::uint32_t{size_bytes[0]} << 21 |
         std::uint32_t{size_bytes[1]} << 14 |
         std::uint32_t{size_bytes[2]} << 7 | std::uint32_t{size_bytes[3]};
}

bool ID3Header::unsynchronisation() const {
  return (flags & 0x80) != 0;
}

bool ID3Header::extended_header() const {
  return (flags & 0x40) != 0;
}

bool ID3Header::experimental() const {
  return (flags & 0x20) != 0;
}

ExtendedHeader::ExtendedHeader(std::istream& stream) {
  unsigned char bytes[10] = {};
  ReadBytes(stream, bytes, sizeof bytes);
  size_ = FromBigEndian(bytes);
  if (size_ > 6) SkipForward(stream, size_ - 6);
}

std::uint32_t ExtendedHeader::size() const {
  return size_;
}

FrameHeader::FrameHeader(std::istream& stream) {
  ReadBytes(stream, bytes_, sizeof bytes_);
}

std::uint32_t FrameHeader::size() const {
  return FromBigEndian(bytes_ + 4);
}

std::string FrameHeader::id_str() const {
  return std::string(bytes_, bytes_ + 4);
}

COMMFrame::COMMFrame(std::istream& stream) : COMMFrame(FrameHeader(stream)) {
  if (const char* problem = ReadBody_(stream)) throw NotACOMM(problem);
}

COMMFrame::COMMFrame(const FrameHeader& frame_header) : header(frame_header) {}

const char* COMMFrame::ReadBody_(std::istream& stream) {
  if (id_str() != "COMM") {
    SkipForward(stream, header.size());
    return "Not a COMM frame.";
  }
  ReadBytes(stream, &encoding, sizeof encoding);
  ReadBytes(stream, language, sizeof language);
  if (encoding != 0) return "Only encoding == 0 is supported.";

  std::getline(stream, description, '\0');
  const std::size_t before_text =
      sizeof encoding + sizeof language + description.size() + 1;
  AppendBytes(
      stream,
      std::int64_t{header.size()} - static_cast<std::int64_t>(before_text),
      &text);
  return nullptr;
}

std::string COMMFrame::id_str() const {
  return header.id_str();
}

std::string get_comm(std::istream& stream) {
  ID3Header tag;
  ReadBytes(stream, &tag, sizeof tag);
  if (tag.id_str() != "ID3") {
    const auto bytes_read = static_cast<std::size_t>(stream.gcount());
    throw NoID3Found("No ID3 tag found. " + tag.id_str().substr(0, bytes_read));
  }
  if (tag.extended_header()) ExtendedHeader{stream};

  const std::streamoff end = std::streamoff{tag.get_size()} + 10;
  for (;;) {
    const std::streamoff position = stream.tellg();
    // A stream that has failed, or that cannot seek, has no position.
    if (position < 0 || position > end || position > kSearchLimit) return "";

    // Most frames are something else: nothing is thrown for them.
    COMMFrame frame{FrameHeader(stream)};
    if (frame.ReadBody_(stream) == nullptr) return std::move(frame.text);
  }
}

}  // namespace orvo

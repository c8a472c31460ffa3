#include "orvo/id3.h"

#include <algorithm>
#include <cstring>
#include <ios>
#include <istream>
#include <string_view>
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

constexpr std::uint32_t kHeaderSize = sizeof(FrameHeader);

void ReadBytes(std::istream& stream, void* bytes, std::streamsize size) {
  stream.read(static_cast<char*>(bytes), size);
}

bool IsComment(const FrameHeader& header) {
  return std::string_view(header.identifier, 4) == "COMM";
}

constexpr std::uint32_t kNear = 4096;

// Whether the stream has this little count of bytes in its buffer, and more.
bool IsNear(std::istream& stream, std::uint32_t count) {
  return count <= kNear && stream.good() && count < stream.rdbuf()->in_avail();
}

// A seek would make a file stream drop its buffer, which mostly holds what
// comes next. Only a seek may pass the end of the stream, and only a seek is
// quick however far it goes: an empty buffer counts the rest of its file as
// available.
//
// Returns whether the stream has simply moved on by this count.
bool SkipForward(std::istream& stream, std::uint32_t count) {
  if (IsNear(stream, count)) {
    stream.ignore(count);
    return true;
  }
  stream.seekg(count, std::ios_base::cur);
  return false;
}

// Reads on while a frame is none to look at, its body and the next header in
// one piece. `position` and the result are those of the stream.
std::streamoff PassOthers(std::istream& stream, std::streamoff end,
                          std::streamoff position, FrameHeader* header) {
  char piece[kNear];
  for (;;) {
    const std::uint32_t size = header->size();
    const std::uint32_t with_next = size + kHeaderSize;
    if (IsComment(*header) || position + size > end ||
        !IsNear(stream, with_next)) {
      return position;
    }
    // A buffer may count more as available than its file holds in the end.
    if (!stream.read(piece, with_next)) return position;
    std::memcpy(header, piece + size, kHeaderSize);
    position += with_next;
  }
}

// Takes the zero as well. Not with std::getline(), which keeps it to itself
// when memory runs out.
void ReadUntilZero(std::istream& stream, std::string* text) {
  for (int next = stream.get(); next > 0; next = stream.get()) {
    text->push_back(static_cast<char>(next));
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

static_assert(sizeof(ID3Header) == 10 && sizeof(FrameHeader) == 10);

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
  ReadBytes(stream, this, sizeof *this);
}

std::uint32_t FrameHeader::size() const {
  return FromBigEndian(size_bytes);
}

std::string FrameHeader::id_str() const {
  return std::string(identifier, sizeof identifier);
}

COMMFrame::COMMFrame(std::istream& stream) : COMMFrame(FrameHeader(stream)) {
  if (!IsComment(header)) {
    SkipForward(stream, header.size());
    throw NotACOMM("Not a COMM frame.");
  }
  if (!ReadBody_(stream)) throw NotACOMM("Only encoding == 0 is supported.");
}

COMMFrame::COMMFrame(const COMMFrame& other) = default;
COMMFrame::COMMFrame(COMMFrame&& other) noexcept = default;
COMMFrame& COMMFrame::operator=(const COMMFrame& other) = default;
COMMFrame& COMMFrame::operator=(COMMFrame&& other) noexcept = default;
COMMFrame::~COMMFrame() = default;

COMMFrame::COMMFrame(const FrameHeader& frame_header) : header(frame_header) {}

bool COMMFrame::ReadBody_(std::istream& stream) {
  unsigned char start[4] = {};
  ReadBytes(stream, start, sizeof start);
  encoding = start[0];
  std::copy(start + 1, start + 4, language);
  if (encoding != 0) return false;

  ReadUntilZero(stream, &description);
  const std::size_t before_text = sizeof start + description.size() + 1;
  AppendBytes(
      stream,
      std::int64_t{header.size()} - static_cast<std::int64_t>(before_text),
      &text);
  return true;
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

  const std::streamoff end =
      std::min(std::streamoff{tag.get_size()} + 10, kSearchLimit);
  std::streamoff position = stream.tellg();
  // A stream that has failed, or that cannot seek, has no position.
  while (position >= 0 && position <= end) {
    FrameHeader header(stream);
    position = PassOthers(stream, end, position + kHeaderSize, &header);
    if (IsComment(header)) {
      COMMFrame frame(header);
      if (frame.ReadBody_(stream)) return std::move(frame.text);
      position = stream.tellg();
      continue;
    }
    const std::uint32_t size = header.size();
    if (SkipForward(stream, size)) {
      position += size;
    } else {
      position = stream.tellg();
    }
  }
  return "";
}

}  // namespace orvo

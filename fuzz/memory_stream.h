#ifndef ORVO_FUZZ_MEMORY_STREAM_H_
#define ORVO_FUZZ_MEMORY_STREAM_H_

#include <algorithm>
#include <cstddef>
#include <ios>
#include <istream>
#include <locale>
#include <streambuf>
#include <string_view>

namespace orvo_fuzz {

/// Bytes that a stream delivers piece by piece.
class MemoryBuffer : public std::streambuf {
 public:
  /// @param piece     The most bytes that are buffered at once.
  /// @param past_end  Whether positions beyond the end can be sought, as in a
  ///                  file; a string stream refuses.
  void Open(std::string_view bytes, std::size_t piece, bool past_end) {
    bytes_ = bytes;
    piece_ = static_cast<std::streamoff>(piece);
    past_end_ = past_end;
    Seek(0);
  }

 protected:
  int_type underflow() override {
    if (next_ >= Size()) return traits_type::eof();
    char* const start = const_cast<char*>(bytes_.data()) + next_;
    const std::streamoff count = std::min(piece_, Size() - next_);
    setg(start, start, start + count);
    next_ += count;
    return traits_type::to_int_type(*start);
  }

  std::streamsize showmanyc() override {
    return next_ < Size() ? Size() - next_ : -1;
  }

  pos_type seekoff(off_type offset, std::ios_base::seekdir from,
                   std::ios_base::openmode) override {
    const std::streamoff position = next_ - (egptr() - gptr());
    if (from == std::ios_base::cur && offset == 0) return position;
    if (from == std::ios_base::cur) offset += position;
    if (from == std::ios_base::end) offset += Size();
    if (offset < 0 || (offset > Size() && !past_end_)) return -1;
    Seek(offset);
    return offset;
  }

  pos_type seekpos(pos_type position, std::ios_base::openmode mode) override {
    return seekoff(position, std::ios_base::beg, mode);
  }

 private:
  std::streamoff Size() const {
    return static_cast<std::streamoff>(bytes_.size());
  }

  void Seek(std::streamoff position) {
    setg(nullptr, nullptr, nullptr);
    next_ = position;
  }

  std::string_view bytes_;
  std::streamoff piece_ = 0;
  bool past_end_ = false;
  std::streamoff next_ = 0;  // behind what is buffered
};

/// An input stream that is opened again and again, because making one takes
/// longer than most of the functions under test.
class MemoryStream {
 public:
  MemoryStream() { stream_.imbue(std::locale::classic()); }

  std::istream& Open(std::string_view bytes, std::size_t piece = 1 << 20,
                     bool past_end = false) {
    buffer_.Open(bytes, piece, past_end);
    stream_.clear();
    return stream_;
  }

 private:
  MemoryBuffer buffer_;
  std::istream stream_{&buffer_};
};

/// Reads a number as the standard stream does; leaves it alone if the text is
/// blank.
template <typename Number>
void ReadFromStream(std::string_view text, Number* number,
                    std::ios_base& (*base)(std::ios_base&) = std::dec) {
  static MemoryStream stream;
  stream.Open(text) >> base >> *number;
}

}  // namespace orvo_fuzz

#endif  // ORVO_FUZZ_MEMORY_STREAM_H_

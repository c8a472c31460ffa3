#ifndef ORVO_ID3_H_
#define ORVO_ID3_H_

/// @file
/// The first comment in the ID3 version 2 tag of an audio file.
///
/// A deliberately small reader. It knows the tag header, skips an extended
/// header, and understands comment frames ("COMM") whose text is ISO-8859-1;
/// comments in other encodings are passed over. Frame sizes are read as in
/// version 2.3 (plain numbers), so that a larger frame of a 2.4 tag misleads
/// it; unsynchronisation, compression and encryption are not undone; only the
/// first 10000 bytes are searched.
///
/// @code
/// std::ifstream file("song.mp3", std::ios_base::binary);
/// const std::string comment = orvo::get_comm(file);
/// @endcode
///
/// Damaged and truncated tags are harmless: nothing is read beyond the end of
/// the stream, and no more memory is used than it has bytes. A stream belongs
/// to one thread at a time.

#include <cstdint>
#include <iosfwd>
#include <string>

#include "orvo/errors.h"  // IWYU pragma: export
#include "orvo/export.h"

namespace orvo {

/// The ten bytes at the start of a tag, exactly as they are stored.
struct ORVO_EXPORT ID3Header {
  char identifier[3] = {};           ///< "ID3".
  unsigned char version[2] = {};     ///< Major version and revision.
  unsigned char flags = 0;           ///< See the predicates below.
  unsigned char size_bytes[4] = {};  ///< Seven bits each, high bits first.

  /// The identifier as text, always three characters.
  std::string id_str() const;

  /// Bytes of the tag behind this header. The top bit of each size byte, which
  /// a valid tag has clear, is not masked.
  std::uint32_t get_size() const;

  /// Whether the tag was made free of false synchronisation marks.
  bool unsynchronisation() const;

  /// Whether an extended header follows.
  bool extended_header() const;

  /// Whether the tag calls itself experimental.
  bool experimental() const;
};

/// The optional header behind the tag header.
class ORVO_EXPORT ExtendedHeader {
 public:
  /// Reads it, and skips what follows its first ten bytes.
  explicit ExtendedHeader(std::istream& stream);

  /// Bytes of the extended header behind this number itself: 6 or 10.
  std::uint32_t size() const;

 private:
  std::uint32_t size_ = 0;
};

/// The ten bytes in front of a frame, exactly as they are stored.
struct ORVO_EXPORT FrameHeader {
  /// Reads it; bytes that the stream does not hold count as zero.
  explicit FrameHeader(std::istream& stream);

  /// Bytes of the frame behind this header.
  std::uint32_t size() const;

  /// The frame's identifier as text, always four characters.
  std::string id_str() const;

  char identifier[4] = {};           ///< For example "COMM".
  unsigned char size_bytes[4] = {};  ///< A plain number, high byte first.
  unsigned char flags[2] = {};       ///< Not examined.
};

/// A comment frame.
class ORVO_EXPORT COMMFrame {
 public:
  /// Reads the frame at which the stream stands.
  ///
  /// The description goes up to its zero byte even beyond the frame's end. If
  /// the stream ends early, the texts hold the bytes that were there.
  ///
  /// @throws NotACOMM  "Not a COMM frame.", with the stream behind the frame;
  ///                   or "Only encoding == 0 is supported." Kept on purpose:
  ///                   the stream stands behind the language then, inside the
  ///                   frame.
  explicit COMMFrame(std::istream& stream);

  /// @{
  /// A value as any other.
  COMMFrame(const COMMFrame& other);
  COMMFrame(COMMFrame&& other) noexcept;
  COMMFrame& operator=(const COMMFrame& other);
  COMMFrame& operator=(COMMFrame&& other) noexcept;
  /// @}
  ~COMMFrame();

  /// The identifier in the frame's header: "COMM".
  std::string id_str() const;

  FrameHeader header;         ///< The frame's header.
  std::uint8_t encoding = 0;  ///< 0, for ISO-8859-1.
  char language[3] = {};      ///< For example "eng"; not terminated.
  std::string description;    ///< What the comment is about; often empty.
  std::string text;           ///< The comment itself, zero bytes included.

 private:
  friend std::string get_comm(std::istream& stream);

  explicit COMMFrame(const FrameHeader& frame_header);

  // Reads what follows the header; false for another encoding than 0.
  bool ReadBody_(std::istream& stream);
};

/// The text of the first comment in the tag at which the stream stands.
///
/// Kept on purpose: in a comment that is passed over because of its encoding
/// the search goes on behind the language, as if a frame began there.
///
/// @param stream  Positioned at the tag, which should be the stream's start:
///                the limits of the search are positions of the stream. It may
///                be at its end or have failed afterwards.
/// @return        "" if the tag holds no comment that can be read, or the
///                stream cannot seek.
/// @throws NoID3Found  "No ID3 tag found. " and the first three bytes.
ORVO_EXPORT std::string get_comm(std::istream& stream);

}  // namespace orvo

#endif  // ORVO_ID3_H_

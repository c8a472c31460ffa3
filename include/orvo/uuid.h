#ifndef ORVO_UUID_H_
#define ORVO_UUID_H_

/// @file
/// Universally unique identifiers in their three forms: text, bytes in network
/// order, and bytes in the little-endian layout of GUID structures.
///
/// A UUID is a plain value; an object that several threads change needs a lock
/// of the caller's. Identifiers are converted, not generated.
///
/// @code
/// const orvo::UUID id("12345678-9ABC-DEF0-0123-456789ABCDEF");
/// id.uuid_string();            // "12345678-9abc-def0-0123-456789abcdef"
/// id.WriteBinary(file, true);  // 78 56 34 12 bc 9a f0 de 01 23 ...
/// @endcode

#include <cstddef>
#include <cstring>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>  // std::hash, too

#include "orvo/export.h"

namespace orvo {

/// A 128-bit identifier, kept as its 16 bytes in network order.
///
/// The little-endian layout has the same bytes, but those of the first three
/// fields (4, 2 and 2 bytes) reversed.
class ORVO_EXPORT UUID {
 public:
  /// The nil UUID, all zero.
  UUID();

  /// @see bytes()
  explicit UUID(const unsigned char* network_bytes);

  /// @see uuid_string(const std::string&)
  explicit UUID(const std::string& text);

  /// Reads 16 bytes from a stream.
  ///
  /// Bytes that the stream does not hold count as zero; it has failed then.
  ///
  /// @param little_endian  Whether they are in the little-endian layout.
  UUID(std::istream& stream, bool little_endian);

  /// The UUID that a text is, if it has exactly the text form: 36 characters,
  /// digits in either letter case, nothing around them.
  ///
  /// @code
  /// if (const auto id = orvo::UUID::Parse(argument)) Open(*id);
  /// orvo::UUID::Parse("1-2-3-4-5");  // nothing
  /// @endcode
  ///
  /// @return  Nothing for any other text, also where uuid_string() takes it.
  static std::optional<UUID> Parse(std::string_view text);

  /// Takes a new value from 16 bytes in network order.
  void bytes(const unsigned char* network_bytes);

  /// Takes a new value from 16 bytes in the little-endian layout.
  void bytes_le(const unsigned char* little_endian_bytes);

  /// Turns one layout of the bytes into the other.
  void change_endianness();

  /// Takes a new value from five groups of hexadecimal digits with "-" between
  /// them.
  ///
  /// Kept on purpose: nothing but the number of groups is checked. A group may
  /// have spaces around it, "0x" in front and any number of digits, a group
  /// without digits is 0, and what follows the fifth group is ignored. A group
  /// that is too large counts as the largest number of 32 bits (the first) or
  /// 16 bits (the next three); of the fifth the low 48 bits are taken. Parse()
  /// takes nothing but the text form.
  ///
  /// @throws std::out_of_range  There are fewer than five groups. Those that
  ///                            are there have been taken.
  void uuid_string(const std::string& text);

  /// The 36 characters of the text form, in lower case.
  std::string uuid_string() const;

  /// Writes the 16 bytes to a stream.
  ///
  /// @param little_endian  Whether in the little-endian layout.
  void WriteBinary(std::ostream& stream, bool little_endian) const;

  /// Whether all bytes are equal.
  ORVO_EXPORT_INLINE bool operator==(const UUID& other) const {
    return std::memcmp(bytes_, other.bytes_, sizeof bytes_) == 0;
  }

  /// Whether any byte differs.
  ORVO_EXPORT_INLINE bool operator!=(const UUID& other) const {
    return !(*this == other);
  }

  /// The order of the bytes, which is that of the texts.
  ORVO_EXPORT_INLINE bool operator<(const UUID& other) const {
    return std::memcmp(bytes_, other.bytes_, sizeof bytes_) < 0;
  }

 private:
  unsigned char bytes_[16];
};

/// Inserts the text form, filled up to the stream's width like a string.
ORVO_EXPORT std::ostream& operator<<(std::ostream& stream, const UUID& uuid);

}  // namespace orvo

/// Hashes the bytes of a UUID, so that it may be a key of unordered containers.
template <>
struct ORVO_EXPORT std::hash<orvo::UUID> {
  /// The hash of the 16 bytes.
  std::size_t operator()(const orvo::UUID& uuid) const noexcept;
};

#endif  // ORVO_UUID_H_

#ifndef ORVO_BYTE_ORDER_H_
#define ORVO_BYTE_ORDER_H_

/// @file
/// Reversing bytes, hashing bytes, and numbers written in hexadecimal digits.
///
/// What the readers of binary formats share. Every function may be called from
/// any thread at once; reverse_byte_order() changes its argument.
///
/// @code
/// std::uint32_t size = 0x11223344;
/// orvo::reverse_byte_order(size);                    // size is 0x44332211
/// orvo::hash("ab", 2);                               // 5863208
/// orvo::HexStringToNumber<std::uint32_t>(" 0x1A ");  // 26
/// @endcode

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>

#include "orvo/export.h"

namespace orvo {

/// The 48-bit node of a UUID as it is stored: six bytes, reversed as one unit.
struct NodeT {
  unsigned char bytes[6];  ///< High byte first.
};

/// The value with the bytes of its object representation in reverse order,
/// whatever the byte order of the machine.
///
/// @tparam T  Any trivially copyable type whose bytes may be permuted.
template <typename T>
inline T reverse_byte_order_const(const T& value) {
  static_assert(std::is_trivially_copyable<T>::value,
                "only a plain value is no more than its bytes");
  T reversed = value;
  if constexpr (sizeof(T) == sizeof(std::uint16_t)) {
    std::uint16_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    bits = __builtin_bswap16(bits);
    std::memcpy(&reversed, &bits, sizeof bits);
  } else if constexpr (sizeof(T) == sizeof(std::uint32_t)) {
    std::uint32_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    bits = __builtin_bswap32(bits);
    std::memcpy(&reversed, &bits, sizeof bits);
  } else {
    unsigned char bytes[sizeof(T)];
    std::memcpy(bytes, &value, sizeof bytes);
    std::reverse(bytes, bytes + sizeof bytes);
    std::memcpy(&reversed, bytes, sizeof bytes);
  }
  return reversed;
}

/// Reverses the bytes of the argument itself.
///
/// @return  A copy of the new value.
template <typename T>
inline T reverse_byte_order(T& value) {
  value = reverse_byte_order_const(value);
  return value;
}

/// The times-33 hash of a range of bytes: from 5381 on, each byte b turns the
/// hash h into 33 h + b, modulo 2^64.
///
/// The same bytes have the same hash on every machine and in every release, so
/// that it may be stored. Whoever chooses the bytes can choose their hash.
///
/// @param data  May be null if @p size is 0.
/// @param size  Number of bytes.
ORVO_EXPORT std::uint64_t hash(const void* data, std::uint64_t size);

/// Reads the number at the start of a text in hexadecimal digits of either
/// case, with or without "0x" in front, as a stream reads it.
///
/// Nothing is reported: text without digits is 0, whatever follows the digits
/// is ignored ("1fz" is 0x1f), and a number too large for T is the largest T.
/// White space in front is skipped, and "-1" is the largest T as well.
///
/// @tparam T  One of unsigned short, unsigned int, unsigned long and unsigned
///            long long.
template <typename T>
T HexStringToNumber(const std::string& text);

/// @cond
extern template std::uint32_t reverse_byte_order(std::uint32_t&);
extern template std::uint16_t reverse_byte_order(std::uint16_t&);
extern template NodeT reverse_byte_order(NodeT&);
extern template std::uint32_t reverse_byte_order_const(const std::uint32_t&);
extern template unsigned short HexStringToNumber(const std::string&);
extern template unsigned HexStringToNumber(const std::string&);
extern template unsigned long HexStringToNumber(const std::string&);
extern template unsigned long long HexStringToNumber(const std::string&);
/// @endcond

}  // namespace orvo

#endif  // ORVO_BYTE_ORDER_H_

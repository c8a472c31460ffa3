#ifndef ORVO_SRC_INTERNAL_NUMBER_TEXT_H_
#define ORVO_SRC_INTERNAL_NUMBER_TEXT_H_

// Integers at the front of a text, read as an input stream of the classic
// locale reads them, without the cost of a stream.

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>
#include <type_traits>

#include "internal/ascii.h"

namespace orvo::internal {

// The value of a digit; at least the base for any other character.
template <unsigned kBase>
constexpr unsigned DigitValue(char c) {
  const unsigned decimal = static_cast<unsigned char>(c - '0');
  if (kBase == 10 || decimal < 10) return decimal;
  const unsigned letter = static_cast<unsigned char>(ToLower(c) - 'a');
  return letter < 6 ? letter + 10 : kBase;
}

// Whether 64 bits hold the number that these digits make.
template <unsigned kBase>
bool FitsInto64Bits(const char* first, const char* last) {
  std::uint64_t number = 0;
  for (; first != last; ++first) {
    if (__builtin_mul_overflow(number, kBase, &number)) return false;
    if (__builtin_add_overflow(number, DigitValue<kBase>(*first), &number)) {
      return false;
    }
  }
  return true;
}

// Reads a sign, "0x" if the base is 16, and digits, and returns where they end.
// There must be at least one character.
//
// As with a stream, text without digits stores 0, a number out of range stores
// the nearest limit, and a minus sign negates an unsigned number modulo 2^n.
template <unsigned kBase, typename Integer>
const char* ReadSignAndDigits(const char* next, const char* end,
                              Integer& value) {
  static_assert(kBase == 10 || kBase == 16);
  using Limits = std::numeric_limits<Integer>;

  const bool negative = *next == '-';
  if (negative || *next == '+') ++next;
  if (kBase == 16 && end - next >= 2 && next[0] == '0' &&
      ToLower(next[1]) == 'x') {
    next += 2;
  }

  const char* const digits = next;
  std::uint64_t magnitude = 0;
  for (; next != end; ++next) {
    const unsigned digit = DigitValue<kBase>(*next);
    if (digit >= kBase) break;
    magnitude = magnitude * kBase + digit;
  }

  constexpr std::ptrdiff_t kDigitsThatFit = kBase == 10 ? 19 : 16;
  const bool wrapped =
      next - digits > kDigitsThatFit && !FitsInto64Bits<kBase>(digits, next);
  const bool below_zero = negative && std::is_signed_v<Integer>;
  const std::uint64_t limit =
      static_cast<std::uint64_t>(Limits::max()) + (below_zero ? 1 : 0);
  if (wrapped || magnitude > limit) {
    value = below_zero ? Limits::min() : Limits::max();
  } else {
    value = static_cast<Integer>(negative ? 0 - magnitude : magnitude);
  }
  return next;
}

// Reads white space and a number as above; what follows does not matter. Blank
// text stores nothing, and the result is false.
template <unsigned kBase, typename Integer>
bool ReadNumber(std::string_view text, Integer& value) {
  const char* next = text.data();
  const char* const end = next + text.size();
  while (next != end && IsSpace(*next)) ++next;
  if (next == end) return false;
  ReadSignAndDigits<kBase>(next, end, value);
  return true;
}

}  // namespace orvo::internal

#endif  // ORVO_SRC_INTERNAL_NUMBER_TEXT_H_

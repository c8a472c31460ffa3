#ifndef ORVO_SRC_INTERNAL_NUMBER_TEXT_H_
#define ORVO_SRC_INTERNAL_NUMBER_TEXT_H_

// Integers at the front of a text, read as an input stream of the classic
// locale reads them, without the cost of a stream.

#include <limits>
#include <string_view>
#include <type_traits>

#include "internal/ascii.h"

namespace orvo::internal {

// The value of a digit; at least 16 for any other character.
constexpr unsigned DigitValue(char c) {
  if (IsDigit(c)) return static_cast<unsigned>(c - '0');
  const char lower = ToLower(c);
  if (lower >= 'a' && lower <= 'f')
    return static_cast<unsigned>(lower - 'a') + 10;
  return 16;
}

// Reads white space, a sign, "0x" if the base is 16, and digits; what follows
// does not matter.
//
// As with a stream, text without digits stores 0, a number out of range stores
// the nearest limit, and a minus sign negates an unsigned number modulo 2^n.
// Blank text stores nothing, and the result is false.
template <unsigned kBase, typename Integer>
bool ReadNumber(std::string_view text, Integer& value) {
  static_assert(kBase == 10 || kBase == 16);
  using Limits = std::numeric_limits<Integer>;

  const char* next = text.data();
  const char* const end = next + text.size();
  while (next != end && IsSpace(*next)) ++next;
  if (next == end) return false;

  const bool negative = *next == '-';
  if (negative || *next == '+') ++next;
  if (kBase == 16 && end - next >= 2 && next[0] == '0' &&
      ToLower(next[1]) == 'x') {
    next += 2;
  }

  unsigned long long magnitude = 0;
  bool overflow = false;
  for (; next != end; ++next) {
    const unsigned digit = DigitValue(*next);
    if (digit >= kBase) break;
    overflow |= __builtin_mul_overflow(magnitude, kBase, &magnitude);
    overflow |= __builtin_add_overflow(magnitude, digit, &magnitude);
  }

  const bool below_zero = negative && std::is_signed_v<Integer>;
  const unsigned long long limit =
      static_cast<unsigned long long>(Limits::max()) + (below_zero ? 1 : 0);
  if (overflow || magnitude > limit) {
    value = below_zero ? Limits::min() : Limits::max();
  } else {
    value = static_cast<Integer>(negative ? 0 - magnitude : magnitude);
  }
  return true;
}

}  // namespace orvo::internal

#endif  // ORVO_SRC_INTERNAL_NUMBER_TEXT_H_

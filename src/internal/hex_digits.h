#ifndef ORVO_SRC_INTERNAL_HEX_DIGITS_H_
#define ORVO_SRC_INTERNAL_HEX_DIGITS_H_

// The values of hexadecimal digits by table.

#include <array>
#include <cstddef>

#include "internal/number_text.h"

namespace orvo::internal {

using DigitValues = std::array<unsigned char, 256>;

constexpr DigitValues MakeDigitValues() {
  DigitValues values{};
  for (std::size_t c = 0; c < values.size(); ++c) {
    values[c] =
        static_cast<unsigned char>(DigitValue<16>(static_cast<char>(c)));
  }
  return values;
}

inline constexpr DigitValues kHexDigitValues = MakeDigitValues();

// DigitValue<16>() without branches: 16 for a character that is no digit, so
// that the values of several characters joined by "or" tell whether all are
// digits.
constexpr unsigned HexDigitValue(char c) {
  return kHexDigitValues[static_cast<unsigned char>(c)];
}

}  // namespace orvo::internal

#endif  // ORVO_SRC_INTERNAL_HEX_DIGITS_H_

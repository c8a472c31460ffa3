#ifndef ORVO_SRC_INTERNAL_ASCII_H_
#define ORVO_SRC_INTERNAL_ASCII_H_

// The character classes of the "C" locale for all 256 byte values. The system's
// functions follow the locale that the application has set, and are undefined
// for the negative values of a signed char.

namespace orvo::internal {

constexpr bool IsUpper(char c) {
  return c >= 'A' && c <= 'Z';
}
constexpr bool IsLower(char c) {
  return c >= 'a' && c <= 'z';
}
constexpr bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}
constexpr bool IsAlpha(char c) {
  return IsUpper(c) || IsLower(c);
}
constexpr bool IsAlnum(char c) {
  return IsAlpha(c) || IsDigit(c);
}
constexpr bool IsSpace(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

constexpr char ToUpper(char c) {
  return IsLower(c) ? static_cast<char>(c - 'a' + 'A') : c;
}
constexpr char ToLower(char c) {
  return IsUpper(c) ? static_cast<char>(c - 'A' + 'a') : c;
}

}  // namespace orvo::internal

#endif  // ORVO_SRC_INTERNAL_ASCII_H_

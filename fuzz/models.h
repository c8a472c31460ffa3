#ifndef ORVO_FUZZ_MODELS_H_
#define ORVO_FUZZ_MODELS_H_

// The plain text functions that several models are made of, byte by byte.

#include <string>
#include <string_view>
#include <vector>

namespace orvo_fuzz::model {

inline bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

inline std::string_view Strip(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  return text;
}

/// Digits behind at most one sign, with spaces around; no digit is needed.
inline bool IsInteger(std::string_view text) {
  text = Strip(text);
  if (!text.empty() && (text[0] == '-' || text[0] == '+')) {
    text.remove_prefix(1);
  }
  for (const char c : text) {
    if (!IsDigit(c)) return false;
  }
  return true;
}

/// An integer once its only point is taken out, wherever that stands.
inline bool IsFloat(std::string_view text) {
  std::string without;
  int points = 0;
  for (const char c : text) {
    if (c == '.') {
      ++points;
    } else {
      without += c;
    }
  }
  return points < 2 && IsInteger(without);
}

/// @param most  The largest number of cuts; negative for no limit.
inline std::vector<std::string> Split(std::string_view text, char separator,
                                      int most) {
  std::vector<std::string> parts(1);
  for (const char c : text) {
    if (c == separator && most != 0) {
      parts.emplace_back();
      --most;
    } else {
      parts.back() += c;
    }
  }
  return parts;
}

}  // namespace orvo_fuzz::model

#endif  // ORVO_FUZZ_MODELS_H_

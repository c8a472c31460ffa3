#include "orvo/str_gen.h"

#include <algorithm>
#include <cstddef>

#include "internal/ascii.h"

namespace orvo {
namespace {

constexpr std::size_t kAsciiSize = 128;

// The ASCII characters of one class, selected at compile time.
template <bool (*belongs)(char)>
struct CharacterSet {
  char chars[kAsciiSize] = {};
  std::size_t size = 0;

  constexpr CharacterSet() {
    for (std::size_t code = 0; code < kAsciiSize; ++code) {
      const char c = static_cast<char>(code);
      if (belongs(c)) chars[size++] = c;
    }
  }
};

template <bool (*belongs)(char)>
std::string MakeSet() {
  static constexpr CharacterSet<belongs> set;
  return std::string(set.chars, set.size);
}

using internal::IsAlnum;
using internal::IsAlpha;
using internal::IsDigit;
using internal::IsLower;
using internal::IsSpace;
using internal::IsUpper;

// Only for characters of ASCII, like the helpers that follow.
constexpr bool IsAscii(char) {
  return true;
}
constexpr bool IsCntrl(char c) {
  return c < ' ' || c == '\x7f';
}
constexpr bool IsPrint(char c) {
  return !IsCntrl(c);
}
constexpr bool IsGraph(char c) {
  return IsPrint(c) && c != ' ';
}
constexpr bool IsPunct(char c) {
  return IsGraph(c) && !IsAlnum(c);
}
constexpr bool IsXdigit(char c) {
  return IsDigit(c) || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}
constexpr bool IsUpperOrDigit(char c) {
  return IsUpper(c) || IsDigit(c);
}
constexpr bool IsLowerOrDigit(char c) {
  return IsLower(c) || IsDigit(c);
}

constexpr bool IsAsciiCode(int c) {
  return c >= 0 && c < static_cast<int>(kAsciiSize);
}

}  // namespace

std::string create_ascii_chars() {
  return MakeSet<IsAscii>();
}

const std::string StrGen::ascii_chars_ = create_ascii_chars();

std::string StrGen::ascii_chars() {
  return ascii_chars_;
}

std::string StrGen::subset(const Pred& pred) {
  char chars[kAsciiSize];
  char* const end = std::remove_copy_if(ascii_chars_.begin(),
                                        ascii_chars_.end(), chars, pred);
  return std::string(chars, end);
}

std::string StrGen::alnum() {
  return MakeSet<IsAlnum>();
}
std::string StrGen::alpha() {
  return MakeSet<IsAlpha>();
}
std::string StrGen::cntrl() {
  return MakeSet<IsCntrl>();
}
std::string StrGen::digit() {
  return MakeSet<IsDigit>();
}
std::string StrGen::graph() {
  return MakeSet<IsGraph>();
}
std::string StrGen::lower() {
  return MakeSet<IsLower>();
}
std::string StrGen::print() {
  return MakeSet<IsPrint>();
}
std::string StrGen::punct() {
  return MakeSet<IsPunct>();
}
std::string StrGen::space() {
  return MakeSet<IsSpace>();
}
std::string StrGen::upper() {
  return MakeSet<IsUpper>();
}
std::string StrGen::xdigit() {
  return MakeSet<IsXdigit>();
}
std::string StrGen::upper_or_digit() {
  return MakeSet<IsUpperOrDigit>();
}
std::string StrGen::lower_or_digit() {
  return MakeSet<IsLowerOrDigit>();
}

bool StrGen::is_upper_or_digit(int c) {
  return IsAsciiCode(c) && IsUpperOrDigit(static_cast<char>(c));
}

bool StrGen::is_lower_or_digit(int c) {
  return IsAsciiCode(c) && IsLowerOrDigit(static_cast<char>(c));
}

}  // namespace orvo

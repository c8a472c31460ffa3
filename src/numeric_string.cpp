#include "orvo/numeric_string.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <ostream>
#include <string_view>

#include "internal/ascii.h"
#include "internal/number_text.h"
#include "internal/words.h"
#include "orvo/strings.h"

namespace orvo {
namespace {

using internal::InEachByte;
using internal::IsDigit;
using internal::kTopBits;
using internal::kWordSize;
using internal::LoadWord;

// Negative, 0 or positive, as std::string::compare() answers.
int Compare(const Chunk& a, const Chunk& b) {
  if (!a.numeric() || !b.numeric()) return a.text().compare(b.text());
  return (a.value() > b.value()) - (a.value() < b.value());
}

// The top bit of each byte that is a digit. No sum of two bytes carries into
// the next one.
std::uint64_t DigitsIn(std::uint64_t word) {
  const std::uint64_t low = word & ~kTopBits;
  const std::uint64_t from_0 = low + InEachByte(0x80 - '0');
  const std::uint64_t above_9 = low + InEachByte(0x80 - '9' - 1);
  return from_0 & ~above_9 & ~word & kTopBits;
}

// The end of the run of digits or of other characters that begins a text.
// Taking a word at a time spares the processor the guess where a run ends.
const char* EndOfRun(const char* text, const char* end) {
  const bool digits = IsDigit(*text);
  const std::uint64_t run = digits ? kTopBits : 0;
  for (; static_cast<std::size_t>(end - text) >= kWordSize; text += kWordSize) {
    const std::uint64_t word = DigitsIn(LoadWord(text));
    if (word != run) return text + internal::LeadingZeroBytes(word ^ run);
  }
  return std::find_if(text, end, [=](char c) { return IsDigit(c) != digits; });
}

// Characters that are looked at all at once, as vectors.
constexpr std::size_t kBlock = 16;

// How many of these characters are of another kind than the one that follows.
std::size_t CountChanges(const char* block) {
  unsigned char changes = 0;
  for (std::size_t i = 0; i < kBlock; ++i) {
    changes = static_cast<unsigned char>(
        changes + (IsDigit(block[i]) != IsDigit(block[i + 1])));
  }
  return changes;
}

std::size_t CountRuns(const std::string& text) {
  if (text.empty()) return 0;
  std::size_t runs = 1;
  std::size_t i = 0;
  for (; i + kBlock < text.size(); i += kBlock) runs += CountChanges(&text[i]);
  for (++i; i < text.size(); ++i) {
    runs += IsDigit(text[i]) != IsDigit(text[i - 1]);
  }
  return runs;
}

// How many bytes two texts have in common before their first difference.
inline std::size_t CommonPrefix(const char* a, const char* b,
                                std::size_t size) {
  std::size_t same = 0;
  for (; size - same >= kWordSize; same += kWordSize) {
    const std::uint64_t a_word = LoadWord(a + same);
    const std::uint64_t b_word = LoadWord(b + same);
    if (a_word != b_word)
      return same + internal::LeadingZeroBytes(a_word ^ b_word);
  }
  while (same < size && a[same] == b[same]) ++same;
  return same;
}

// The same at the speed of memcmp().
std::size_t LongCommonPrefix(const char* a, const char* b, std::size_t size) {
  constexpr std::size_t kLong = 512;
  std::size_t same = 0;
  while (size - same >= kLong && std::memcmp(a + same, b + same, kLong) == 0) {
    same += kLong;
  }
  return same + CommonPrefix(a + same, b + same, size - same);
}

// The rest of a std::string from the beginning of a chunk on, so that a NUL
// follows, which ends a run of digits.
struct Rest {
  const char* text;
  std::size_t size;
};

// Where the number begins that goes on or ends at `i`.
inline std::size_t StartOfNumber(Rest rest, std::size_t i) {
  while (i > 0 && IsDigit(rest.text[i - 1])) --i;
  return i;
}

// Looks at the first difference of two texts, or at their common end: negative
// if a comes before b, positive if not, 0 if the values of the numbers there
// have to be compared.
[[gnu::always_inline]] inline int CompareAtDifference(Rest a, Rest b,
                                                      std::size_t same) {
  const bool a_digit = IsDigit(a.text[same]);
  const bool b_digit = IsDigit(b.text[same]);
  if (a_digit || b_digit) {
    const std::size_t start = StartOfNumber(a, same);
    if (start < same || a_digit == b_digit) {
      // Two short numbers without leading zeros never tie, and the longer one
      // is greater.
      constexpr std::size_t kSafeDigits = 9;
      std::size_t end = same + (a_digit && b_digit);
      while (IsDigit(a.text[end]) && IsDigit(b.text[end])) ++end;
      if (end - start > kSafeDigits || a.text[start] == '0' ||
          b.text[start] == '0') {
        return 0;
      }
      if (IsDigit(a.text[end])) return 1;
      if (IsDigit(b.text[end])) return -1;
      return a.text[same] - b.text[same];
    }
  }
  if (same == b.size) return 1;
  if (same == a.size) return -1;
  // A text that ends where a number begins comes before one that goes on.
  if (same > 0 && a_digit != b_digit) return a_digit ? -1 : 1;
  return static_cast<unsigned char>(a.text[same]) -
         static_cast<unsigned char>(b.text[same]);
}

// Takes a number off the front of a text.
int TakeNumber(Rest* rest) {
  std::size_t digits = 0;
  while (IsDigit(rest->text[digits])) ++digits;
  int value = 0;
  internal::ReadNumber<10>(std::string_view(rest->text, digits), value);
  *rest = {rest->text + digits, rest->size - digits};
  return value;
}

// Apart from its caller, whose usual case then needs no stack.
[[gnu::noinline]] bool ComesBefore(Rest a, Rest b) {
  for (;;) {
    const std::size_t same =
        LongCommonPrefix(a.text, b.text, std::min(a.size, b.size));
    const int order = CompareAtDifference(a, b, same);
    if (order != 0) return order < 0;

    const std::size_t start = StartOfNumber(a, same);
    a = {a.text + start, a.size - start};
    b = {b.text + start, b.size - start};
    const int a_value = TakeNumber(&a);
    const int b_value = TakeNumber(&b);
    if (a_value != b_value) return a_value < b_value;
  }
}

// Takes a run of digits or of other characters off the front of a text.
std::string_view TakeRun(std::string_view* text) {
  const char* const end = EndOfRun(text->data(), text->data() + text->size());
  const auto size = static_cast<std::size_t>(end - text->data());
  const std::string_view run = text->substr(0, size);
  text->remove_prefix(size);
  return run;
}

// Compares runs of digits by value: negative, 0 or positive.
int CompareNumbers(std::string_view a, std::string_view b) {
  a.remove_prefix(std::min(a.find_first_not_of('0'), a.size()));
  b.remove_prefix(std::min(b.find_first_not_of('0'), b.size()));
  if (a.size() != b.size()) return a.size() < b.size() ? -1 : 1;
  return a.compare(b);
}

}  // namespace

Chunk::Chunk(const std::string& text, bool numeric)
    : Chunk(text.data(), text.size(), numeric) {}

Chunk::Chunk(const char* text, std::size_t size, bool numeric)
    : numeric_(numeric), text_(text, size), value_(0) {
  if (numeric) internal::ReadNumber<10>(text_, value_);
}

bool Chunk::operator<(const Chunk& other) const {
  return Compare(*this, other) < 0;
}

bool Chunk::operator>(const Chunk& other) const {
  return Compare(*this, other) > 0;
}

// Most texts are kept elsewhere too. NOLINTNEXTLINE(modernize-pass-by-value)
NumericString::NumericString(const std::string& text) : text_(text) {
  chunks_.reserve(CountRuns(text_));
  const char* const end = text_.data() + text_.size();
  for (const char* run = text_.data(); run != end;) {
    const char* const next = EndOfRun(run, end);
    const auto size = static_cast<std::size_t>(next - run);
    chunks_.emplace_back(run, size, IsDigit(*run));
    run = next;
  }
}

bool NumericString::operator<(const NumericString& other) const {
  const std::size_t common = std::min(chunks_.size(), other.chunks_.size());
  for (std::size_t i = 0; i < common; ++i) {
    const int order = Compare(chunks_[i], other.chunks_[i]);
    if (order != 0) return order < 0;
  }
  return chunks_.size() < other.chunks_.size();
}

bool NumericString::operator==(const NumericString& other) const {
  return text_ == other.text_;
}

bool NumericStringCompare::ComesBefore_(const std::string& a,
                                        const std::string& b) {
  // Most names are short or differ early; only the rest is worth a call.
  constexpr std::size_t kShort = 32;
  const Rest left = {a.data(), a.size()};
  const Rest right = {b.data(), b.size()};
  const std::size_t size = std::min(left.size, right.size);
  const std::size_t same =
      CommonPrefix(left.text, right.text, std::min(size, kShort));
  if (same < kShort) {
    const int order = CompareAtDifference(left, right, same);
    if (order != 0) return order < 0;
  }
  return ComesBefore(left, right);
}

bool NaturalLess::operator()(std::string_view a, std::string_view b) const {
  while (!a.empty() && !b.empty()) {
    const bool numeric = IsDigit(a[0]) && IsDigit(b[0]);
    const std::string_view a_run = TakeRun(&a);
    const std::string_view b_run = TakeRun(&b);
    const int order =
        numeric ? CompareNumbers(a_run, b_run) : a_run.compare(b_run);
    if (order != 0) return order < 0;
  }
  return a.empty() && !b.empty();
}

}  // namespace orvo

std::ostream& operator<<(std::ostream& stream,
                         const orvo::NumericString& text) {
  return stream << text.text();
}

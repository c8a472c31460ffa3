#include "orvo/numeric_string.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <ostream>
#include <utility>

#include "internal/ascii.h"
#include "orvo/strings.h"

namespace orvo {
namespace {

using internal::IsDigit;

// Negative, 0 or positive, as std::string::compare() answers.
int Compare(const Chunk& a, const Chunk& b) {
  if (!a.numeric() || !b.numeric()) return a.text().compare(b.text());
  return (a.value() > b.value()) - (a.value() < b.value());
}

// The end of the run of digits or of other characters that begins a text.
const char* EndOfRun(const char* text, const char* end) {
  const bool digits = IsDigit(*text);
  return std::find_if(text + 1, end,
                      [=](char c) { return IsDigit(c) != digits; });
}

std::size_t CountRuns(const std::string& text) {
  std::size_t runs = text.empty() ? 0 : 1;
  for (std::size_t i = 1; i < text.size(); ++i) {
    runs += IsDigit(text[i - 1]) != IsDigit(text[i]);
  }
  return runs;
}

// How many bytes two texts have in common before the first difference.
std::size_t CommonPrefix(const char* a, const char* b, std::size_t size) {
  std::size_t same = 0;
  constexpr std::size_t kBlock = 256;
  while (size - same >= kBlock &&
         std::memcmp(a + same, b + same, kBlock) == 0) {
    same += kBlock;
  }
  for (; size - same >= sizeof(std::uint64_t); same += sizeof(std::uint64_t)) {
    std::uint64_t a_word;
    std::uint64_t b_word;
    std::memcpy(&a_word, a + same, sizeof a_word);
    std::memcpy(&b_word, b + same, sizeof b_word);
    if (a_word != b_word) break;
  }
  while (same < size && a[same] == b[same]) ++same;
  return same;
}

// What is left of a text.
struct Rest {
  const char* at;
  const char* end;

  explicit Rest(const std::string& text)
      : at(text.data()), end(text.data() + text.size()) {}

  std::size_t size() const { return static_cast<std::size_t>(end - at); }
  bool AtDigit() const { return at != end && IsDigit(*at); }

  // The value of the run of digits here; the text behind it is left.
  int TakeNumber() {
    std::int64_t value = 0;
    for (; AtDigit(); ++at) {
      if (value <= INT_MAX) value = value * 10 + (*at - '0');
    }
    return static_cast<int>(std::min<std::int64_t>(value, INT_MAX));
  }
};

// Which of two texts comes first where they first differ and not two numbers
// meet. Inside a text, the one that ends or goes over to a number is shorter.
bool TextComesFirst(const Rest& left, const Rest& right, bool inside_text) {
  if (left.at == left.end) return right.at != right.end;
  if (right.at == right.end) return false;
  if (inside_text && left.AtDigit() != right.AtDigit()) return left.AtDigit();
  return static_cast<unsigned char>(*left.at) <
         static_cast<unsigned char>(*right.at);
}

}  // namespace

Chunk::Chunk(const std::string& text, bool numeric)
    : Chunk(std::string(text), numeric) {}

Chunk::Chunk(std::string&& text, bool numeric)
    : numeric_(numeric),
      text_(std::move(text)),
      value_(numeric ? StringToNumber<int>(text_) : 0) {}

bool Chunk::operator<(const Chunk& other) const {
  return Compare(*this, other) < 0;
}

bool Chunk::operator>(const Chunk& other) const {
  return Compare(*this, other) > 0;
}

NumericString::NumericString(const std::string& text) : text_(text) {
  chunks_.reserve(CountRuns(text_));
  const char* const end = text_.data() + text_.size();
  for (const char* run = text_.data(); run != end;) {
    const char* const next = EndOfRun(run, end);
    chunks_.emplace_back(std::string(run, next), IsDigit(*run));
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

bool NumericStringCompare::operator()(const std::string& a,
                                      const std::string& b) const {
  Rest left(a);
  Rest right(b);
  // In each round both begin with a chunk, and all chunks before them tie.
  for (;;) {
    std::size_t same =
        CommonPrefix(left.at, right.at, std::min(left.size(), right.size()));
    left.at += same;
    right.at += same;

    const bool after_digit = same > 0 && IsDigit(left.at[-1]);
    if (after_digit + left.AtDigit() + right.AtDigit() < 2) {
      return TextComesFirst(left, right, same > 0);
    }

    // Numbers differ here, which may have begun in the common part.
    for (; same > 0 && IsDigit(left.at[-1]); --same) {
      --left.at;
      --right.at;
    }
    const int left_value = left.TakeNumber();
    const int right_value = right.TakeNumber();
    if (left_value != right_value) return left_value < right_value;
  }
}

}  // namespace orvo

std::ostream& operator<<(std::ostream& stream,
                         const orvo::NumericString& text) {
  return stream << text.text();
}

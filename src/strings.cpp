#include "orvo/strings.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>
#include <system_error>

#include "internal/ascii.h"
#include "internal/number_text.h"
#include "internal/words.h"

namespace orvo {
namespace {

// Visits a text block by block until a visit fails. The size of a block is a
// constant, so that the compiler turns a visit into a few vector instructions;
// the last block may overlap the one before.
template <std::size_t kBlock, typename Visit>
bool EveryBlockOf(std::size_t size, Visit visit) {
  constexpr std::integral_constant<std::size_t, kBlock> kSize;
  for (std::size_t start = 0; start + kBlock < size; start += kBlock) {
    if (!visit(start, kSize)) return false;
  }
  return visit(size - kBlock, kSize);
}

template <typename Visit>
bool EveryBlock(std::size_t size, Visit visit) {
  if (size >= 16) return EveryBlockOf<16>(size, visit);
  if (size >= 8) return EveryBlockOf<8>(size, visit);
  return size == 0 || EveryBlockOf<1>(size, visit);
}

template <typename IsMember>
bool HasOnly(const std::string& text, IsMember is_member) {
  return EveryBlock(text.size(), [&](std::size_t start, auto size) {
    const char* const block = text.data() + start;
    unsigned char strangers = 0;
    for (std::size_t i = 0; i < size; ++i) {
      strangers |= static_cast<unsigned char>(!is_member(block[i]));
    }
    return strangers == 0;
  });
}

template <typename Change>
std::string ChangeEach(const std::string& text, Change change) {
  std::string changed = text;
  EveryBlock(text.size(), [&](std::size_t start, auto size) {
    char block[size];
    std::memcpy(block, text.data() + start, size);
    for (char& c : block) c = change(c);
    std::memcpy(changed.data() + start, block, size);
    return true;
  });
  return changed;
}

const char* SkipSpaces(const char* next, const char* end) {
  while (next != end && *next == ' ') ++next;
  return next;
}

const char* SkipDigits(const char* next, const char* end) {
  while (next != end && internal::IsDigit(*next)) ++next;
  return next;
}

// The one point that a number may have, wherever it stands.
class Point {
 public:
  explicit Point(bool allowed) : allowed_(allowed) {}

  // Whether the next character is that point.
  bool IsAt(const char* next, const char* end) {
    if (!allowed_ || next == end || *next != '.') return false;
    allowed_ = false;
    return true;
  }

 private:
  bool allowed_;
};

// Whether digits and then spaces fill the rest of a number.
bool IsRestOfNumber(const char* next, const char* end, Point point) {
  next = SkipDigits(next, end);
  if (point.IsAt(next, end)) next = SkipDigits(next + 1, end);
  next = SkipSpaces(next, end);
  if (point.IsAt(next, end)) next = SkipSpaces(next + 1, end);
  return next == end;
}

bool IsNumber(const std::string& text, Point point) {
  const char* const end = text.data() + text.size();
  const char* next = SkipSpaces(text.data(), end);
  if (point.IsAt(next, end)) next = SkipSpaces(next + 1, end);
  if (next != end && (*next == '-' || *next == '+')) ++next;
  return IsRestOfNumber(next, end, point);
}

template <typename Integer>
std::optional<Integer> ParseWhole(std::string_view text) {
  Integer number;
  const char* const text_end = text.data() + text.size();
  const auto [end, error] = std::from_chars(text.data(), text_end, number);
  if (error != std::errc() || end != text_end) return std::nullopt;
  return number;
}

// How often a text can be cut at a separator, up to a largest number.
std::size_t CountCuts(const std::string& text, char separator,
                      std::size_t most) {
  constexpr std::size_t kBlock = 16;
  const char* const data = text.data();
  std::size_t cuts = 0;
  std::size_t start = 0;
  for (; start + kBlock <= text.size() && cuts < most; start += kBlock) {
    unsigned char cuts_here = 0;
    for (std::size_t i = 0; i < kBlock; ++i) {
      if (data[start + i] == separator) ++cuts_here;
    }
    cuts += cuts_here;
  }
  for (; start < text.size() && cuts < most; ++start) {
    if (data[start] == separator) ++cuts;
  }
  return std::min(cuts, most);
}

// The first separator, which is known to be there.
const char* FindSeparator(const char* start, const char* end, char separator) {
  // Most parts are short: eight bytes at once find their end without a call.
  if (end - start >= 8) {
    const std::uint64_t found =
        internal::BytesEqualTo(separator, internal::LoadWord(start));
    if (found != 0) return start + internal::LeadingZeroBytes(found);
  }
  return static_cast<const char*>(
      std::memchr(start, separator, static_cast<std::size_t>(end - start)));
}

template <std::size_t kSize>
void CopyEnds(char* place, std::string_view text) {
  const std::size_t rest = text.size() - kSize;
  std::memcpy(place, text.data(), kSize);
  std::memcpy(place + rest, text.data() + rest, kSize);
}

// Copies a text to a place that is large enough, and returns the end of the
// copy. Most texts that are joined are short: two overlapping copies of a
// constant size need no call.
[[gnu::always_inline]] inline char* CopyText(char* place,
                                             std::string_view text) {
  const std::size_t size = text.size();
  if (size < 16) {
    if (size >= 8) {
      CopyEnds<8>(place, text);
    } else if (size >= 4) {
      CopyEnds<4>(place, text);
    } else if (size >= 2) {
      CopyEnds<2>(place, text);
    } else if (size == 1) {
      *place = text[0];
    }
  } else if (size <= 32) {
    CopyEnds<16>(place, text);
  } else if (size <= 64) {
    CopyEnds<32>(place, text);
  } else {
    std::memcpy(place, text.data(), size);
  }
  return place + size;
}

// The separator is put by a function of its own, so that the usual ones of one
// or two characters need no call either.
template <typename PutSeparator>
void Join(char* place, const std::string* items, std::size_t count,
          PutSeparator put_separator) {
  const std::string* const last = items + count - 1;
  for (; items != last; ++items) {
    place = put_separator(CopyText(place, *items));
  }
  CopyText(place, *last);
}

int SaturateToInt(unsigned long long value) {
  constexpr int kMax = std::numeric_limits<int>::max();
  return value > kMax ? kMax : static_cast<int>(value);
}

}  // namespace

std::string to_lower(const std::string& text) {
  return ChangeEach(text, [](char c) { return internal::ToLower(c); });
}

std::string to_upper(const std::string& text) {
  return ChangeEach(text, [](char c) { return internal::ToUpper(c); });
}

bool StringIsDigits(std::string& text) {
  return HasOnly(text, [](char c) { return internal::IsDigit(c); });
}

bool StringIsAlpha(std::string& text) {
  return HasOnly(text, [](char c) { return internal::IsAlpha(c); });
}

bool StringIsAlphaNumeric(std::string& text) {
  return HasOnly(text, [](char c) { return internal::IsAlnum(c); });
}

bool StringIsInteger(const std::string& text) {
  return IsNumber(text, Point(false));
}

bool StringIsFloat(const std::string& text) {
  return IsNumber(text, Point(true));
}

template <typename Integer>
void ReadInteger_(const std::string& text, Integer& value) {
  internal::ReadNumber<10>(text, value);
}

template <typename Integer>
bool ReadCheckedInteger_(const std::string& text, Integer& value) {
  const char* const end = text.data() + text.size();
  const char* const first = SkipSpaces(text.data(), end);
  if (first == end) return true;

  Integer number;
  const char* const rest = internal::ReadSignAndDigits<10>(first, end, number);
  // A point in front of the sign hides the number from the reader.
  const bool valid = *first == '.' ? IsNumber(text, Point(true))
                                   : IsRestOfNumber(rest, end, Point(true));
  if (valid) value = number;
  return valid;
}

std::optional<long long> ParseSigned_(std::string_view text) {
  return ParseWhole<long long>(text);
}

std::optional<unsigned long long> ParseUnsigned_(std::string_view text) {
  return ParseWhole<unsigned long long>(text);
}

template <>
std::vector<std::string> SplitString(const std::string& text,
                                     const char& separator, int maxsplit) {
  // A negative number becomes one that no text reaches.
  std::size_t cuts =
      CountCuts(text, separator, static_cast<std::size_t>(maxsplit));
  std::vector<std::string> parts;
  parts.reserve(cuts + 1);
  const char* start = text.data();
  const char* const end = start + text.size();
  for (; cuts != 0; --cuts) {
    const char* const cut = FindSeparator(start, end, separator);
    parts.emplace_back(start, cut);
    start = cut + 1;
  }
  parts.emplace_back(start, end);
  return parts;
}

std::string JoinString(const std::vector<std::string>& items,
                       const std::string& separator) {
  return JoinArray_(items.data(), items.size(), separator);
}

std::string JoinArray_(const std::string* items, std::size_t count,
                       std::string_view separator) {
  if (count == 0) return std::string();
  std::size_t size = separator.size() * (count - 1);
  for (std::size_t i = 0; i < count; ++i) size += items[i].size();
  std::string joined(size, '\0');

  char* const place = joined.data();
  const char* const source = separator.data();
  if (separator.size() == 1) {
    Join(place, items, count, [=](char* next) {
      *next = *source;
      return next + 1;
    });
  } else if (separator.size() == 2) {
    Join(place, items, count, [=](char* next) {
      std::memcpy(next, source, 2);
      return next + 2;
    });
  } else {
    Join(place, items, count, [=](char* next) {
      return next + separator.copy(next, separator.size());
    });
  }
  return joined;
}

Tokenizer_::Tokenizer_(std::string_view text) : pieces_{text} {}

void Tokenizer_::Cut(std::string_view token) {
  if (token.empty()) {
    throw std::invalid_argument("token must have non-zero length.");
  }
  std::vector<std::string_view> cut;
  for (std::string_view piece : pieces_) {
    std::size_t found;
    while ((found = piece.find(token)) != std::string_view::npos) {
      if (found != 0) cut.push_back(piece.substr(0, found));
      cut.push_back(piece.substr(found, token.size()));
      piece.remove_prefix(found + token.size());
    }
    cut.push_back(piece);
  }
  pieces_.swap(cut);
}

std::deque<std::string> Tokenizer_::StrippedPieces() const {
  std::deque<std::string> stripped;
  for (const std::string_view piece : pieces_) {
    stripped.emplace_back(strip(piece));
  }
  return stripped;
}

std::deque<std::string> tokenize_string(const std::string& token,
                                        const std::string& text) {
  return tokenize_string(&token, &token + 1, text);
}

std::deque<std::string> tokenize_string(
    std::initializer_list<std::string> tokens, const std::string& text) {
  return tokenize_string(tokens.begin(), tokens.end(), text);
}

void SingleLine::AddWord(const std::string& word) {
  words_.push_back(word);
  length_ = SaturateToInt(static_cast<unsigned>(length_) + word.size());
}

int SingleLine::GetLineLength() const {
  if (words_.empty()) return -1;
  return SaturateToInt(static_cast<unsigned>(length_) + words_.size() - 1);
}

int SingleLine::PredictLength(const std::string& word) const {
  return SaturateToInt(static_cast<unsigned>(length_) + words_.size() +
                       word.size());
}

std::string SingleLine::GetLine() const {
  return JoinString(words_, " ");
}

void SingleLine::Reset() {
  words_.clear();
  length_ = 0;
}

// By value because programs may hold its address. NOLINTNEXTLINE(performance-*)
std::string format_paragraph(std::string text, int indent, int width) {
  const long long available = static_cast<long long>(width) - indent;
  const std::size_t spaces = indent > 0 ? static_cast<std::size_t>(indent) : 0;
  std::string lines;
  const auto close_line = [&](std::string_view line) {
    lines.append(spaces, ' ').append(line).push_back('\n');
  };

  // The words of a line and the spaces between them are one stretch of the
  // text. A word at the start of a line is taken however wide it is.
  std::size_t line = 0;
  for (std::size_t word = 0, end = 0; end != text.size(); word = end + 1) {
    end = std::min(text.find(' ', word), text.size());
    const bool ends_line = end > word && text[end - 1] == '\n';
    if (line != word && static_cast<long long>(end - line) > available) {
      close_line({&text[line], word - 1 - line});
      if (ends_line) close_line({});
      line = word;
    }
    if (ends_line) {
      close_line({&text[line], end - line});
      line = end + 1;
    }
  }
  if (!lines.empty()) lines.pop_back();
  return lines;
}

template ORVO_EXPORT std::string strip(const std::string&);
template ORVO_EXPORT void ReadInteger_(const std::string&, short&);
template ORVO_EXPORT bool ReadCheckedInteger_(const std::string&, short&);
template ORVO_EXPORT void ReadInteger_(const std::string&, unsigned short&);
template ORVO_EXPORT bool ReadCheckedInteger_(const std::string&,
                                              unsigned short&);
template ORVO_EXPORT void ReadInteger_(const std::string&, int&);
template ORVO_EXPORT bool ReadCheckedInteger_(const std::string&, int&);
template ORVO_EXPORT void ReadInteger_(const std::string&, unsigned&);
template ORVO_EXPORT bool ReadCheckedInteger_(const std::string&, unsigned&);
template ORVO_EXPORT void ReadInteger_(const std::string&, long&);
template ORVO_EXPORT bool ReadCheckedInteger_(const std::string&, long&);
template ORVO_EXPORT void ReadInteger_(const std::string&, unsigned long&);
template ORVO_EXPORT bool ReadCheckedInteger_(const std::string&,
                                              unsigned long&);
template ORVO_EXPORT void ReadInteger_(const std::string&, long long&);
template ORVO_EXPORT bool ReadCheckedInteger_(const std::string&, long long&);
template ORVO_EXPORT void ReadInteger_(const std::string&, unsigned long long&);
template ORVO_EXPORT bool ReadCheckedInteger_(const std::string&,
                                              unsigned long long&);
template ORVO_EXPORT bool StringToNumber(const std::string&, int&);
template ORVO_EXPORT int StringToNumber(const std::string&);
template ORVO_EXPORT std::string JoinString(const std::string*,
                                            const std::string*, const char&);
template ORVO_EXPORT std::string JoinString(StringIterator_, StringIterator_,
                                            const char&);
template ORVO_EXPORT std::string JoinString(ConstStringIterator_,
                                            ConstStringIterator_, const char&);
template ORVO_EXPORT std::deque<std::string> tokenize_string(
    const std::string*, const std::string*, const std::string&);
template ORVO_EXPORT std::deque<std::string> tokenize_string(
    StringIterator_, StringIterator_, const std::string&);
template ORVO_EXPORT std::deque<std::string> tokenize_string(
    ConstStringIterator_, ConstStringIterator_, const std::string&);

}  // namespace orvo

#include "orvo/strings.h"

#include <algorithm>
#include <limits>

#include "internal/ascii.h"
#include "internal/number_text.h"

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
  const char* const data = text.data();
  return EveryBlock(text.size(), [=](std::size_t start, auto size) {
    unsigned char strangers = 0;
    for (std::size_t i = start; i < start + size; ++i) {
      strangers |= static_cast<unsigned char>(!is_member(data[i]));
    }
    return strangers == 0;
  });
}

template <typename Change>
std::string ChangeEach(const std::string& text, Change change) {
  std::string changed = text;
  char* const data = changed.data();
  EveryBlock(text.size(), [=](std::size_t start, auto size) {
    for (std::size_t i = start; i < start + size; ++i) {
      data[i] = change(data[i]);
    }
    return true;
  });
  return changed;
}

// Whether the text is an integer once that many points, which may stand
// anywhere, and the spaces around it are left out.
bool IsNumber(const std::string& text, int points_allowed) {
  const char* next = text.data();
  const char* const end = next + text.size();
  int points = 0;
  const auto skip_point_or = [&](auto is_member) {
    for (; next != end; ++next) {
      if (is_member(*next)) continue;
      if (*next != '.') return;
      if (++points > points_allowed) return;
    }
  };
  const auto is_space = [](char c) { return c == ' '; };
  skip_point_or(is_space);
  if (next != end && (*next == '-' || *next == '+')) ++next;
  skip_point_or(internal::IsDigit);
  skip_point_or(is_space);
  return next == end;
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
  return IsNumber(text, 0);
}

bool StringIsFloat(const std::string& text) {
  return IsNumber(text, 1);
}

template <typename Integer>
void ReadInteger_(const std::string& text, Integer& value) {
  internal::ReadNumber<10>(text, value);
}

std::size_t CountCuts_(const std::string& text, char separator,
                       std::size_t most) {
  constexpr std::size_t kBlock = 16;
  const char* const data = text.data();
  std::size_t cuts = 0;
  std::size_t start = 0;
  for (; start + kBlock <= text.size() && cuts < most; start += kBlock) {
    unsigned char cuts_here = 0;
    for (std::size_t i = start; i < start + kBlock; ++i) {
      if (data[i] == separator) ++cuts_here;
    }
    cuts += cuts_here;
  }
  for (; start < text.size() && cuts < most; ++start) {
    if (data[start] == separator) ++cuts;
  }
  return std::min(cuts, most);
}

// Most texts that are joined are short: two overlapping copies of a constant
// size need no call.
char* CopyText_(char* place, std::string_view text) {
  const std::size_t size = text.size();
  const auto copy_ends = [&](auto half) {
    std::memcpy(place, text.data(), half);
    std::memcpy(place + size - half, text.data() + size - half, half);
  };
  if (size > 32) {
    std::memcpy(place, text.data(), size);
  } else if (size >= 16) {
    copy_ends(std::integral_constant<std::size_t, 16>());
  } else if (size >= 8) {
    copy_ends(std::integral_constant<std::size_t, 8>());
  } else if (size >= 4) {
    copy_ends(std::integral_constant<std::size_t, 4>());
  } else if (size != 0) {
    place[0] = text[0];
    place[size / 2] = text[size / 2];
    place[size - 1] = text[size - 1];
  }
  return place + size;
}

std::string JoinString(const std::vector<std::string>& items,
                       const std::string& separator) {
  return JoinString(items.begin(), items.end(), separator);
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
template ORVO_EXPORT void ReadInteger_(const std::string&, unsigned short&);
template ORVO_EXPORT void ReadInteger_(const std::string&, int&);
template ORVO_EXPORT void ReadInteger_(const std::string&, unsigned&);
template ORVO_EXPORT void ReadInteger_(const std::string&, long&);
template ORVO_EXPORT void ReadInteger_(const std::string&, unsigned long&);
template ORVO_EXPORT void ReadInteger_(const std::string&, long long&);
template ORVO_EXPORT void ReadInteger_(const std::string&, unsigned long long&);
template ORVO_EXPORT bool StringToNumber(const std::string&, int&);
template ORVO_EXPORT int StringToNumber(const std::string&);
template ORVO_EXPORT std::vector<std::string> SplitString(const std::string&,
                                                          const char&, int);
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

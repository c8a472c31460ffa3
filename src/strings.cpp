#include "orvo/strings.h"

#include <algorithm>
#include <limits>

#include "internal/ascii.h"
#include "internal/number_text.h"

namespace orvo {
namespace {

// Whether the text is an integer if its points and outer spaces are left out.
bool IsIntegerBesidePoints(std::string_view text) {
  const auto first = text.find_first_not_of(" .");
  if (first == std::string_view::npos) return true;
  text = text.substr(first, text.find_last_not_of(" .") - first + 1);
  if (text[0] == '-' || text[0] == '+') text.remove_prefix(1);
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return internal::IsDigit(c) || c == '.'; });
}

int SaturateToInt(unsigned long long value) {
  constexpr int kMax = std::numeric_limits<int>::max();
  return value > kMax ? kMax : static_cast<int>(value);
}

}  // namespace

std::string to_lower(const std::string& text) {
  std::string lower = text;
  for (char& c : lower) c = internal::ToLower(c);
  return lower;
}

std::string to_upper(const std::string& text) {
  std::string upper = text;
  for (char& c : upper) c = internal::ToUpper(c);
  return upper;
}

bool endswith(const std::string& text, const std::string& suffix) {
  return text.size() >= suffix.size() &&
         text.compare(text.size() - suffix.size(), suffix.size(), suffix) == 0;
}

bool StringIsDigits(std::string& text) {
  return std::all_of(text.begin(), text.end(), internal::IsDigit);
}

bool StringIsAlpha(std::string& text) {
  return std::all_of(text.begin(), text.end(), internal::IsAlpha);
}

bool StringIsAlphaNumeric(std::string& text) {
  return std::all_of(text.begin(), text.end(), internal::IsAlnum);
}

bool StringIsInteger(const std::string& text) {
  return text.find('.') == std::string::npos && IsIntegerBesidePoints(text);
}

bool StringIsFloat(const std::string& text) {
  return text.find('.') == text.rfind('.') && IsIntegerBesidePoints(text);
}

template <typename Integer>
void ReadInteger_(const std::string& text, Integer& value) {
  internal::ReadNumber<10>(text, value);
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

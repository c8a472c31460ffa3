#ifndef ORVO_STRINGS_H_
#define ORVO_STRINGS_H_

/// @file
/// Everyday text work: trimming, letter case, questions, numbers, cutting,
/// joining and wrapping.
///
/// @code
/// std::vector<std::string> parts = orvo::SplitString("usr/share", '/', -1);
/// std::string list = orvo::JoinString(parts, ", ");  // "usr, share"
/// int count = 0;
/// if (!orvo::StringToNumber(" 42 ", count)) std::cerr << "not a number\n";
/// @endcode
///
/// Texts are bytes, NULs included. Letters and digits are the ASCII ones,
/// whatever locale the application has set. Every function here may be called
/// from any thread at once.

#include <cstddef>
#include <cstring>
#include <deque>
#include <initializer_list>
#include <iterator>
#include <limits>
#include <locale>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "orvo/export.h"

namespace orvo {

/// @cond
// Present only for iterators over texts, so that a call with two strings never
// means a range.
template <typename Iterator>
using RequireTexts_ = std::enable_if_t<std::is_convertible_v<
    typename std::iterator_traits<Iterator>::reference, std::string_view>>;

template <typename Type, typename... Types>
inline constexpr bool is_one_of_ = (std::is_same_v<Type, Types> || ...);

using StringIterator_ = std::vector<std::string>::iterator;
using ConstStringIterator_ = std::vector<std::string>::const_iterator;

// Whether a range can be walked more than once.
template <typename Iterator>
inline constexpr bool is_multi_pass_ = std::is_base_of_v<
    std::forward_iterator_tag,
    typename std::iterator_traits<Iterator>::iterator_category>;

template <typename Iterator>
inline constexpr bool is_array_of_strings_ =
    is_one_of_<Iterator, std::string*, const std::string*, StringIterator_,
               ConstStringIterator_>;

// The types that a stream reads as integers; it takes a char for a character.
template <typename Number>
inline constexpr bool is_integer_text_ =
    is_one_of_<Number, short, unsigned short, int, unsigned, long,
               unsigned long, long long, unsigned long long>;
/// @endcond

/// The text without the spaces at both ends. Only the space character counts:
/// tabs and line feeds stay.
///
/// @code
/// orvo::strip(std::string("  a b  "));  // "a b"
/// @endcode
///
/// @tparam Text  std::string, or another string type; a view gives a view.
template <typename Text>
Text strip(const Text& text) {
  const auto first = text.find_first_not_of(' ');
  if (first == Text::npos) return Text();
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

/// The same for a string literal.
ORVO_EXPORT_INLINE inline std::string strip(const char* text) {
  return strip(std::string(text));
}

/// The text with its capital letters made small.
ORVO_EXPORT std::string to_lower(const std::string& text);

/// The text with its small letters made capital.
ORVO_EXPORT std::string to_upper(const std::string& text);

/// Whether the text ends with @p suffix; every text ends with the empty one.
ORVO_EXPORT_INLINE inline bool endswith(const std::string& text,
                                        const std::string& suffix) {
  const std::size_t size = suffix.size();
  return text.size() >= size && std::memcmp(text.data() + text.size() - size,
                                            suffix.data(), size) == 0;
}

/// Whether there are only digits; true for the empty text.
///
/// Kept on purpose, here and below: takes a variable, which it does not change.
ORVO_EXPORT bool StringIsDigits(std::string& text);

/// Whether there are only letters; true for the empty text.
ORVO_EXPORT bool StringIsAlpha(std::string& text);

/// Whether there are only letters and digits; true for the empty text.
ORVO_EXPORT bool StringIsAlphaNumeric(std::string& text);

/// Whether the text is digits behind at most one sign, with spaces around.
///
/// Kept on purpose: no digit is needed, so that "", "  " and "-" count too, and
/// the number may be too large for any type.
ORVO_EXPORT bool StringIsInteger(const std::string& text);

/// Whether the text without its first '.' is an integer for StringIsInteger(),
/// and has no second one. Exponents, "inf" and "nan" are not accepted.
///
/// Kept on purpose: the point may stand anywhere, so that ".", "-." and " .-5"
/// count too.
ORVO_EXPORT bool StringIsFloat(const std::string& text);

/// @cond
// The two forms of StringToNumber() without a stream.
template <typename Integer>
bool ReadCheckedInteger_(const std::string& text, Integer& value);
template <typename Integer>
void ReadInteger_(const std::string& text, Integer& value);

template <typename Value>
void ReadFromStream_(const std::string& text, Value& value) {
  std::stringstream stream(strip(text));
  stream.imbue(std::locale::classic());
  // Otherwise a stream keeps it to itself when memory runs out.
  stream.exceptions(std::ios_base::badbit);
  stream >> value;
}
/// @endcond

/// Reads a number from a text that is nothing but a number.
///
/// The text has to satisfy StringIsInteger() or StringIsFloat(); then as much
/// of it is read as a stream reads into a @p Number: an int takes 12 from
/// "12.75" and its largest value from a number that is too large.
///
/// @code
/// int width = 80;
/// if (!orvo::StringToNumber(argument, width)) return Usage();
/// @endcode
///
/// @param value  Untouched if the result is false or the text is blank.
/// @return       Whether the text has the form of a number. Kept on purpose:
///               blank text and a lone sign or point have it. ParseNumber()
///               takes nothing but exact integers.
template <typename Number>
bool StringToNumber(const std::string& text, Number& value) {
  if constexpr (is_integer_text_<Number>) {
    return ReadCheckedInteger_(text, value);
  } else {
    // A text without a point is a float exactly if it is an integer.
    if (!StringIsFloat(text)) return false;
    ReadFromStream_(text, value);
    return true;
  }
}

/// The number at the front of a text, read as a stream reads it; nothing is
/// checked or reported. ParseNumber() checks everything.
///
/// @return  0 if there is no number, the nearest limit if it is out of range.
template <typename Number>
Number StringToNumber(const std::string& text) {
  Number value{};
  if constexpr (is_integer_text_<Number>) {
    ReadInteger_(text, value);
  } else {
    ReadFromStream_(text, value);
  }
  return value;
}

/// @cond
template <typename Integer>
using RequireInteger_ = std::enable_if_t<std::is_integral_v<Integer> &&
                                         !std::is_same_v<Integer, bool>>;

// ParseNumber() for the widest types.
ORVO_EXPORT std::optional<long long> ParseSigned_(std::string_view text);
ORVO_EXPORT std::optional<unsigned long long> ParseUnsigned_(
    std::string_view text);
/// @endcond

/// The integer that a text is, if it is exactly that: decimal digits, with at
/// most a "-" in front where @p Integer is signed.
///
/// Nothing else is accepted: no "+", no spaces, no point, no prefix and no
/// empty text. Zeros in front do not matter, and "-0" is 0.
///
/// @code
/// orvo::ParseNumber<int>("-42");            // -42
/// orvo::ParseNumber<int>("42 ");            // nothing
/// orvo::ParseNumber<unsigned char>("256");  // nothing: out of range
/// const int width = orvo::ParseNumber<int>(argument).value_or(80);
/// @endcode
///
/// @tparam Integer  Any integer type but bool; those of one byte are numbers
///                  too, so that "7" is 7 and not a letter.
/// @return          Nothing for any other text and for a number out of range.
template <typename Integer, typename = RequireInteger_<Integer>>
std::optional<Integer> ParseNumber(std::string_view text) {
  using Limits = std::numeric_limits<Integer>;
  if constexpr (std::is_signed_v<Integer>) {
    const std::optional<long long> number = ParseSigned_(text);
    if (!number || *number < Limits::min() || *number > Limits::max()) {
      return std::nullopt;
    }
    return static_cast<Integer>(*number);
  } else {
    const std::optional<unsigned long long> number = ParseUnsigned_(text);
    if (!number || *number > Limits::max()) return std::nullopt;
    return static_cast<Integer>(*number);
  }
}

/// The length of a separator.
ORVO_EXPORT_INLINE inline std::size_t GetTokenSize_(char) {
  return 1;
}

/// Cuts a text at its separators, which are dropped.
///
/// @code
/// orvo::SplitString("a/b/c", '/', -1);  // "a", "b", "c"
/// orvo::SplitString("a/b/c", '/', 1);   // "a", "b/c"
/// orvo::SplitString("/a/", '/', -1);    // "", "a", ""
/// @endcode
///
/// @tparam Separator  char, or a type of the caller's that std::string::find()
///                    takes and that has a GetTokenSize_() of its own.
/// @param maxsplit    The largest number of cuts; negative for no limit.
/// @return            At least one part, also for an empty text.
/// @throws std::invalid_argument  The separator is empty.
template <typename Separator>
std::vector<std::string> SplitString(const std::string& text,
                                     const Separator& separator, int maxsplit) {
  const std::size_t separator_size = GetTokenSize_(separator);
  if (separator_size == 0) {
    throw std::invalid_argument("token must have non-zero length.");
  }
  std::vector<std::string> parts;
  std::size_t start = 0;
  while (maxsplit < 0 || parts.size() < static_cast<std::size_t>(maxsplit)) {
    const std::size_t end = text.find(separator, start);
    if (end == std::string::npos) break;
    parts.emplace_back(text, start, end - start);
    start = end + separator_size;
  }
  parts.emplace_back(text, start);
  return parts;
}

/// @cond
template <>
ORVO_EXPORT std::vector<std::string> SplitString(const std::string& text,
                                                 const char& separator,
                                                 int maxsplit);
/// @endcond

/// The items with @p separator between them.
///
/// @code
/// orvo::JoinString({"a", "b"}, ", ");  // "a, b"
/// @endcode
ORVO_EXPORT std::string JoinString(const std::vector<std::string>& items,
                                   const std::string& separator);

/// @cond
ORVO_EXPORT std::string JoinArray_(const std::string* items, std::size_t count,
                                   std::string_view separator);
/// @endcond

/// The texts of a range with @p separator between them. Where the range can be
/// walked twice, the result is allocated once.
template <typename Iterator, typename Separator,
          typename = RequireTexts_<Iterator>>
std::string JoinString(Iterator first, Iterator last,
                       const Separator& separator) {
  if (first == last) return std::string();
  if constexpr (is_array_of_strings_<Iterator> &&
                std::is_same_v<Separator, char>) {
    return JoinArray_(&*first, static_cast<std::size_t>(last - first),
                      std::string_view(&separator, 1));
  } else {
    std::string joined;
    if constexpr (is_multi_pass_<Iterator>) {
      const std::size_t separator_size = GetTokenSize_(separator);
      std::size_t size = 0;
      for (Iterator item = first; item != last; ++item) {
        size += std::string_view(*item).size() + separator_size;
      }
      joined.reserve(size - separator_size);
    }
    joined += std::string_view(*first);
    while (++first != last) {
      joined += separator;
      joined += std::string_view(*first);
    }
    return joined;
  }
}

/// @cond
// Cuts a text into pieces of itself, one token after the other.
class ORVO_EXPORT Tokenizer_ {
 public:
  explicit Tokenizer_(std::string_view text);

  // Makes every occurrence of the token in a piece a piece of its own.
  void Cut(std::string_view token);

  std::deque<std::string> StrippedPieces() const;

 private:
  std::vector<std::string_view> pieces_;
};
/// @endcond

/// Cuts a text at each occurrence of a token and keeps the tokens.
///
/// @code
/// orvo::tokenize_string("+", "1 + 2");       // "1", "+", "2"
/// orvo::tokenize_string({"(", ")"}, "f(x)");  // "f", "(", "x", ")", ""
/// @endcode
///
/// No empty piece is made in front of a token, but the rest behind the last one
/// stays even if it is empty. Each piece is stripped of spaces at its ends.
///
/// @throws std::invalid_argument  The token is empty.
ORVO_EXPORT std::deque<std::string> tokenize_string(const std::string& token,
                                                    const std::string& text);

/// The same with several tokens, one after the other. A later token also cuts
/// the pieces made by earlier ones, tokens included: with "==" and then "=",
/// the text "a==b" becomes "a", "=", "=", "", "b".
///
/// @throws std::invalid_argument  A token is empty.
ORVO_EXPORT std::deque<std::string> tokenize_string(
    std::initializer_list<std::string> tokens, const std::string& text);

/// The same with the tokens of a range.
///
/// @throws std::invalid_argument  A token is empty.
template <typename Iterator, typename = RequireTexts_<Iterator>>
std::deque<std::string> tokenize_string(Iterator first, Iterator last,
                                        const std::string& text) {
  Tokenizer_ tokenizer(text);
  for (; first != last; ++first) tokenizer.Cut(*first);
  return tokenizer.StrippedPieces();
}

/// One line of words, as it is being filled.
class ORVO_EXPORT SingleLine {
 public:
  /// Appends a word.
  void AddWord(const std::string& word);

  /// Characters of the line, with a space between words; -1 without words.
  int GetLineLength() const;

  /// What GetLineLength() would be after adding @p word.
  int PredictLength(const std::string& word) const;

  /// The words with one space between them.
  std::string GetLine() const;

  /// Removes all words.
  void Reset();

 private:
  std::vector<std::string> words_;
  int length_ = 0;  // of the words alone
};

/// Wraps a text into indented lines.
///
/// Only spaces separate words; a run of spaces inside a line is kept. A word
/// that ends with "\n" ends its line.
///
/// @code
/// orvo::format_paragraph("one two three \n", 0, 7);  // "one two\nthree \n"
/// @endcode
///
/// Kept on purpose: what follows the last line feed is not printed, a line feed
/// stays in its line and is followed by that of the line's end, and a word with
/// one that does not fit leaves a line of its indentation only. A word that is
/// too wide for any line stands alone on its line.
///
/// @param indent  Spaces in front of each line; negative means none.
/// @param width   Columns of a line, indentation included.
/// @return        The lines, with "\n" between them.
ORVO_EXPORT std::string format_paragraph(std::string text, int indent,
                                         int width);

/// @cond
extern template std::string strip(const std::string&);
extern template bool StringToNumber(const std::string&, int&);
extern template int StringToNumber(const std::string&);
extern template std::string JoinString(const std::string*, const std::string*,
                                       const char&);
extern template std::string JoinString(StringIterator_, StringIterator_,
                                       const char&);
extern template std::string JoinString(ConstStringIterator_,
                                       ConstStringIterator_, const char&);
extern template std::deque<std::string> tokenize_string(const std::string*,
                                                        const std::string*,
                                                        const std::string&);
extern template std::deque<std::string> tokenize_string(StringIterator_,
                                                        StringIterator_,
                                                        const std::string&);
extern template std::deque<std::string> tokenize_string(ConstStringIterator_,
                                                        ConstStringIterator_,
                                                        const std::string&);
/// @endcond

}  // namespace orvo

#endif  // ORVO_STRINGS_H_

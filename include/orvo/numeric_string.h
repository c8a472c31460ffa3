#ifndef ORVO_NUMERIC_STRING_H_
#define ORVO_NUMERIC_STRING_H_

/// @file
/// Natural order: runs of digits compare as numbers, so that "file9" comes
/// before "file10".
///
/// @code
/// std::sort(names.begin(), names.end(), orvo::NumericStringCompare());
/// std::set<std::string, orvo::NumericStringCompare> sorted_names;
/// @endcode
///
/// Only the characters '0' to '9' make numbers: a sign, a decimal point or a
/// space is text, so that "-5" comes before "-10". All types are plain values
/// without shared state.

#include <cstddef>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include "orvo/export.h"

namespace orvo {

/// A run of digits, or of anything else, cut from a longer text.
class ORVO_EXPORT Chunk {
 public:
  /// @param text     A number beyond the range of `int` counts as its largest
  ///                 or smallest value.
  /// @param numeric  Whether the chunk compares as a number.
  Chunk(const std::string& text, bool numeric);

  /// The same for @p size bytes from @p text on.
  Chunk(const char* text, std::size_t size, bool numeric);

  /// Two numeric chunks compare by value, so that "007" and "7" tie; all
  /// others by their texts, byte by byte.
  bool operator<(const Chunk& other) const;

  /// Whether the other one comes first.
  bool operator>(const Chunk& other) const;

  /// Whether the chunk compares as a number.
  ORVO_EXPORT_INLINE bool numeric() const { return numeric_; }

  /// The characters of the chunk.
  ORVO_EXPORT_INLINE const std::string& text() const { return text_; }

  /// The number, or 0 if the chunk is not numeric.
  ORVO_EXPORT_INLINE int value() const { return value_; }

 private:
  bool numeric_;
  std::string text_;
  int value_;
};

/// A text with its natural order: cut once, compared often.
///
/// @code
/// std::vector<orvo::NumericString> names(lines.begin(), lines.end());
/// std::sort(names.begin(), names.end());
/// for (const std::string& name : names) Show(name);
/// @endcode
class ORVO_EXPORT NumericString {
 public:
  /// Cuts the text once and for all.
  NumericString(const std::string& text);

  /// Whether this text comes first in natural order.
  ///
  /// Kept on purpose: "x007" and "x7" are neither less than nor equal to each
  /// other, and neither are numbers beyond the range of `int`, which
  /// NaturalLess tells apart. Order with `<`, identify with `==`.
  bool operator<(const NumericString& other) const;

  /// Whether the texts are the same to the byte.
  bool operator==(const NumericString& other) const;

  /// The text as given.
  ORVO_EXPORT_INLINE operator const std::string&() const { return text_; }

  /// The text as given.
  ORVO_EXPORT_INLINE const std::string& text() const { return text_; }

  /// The text cut into runs of digits and of other characters, in turn.
  ORVO_EXPORT_INLINE const std::vector<Chunk>& chunks() const {
    return chunks_;
  }

 private:
  std::string text_;
  std::vector<Chunk> chunks_;
};

/// Natural order of plain strings, for sorted containers and sorts.
///
/// Allocates nothing. Texts that tie, such as "x007" and "x7", are one key of
/// a std::map or std::set. So are texts whose numbers are beyond the range of
/// `int` and differ in nothing else; NaturalLess tells them apart.
class ORVO_EXPORT NumericStringCompare {
 public:
  /// Whether `NumericString(a) < NumericString(b)`.
  ORVO_EXPORT_INLINE bool operator()(const std::string& a,
                                     const std::string& b) const {
    // Here, so that equal texts cost no more than memcmp().
    constexpr std::string::size_type kLong = 16;
    if (a.size() == b.size() && a.size() >= kLong && a[0] == b[0] && a == b) {
      return false;
    }
    return ComesBefore_(a, b);
  }

 private:
  static bool ComesBefore_(const std::string& a, const std::string& b);
};

/// Natural order with numbers of any length, for sorted containers and sorts.
///
/// Differs from NumericStringCompare only where numbers are beyond the range of
/// `int`, which tie there: here every number counts with its full value. Zeros
/// in front do not, so that "x007" and "x7" tie here too.
///
/// @code
/// std::set<std::string, orvo::NaturalLess> photos = {"20261121093000",
///                                                    "20261121092959"};
/// *photos.begin();                 // "20261121092959"
/// photos.count("20261121093000");  // 1, found without making a string of it
/// @endcode
///
/// Allocates nothing, and takes time in proportion to the texts.
class ORVO_EXPORT NaturalLess {
 public:
  /// Sorted containers are searched without making a key of the text.
  using is_transparent = void;

  /// Whether @p a comes before @p b.
  bool operator()(std::string_view a, std::string_view b) const;
};

}  // namespace orvo

/// Writes the text as given, with the width and fill of the stream.
///
/// It is global, so code in a namespace with inserters of its own has to say
/// "using ::operator<<;" first.
ORVO_EXPORT std::ostream& operator<<(std::ostream& stream,
                                     const orvo::NumericString& text);

#endif  // ORVO_NUMERIC_STRING_H_

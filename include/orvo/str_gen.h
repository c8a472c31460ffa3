#ifndef ORVO_STR_GEN_H_
#define ORVO_STR_GEN_H_

/// @file
/// Ready-made strings of the ASCII characters of a class: alphabets, the
/// characters of random names, what an input filter lets through.
///
/// @code
/// const std::string alphabet = orvo::StrGen::lower_or_digit();
/// const std::string hex = orvo::StrGen::subset(orvo::Pred(isxdigit));
/// @endcode
///
/// Every function here may be called from any thread at once.

#include <string>

#include "orvo/export.h"

namespace orvo {

/// All 128 ASCII characters in ascending order, beginning with NUL.
ORVO_EXPORT std::string create_ascii_chars();

/// Says of a character that it is to be dropped, because a classifier in the
/// manner of isalpha() does not count it in.
///
/// @code
/// text.erase(std::remove_if(text.begin(), text.end(), orvo::Pred(isalnum)),
///            text.end());  // keeps letters and digits
/// @endcode
class ORVO_EXPORT Pred {
 public:
  /// @param classifier  Answers with anything but 0 for a character that
  ///                    belongs to the class; must not be null.
  ORVO_EXPORT_INLINE Pred(int (*classifier)(int)) : classifier_(classifier) {}

  /// Kept on purpose: true for the characters outside the class.
  ///
  /// A byte above 127 reaches the classifier as a negative number.
  ORVO_EXPORT_INLINE bool operator()(char c) const {
    return classifier_(static_cast<signed char>(c)) == 0;
  }

 private:
  int (*classifier_)(int);
};

/// The ASCII characters of each class, every one a new string in ascending
/// order.
///
/// The named sets are those of the "C" locale, whatever locale the application
/// has set.
class ORVO_EXPORT StrGen {
 public:
  /// All 128 ASCII characters, NUL first.
  static std::string ascii_chars();

  /// The ASCII characters that @p pred does not reject.
  ///
  /// The standard classifiers follow the locale of the application. From the
  /// static initialisers of other files the result may still be empty.
  ///
  /// @code
  /// orvo::StrGen::subset(isdigit);  // "0123456789"
  /// @endcode
  static std::string subset(const Pred& pred);

  static std::string alnum();           ///< The digits, "A" to "Z", "a" to "z".
  static std::string alpha();           ///< "A" to "Z", "a" to "z".
  static std::string cntrl();           ///< The codes 0 to 31 and 127.
  static std::string digit();           ///< "0123456789".
  static std::string graph();           ///< The codes 33 to 126.
  static std::string lower();           ///< "a" to "z".
  static std::string print();           ///< The space and graph().
  static std::string punct();           ///< graph() without alnum().
  static std::string space();           ///< "\t\n\v\f\r ".
  static std::string upper();           ///< "A" to "Z".
  static std::string xdigit();          ///< "0123456789ABCDEFabcdef".
  static std::string upper_or_digit();  ///< The digits, "A" to "Z".
  static std::string lower_or_digit();  ///< The digits, "a" to "z".

  /// Whether @p c is one of upper_or_digit(); any number may be asked for.
  static bool is_upper_or_digit(int c);

  /// Whether @p c is one of lower_or_digit(); any number may be asked for.
  static bool is_lower_or_digit(int c);

  /// What subset() cuts from; filled when the library is loaded.
  static const std::string ascii_chars_;
};

}  // namespace orvo

#endif  // ORVO_STR_GEN_H_

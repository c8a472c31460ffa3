#ifndef ORVO_FORMAT_H_
#define ORVO_FORMAT_H_

/// @file
/// printf-style text in strings, the text of an errno value, and strings from
/// pieces.
///
/// @code
/// throw orvo::LockError(orvo::format("lock %s failed: error %d", name, 5));
/// @endcode
///
/// Every function here may be called from any thread at once.

#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

#include "orvo/export.h"

namespace orvo {

/// Formats into a caller's buffer, exactly as vsnprintf() does.
///
/// @param buffer  Receives at most @p size bytes, the closing NUL included.
/// @param size    Size of @p buffer in bytes.
/// @param fmt     printf-style format.
/// @param args    Its arguments; as after vsnprintf(), only good for va_end().
/// @return        Length of the whole text without the NUL, even if it was
///                cut; negative if formatting failed.
ORVO_EXPORT int vformat(char* buffer, unsigned long size, const char* fmt,
                        va_list args) ORVO_PRINTF_LIKE(3, 0);

/// printf-style text as a new string; NULs written by "%c" are kept.
///
/// The compiler checks the arguments against the format. Up to 255 characters
/// need no memory beyond the result's own.
///
/// @throws std::length_error  The format cannot be carried out.
ORVO_EXPORT std::string format(const char* fmt, ...) ORVO_PRINTF_LIKE(1, 2);

/// The same for a format that is only known at run time. Nothing checks the
/// arguments against it: prefer the other overload.
///
/// @throws std::length_error  The format cannot be carried out.
ORVO_EXPORT std::string format(std::string fmt, ...);

/// The system's text for an errno value.
///
/// Kept on purpose: the result is always 256 characters long, the text, its
/// terminating NUL and further NULs; print it through c_str() to see the text
/// alone. For a number that the system does not know it is empty.
///
/// @code
/// std::cerr << orvo::errmsg(ENOENT).c_str();  // "No such file or directory"
/// @endcode
ORVO_EXPORT std::string errmsg(int errnum);

}  // namespace orvo

/// printf-style text of at most @p N characters; below 1024 of them, only a
/// result that does not fit into a std::string itself costs memory.
///
/// @code
/// FastFormatter<10>("%09ld", 5L);  // "000000005"
/// @endcode
///
/// @return  The text. If the format cannot be carried out, "Formatting error: "
///          and the system's reason, however long that is.
/// @throws std::logic_error  The text is longer than @p N.
template <unsigned long N>
ORVO_PRINTF_LIKE(1, 2)
ORVO_EXPORT std::string FastFormatter(const char* format, ...) {
  // A thread's stack may be too small for more.
  constexpr bool fits_on_stack = N < 1024;
  std::conditional_t<fits_on_stack, std::array<char, N + 1>, std::string> text;
  if constexpr (!fits_on_stack) text.resize(N);
  va_list args;
  va_start(args, format);
  // The NUL goes where the string has its own.
  const int length = vsnprintf(text.data(), N + 1, format, args);
  va_end(args);

  if (length < 0) return std::string("Formatting error: ") + strerror(errno);
  const auto size = static_cast<std::string::size_type>(length);
  if (size > N) {
    throw std::logic_error("formatted length (" + std::to_string(size) +
                           ") is greater than requested buffer size (" +
                           std::to_string(N) + ")");
  }
  return std::string(text.data(), size);
}

/// @cond
namespace orvo {

template <typename Piece>
void AppendPiece_(std::string* target, Piece&& piece) {
  *target += std::forward<Piece>(piece);
}

// A literal of one character, which most separators are.
inline void AppendPiece_(std::string* target, const char (&piece)[2]) {
  if (piece[0] != '\0') target->push_back(piece[0]);
}

}  // namespace orvo
/// @endcond

/// Appends pieces to a string, from left to right and with nothing in between.
///
/// @code
/// std::string name = "run";
/// Concatenate(&name, "-", std::to_string(7), ".log");  // name: "run-7.log"
/// @endcode
///
/// @param target  Keeps what it holds.
/// @param pieces  Strings, string literals or single characters.
/// @return        @p target.
template <typename... Pieces>
ORVO_EXPORT inline std::string* Concatenate(std::string* target,
                                            Pieces&&... pieces) {
  (orvo::AppendPiece_(target, std::forward<Pieces>(pieces)), ...);
  return target;
}

/// @cond
extern template std::string FastFormatter<10>(const char*, ...);
extern template std::string* Concatenate(std::string*, const char (&)[2]);
extern template std::string* Concatenate(std::string*, std::string&&,
                                         const char (&)[2]);
extern template std::string* Concatenate(std::string*, std::string&,
                                         const char (&)[2]);
extern template std::string* Concatenate(std::string*, const char (&)[2],
                                         std::string&&, const char (&)[2]);
extern template std::string* Concatenate(std::string*, const char (&)[2],
                                         std::string&, const char (&)[2]);
/// @endcond

#endif  // ORVO_FORMAT_H_

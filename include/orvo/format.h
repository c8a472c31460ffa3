#ifndef ORVO_FORMAT_H_
#define ORVO_FORMAT_H_

/// @file
/// printf-style text in strings, and the text of an errno value.
///
/// @code
/// throw orvo::LockError(orvo::format("lock %s failed with error %d", name,
/// 5));
/// @endcode
///
/// Every function here may be called from any thread at once.

#include <cstdarg>
#include <string>

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

#endif  // ORVO_FORMAT_H_

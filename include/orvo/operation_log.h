#ifndef ORVO_OPERATION_LOG_H_
#define ORVO_OPERATION_LOG_H_

/// @file
/// Debug lines that say which operation a program attempts and which
/// succeeded, and the text for one that failed.
///
/// @code
/// orvo::LogAttempt(__FILE__, __LINE__, "open settings");
/// // [DEBUG] main.cpp line 12: Open settings.
/// orvo::LogSuccess(__FILE__, __LINE__, "open settings");
/// // [DEBUG] main.cpp line 13: Succeeded open settings.
/// @endcode
///
/// Every function may be called from any thread at once; each line reaches the
/// standard output whole, as with a CoutBuffer, and is flushed.

#include <string>

#include "orvo/export.h"

namespace orvo {

/// Writes "[DEBUG] FILE line LINE: WHAT." with the first letter of @p what in
/// upper case.
///
/// @param file  Source file, printed as it is.
/// @param line  Source line.
/// @param what  The operation; if empty, the line says "Executing."
ORVO_EXPORT void LogAttempt(const char* file, unsigned int line,
                            const std::string& what);

/// Writes "[DEBUG] FILE line LINE: Succeeded WHAT."
///
/// Kept on purpose: @p what is not capitalised here.
///
/// @param file  Source file, printed as it is.
/// @param line  Source line.
/// @param what  The operation; if empty, the line says "executing".
ORVO_EXPORT void LogSuccess(const char* file, unsigned int line,
                            const std::string& what);

/// Calls `log(file, line, what)` if @p enabled, else does nothing.
///
/// @param log  Normally LogAttempt or LogSuccess.
ORVO_EXPORT void LogFilter(void (*log)(const char*, unsigned int,
                                       const std::string&),
                           const char* file, unsigned int line,
                           const std::string& what, bool enabled);

/// The text for an operation that failed; nothing is printed.
///
/// @param file     Source file, as it is to appear.
/// @param line     Source line.
/// @param what     The operation; may be empty.
/// @param details  What went wrong, put on a line of its own behind eight
///                 blanks; may be empty.
/// @return         "FILE line LINE: Error WHAT." without a final line feed.
ORVO_EXPORT std::string CreateFailureMessage(const char* file,
                                             unsigned int line,
                                             const std::string& what,
                                             const std::string& details);

}  // namespace orvo

#endif  // ORVO_OPERATION_LOG_H_

#ifndef ORVO_EXCEPTION_LOG_H_
#define ORVO_EXCEPTION_LOG_H_

/// @file
/// A last resort for exceptions: on the standard output and in a log file.
///
/// @code
/// int main() {
///   orvo::SetThreadExceptionLogPath("exceptions.log");
///   std::thread worker([] {
///     try {
///       DoTheWork();
///     } catch (const std::exception& error) {
///       orvo::LogException(error.what(), __FILE__, __LINE__);
///     }
///   });
///   worker.join();
/// }
/// @endcode
///
/// LogException() may be called from any thread at once. The path must not
/// change meanwhile: set it before there are threads.

#include <string>

#include "orvo/export.h"

namespace orvo {

/// Names the log file of the process. Nothing is opened before an exception is
/// logged; until a path is set there is no log file.
ORVO_EXPORT void SetThreadExceptionLogPath(const std::string& path);

/// Writes "LogException(MESSAGE)" to std::cout and appends an empty line and
/// "FILE line LINE: MESSAGE" to the log file.
///
/// The file is opened for each record, which is appended in one piece, so that
/// several processes may share it. If it cannot be opened, the record goes to
/// std::cout behind "Unable to write to threadExceptionLogPath: PATH". An error
/// of writing is ignored. The calls of all threads take turns, but other output
/// to std::cout may come between.
///
/// @param message  The exception's text, as a rule.
/// @param file     Where the exception was caught, as a rule __FILE__.
/// @param line     Any number, as a rule __LINE__.
ORVO_EXPORT void LogException(const std::string& message,
                              const std::string& file, int line);

}  // namespace orvo

#endif  // ORVO_EXCEPTION_LOG_H_

#ifndef ORVO_TESTS_SUPPORT_CAPTURE_H_
#define ORVO_TESTS_SUPPORT_CAPTURE_H_

#include <string>
#include <string_view>
#include <vector>

#include "tests/support/files.h"

namespace orvo_test {

/// Catches what the process writes to its standard output, at descriptor level
/// because the library exchanges stream buffers itself.
class StdoutCapture {
 public:
  StdoutCapture();
  StdoutCapture(const StdoutCapture&) = delete;
  StdoutCapture& operator=(const StdoutCapture&) = delete;

  /// Gives the process its standard output back.
  ~StdoutCapture();

  /// What was written so far.
  std::string Text() const;

 private:
  TemporaryFolder folder_;
  int saved_descriptor_;
};

/// Sends the standard output to an open descriptor while the object lives.
class StdoutRedirection {
 public:
  explicit StdoutRedirection(int descriptor);
  StdoutRedirection(const StdoutRedirection&) = delete;
  StdoutRedirection& operator=(const StdoutRedirection&) = delete;
  ~StdoutRedirection();

 private:
  int saved_descriptor_;
};

/// How a child program ended and what it wrote.
struct ProgramResult {
  int exit_status;  ///< The exit status, or minus the signal that ended it.
  std::string output;
  std::string errors;
};

/// The built form of tests/programs/NAME.cpp.
std::string ProgramPath(const std::string& name);

/// The built form of examples/NAME.cpp.
std::string ExamplePath(const std::string& name);

/// A file or folder of the project's source tree, for example "tests/data".
std::string SourcePath(const std::string& name);

/// Runs a program to its end.
///
/// @param arguments  The program's path and its arguments.
/// @param input      What it reads from its standard input.
ProgramResult RunProgram(const std::vector<std::string>& arguments,
                         std::string_view input = {});

}  // namespace orvo_test

#endif  // ORVO_TESTS_SUPPORT_CAPTURE_H_

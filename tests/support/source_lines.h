#ifndef ORVO_TESTS_SUPPORT_SOURCE_LINES_H_
#define ORVO_TESTS_SUPPORT_SOURCE_LINES_H_

#include <fstream>
#include <string>

#include "tests/support/capture.h"

namespace orvo_test {

/// The line number that a statement of the project's sources hands on, which is
/// that of its `__LINE__`.
///
/// @param source  For example "src/condition.cpp".
/// @param text    Stands only in that statement, not before its `__LINE__` in
///                another line.
/// @return        0 if there is no such text.
inline int ReportedLine(const std::string& source, const std::string& text) {
  std::ifstream file(SourcePath(source));
  int reported = 0;
  int number = 1;
  for (std::string line; std::getline(file, line); ++number) {
    if (line.find("__LINE__") != std::string::npos) reported = number;
    if (line.find(text) != std::string::npos) return reported;
  }
  return 0;
}

}  // namespace orvo_test

#endif  // ORVO_TESTS_SUPPORT_SOURCE_LINES_H_

#include "orvo/operation_log.h"

#include <utility>

#include "internal/ascii.h"
#include "orvo/format.h"
#include "orvo/thread_safe_ostream.h"

namespace orvo {
namespace {

std::string Sentence(std::string text) {
  text.front() = internal::ToUpper(text.front());
  return text += '.';
}

// What a CoutBuffer does at its end, without a stream to compose the line in.
// Like there, an exception on the way ends the process.
void WriteDebugLine(std::string text) noexcept {
  text.insert(0, "[DEBUG] ");
  text += '\n';
  thread_safe_cout << std::move(text);
  thread_safe_cout.flush();
}

}  // namespace

void LogAttempt(const char* file, unsigned int line, const std::string& what) {
  const std::string description = what.empty() ? "Executing." : Sentence(what);
  WriteDebugLine(
      orvo::format("%s line %d: %s", file, line, description.c_str()));
}

void LogSuccess(const char* file, unsigned int line, const std::string& what) {
  const char* const description = what.empty() ? "executing" : what.c_str();
  WriteDebugLine(
      orvo::format("%s line %d: Succeeded %s.", file, line, description));
}

void LogFilter(void (*log)(const char*, unsigned int, const std::string&),
               const char* file, unsigned int line, const std::string& what,
               bool enabled) {
  if (enabled) log(file, line, what);
}

std::string CreateFailureMessage(const char* file, unsigned int line,
                                 const std::string& what,
                                 const std::string& details) {
  std::string message =
      what.empty()
          ? orvo::format("%s line %d: Error.", file, line)
          : orvo::format("%s line %d: Error %s.", file, line, what.c_str());
  if (!details.empty()) message += "\n        " + details;
  return message;
}

}  // namespace orvo

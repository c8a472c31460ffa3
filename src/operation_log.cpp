#include "orvo/operation_log.h"

#include "internal/ascii.h"
#include "orvo/format.h"
#include "orvo/thread_safe_ostream.h"

namespace orvo {
namespace {

std::string Sentence(std::string text) {
  text.front() = internal::ToUpper(text.front());
  return text += '.';
}

void WriteDebugLine(const std::string& text) {
  CoutBuffer buffer;
  buffer << "[DEBUG] " << text << endl;
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

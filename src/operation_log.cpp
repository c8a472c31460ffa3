#include "orvo/operation_log.h"

#include <utility>

#include "internal/ascii.h"
#include "orvo/format.h"
#include "orvo/thread_safe_ostream.h"

namespace orvo {
namespace {

std::string Sentence(std::string text) {
  if (text.empty()) return "Executing.";
  text.front() = internal::ToUpper(text.front());
  return text += '.';
}

// A CoutBuffer of one line, without a stream to compose it in.
class DebugLine {
 public:
  DebugLine() : text_("[DEBUG] ") {}
  DebugLine(const DebugLine&) = delete;
  DebugLine& operator=(const DebugLine&) = delete;
  ~DebugLine() {
    thread_safe_cout << std::move(text_);
    thread_safe_cout.flush();
  }

  void End(const std::string& text) { (text_ += text) += '\n'; }

 private:
  std::string text_;
};

}  // namespace

void LogAttempt(const char* file, unsigned int line, const std::string& what) {
  DebugLine debug_line;
  debug_line.End(
      orvo::format("%s line %d: %s", file, line, Sentence(what).c_str()));
}

void LogSuccess(const char* file, unsigned int line, const std::string& what) {
  DebugLine debug_line;
  const char* const description = what.empty() ? "executing" : what.c_str();
  debug_line.End(
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

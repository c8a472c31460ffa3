#include "orvo/exception_log.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <mutex>
#include <string_view>

#include "internal/standard_output.h"

namespace orvo {
namespace {

std::mutex log_mutex;
std::string threadExceptionLogPath;

int OpenForAppending(const std::string& path) {
  int descriptor = -1;
  do {
    descriptor =
        open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
  } while (descriptor < 0 && errno == EINTR);
  return descriptor;
}

// One call as a rule, so that records of several processes do not mix.
void WriteWhole(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(descriptor, text.data(), text.size());
    if (written > 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
    } else if (written == 0 || errno != EINTR) {
      return;
    }
  }
}

}  // namespace

void SetThreadExceptionLogPath(const std::string& path) {
  threadExceptionLogPath = path;
}

void LogException(const std::string& message, const std::string& file,
                  int line) {
  const std::lock_guard<std::mutex> guard(log_mutex);
  internal::StandardOutput::Write("LogException(" + message + ")\n");

  const std::string record =
      "\n" + file + " line " + std::to_string(line) + ": " + message + "\n";
  const int descriptor = OpenForAppending(threadExceptionLogPath);
  if (descriptor < 0) {
    internal::StandardOutput::Write(
        "Unable to write to threadExceptionLogPath: " + threadExceptionLogPath +
        record);
    return;
  }
  WriteWhole(descriptor, record);
  close(descriptor);
}

}  // namespace orvo

// Logs the steps of an installation, on the screen or in LOGFILE.
#include <iostream>
#include <string>

#include "orvo/operation_log.h"
#include "orvo/thread_safe_ostream.h"

namespace {

constexpr bool kVerbose = false;

bool Install(const std::string& what, bool succeeds) {
  orvo::LogFilter(orvo::LogAttempt, "install.cpp", 12, "check " + what,
                  kVerbose);
  orvo::LogAttempt("install.cpp", 13, "install " + what);
  if (succeeds) {
    orvo::LogSuccess("install.cpp", 15, "install " + what);
    return true;
  }
  orvo::CoutBuffer() << orvo::CreateFailureMessage(
                            "install.cpp", 18, "install " + what, "disk full")
                     << orvo::endl;
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2) orvo::RedirectCout(argv[1]);  // once, before any thread
  const bool done = Install("the library", true) && Install("fonts", false);
  if (argc == 2) std::cerr << "the log is in " << argv[1] << "\n";
  return done ? 0 : 1;
}

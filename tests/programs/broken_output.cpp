// broken_output OUTPUT ACTION [ARGUMENT...]: breaks its own standard output,
// uses it through the library, and tells on the standard error stream what has
// become of it. In the end it repairs the output and writes one line more.
//
// OUTPUT is one of
//   whole        as it is
//   closed       no descriptor at all
//   full         a device without room
//   broken       a pipe that nobody reads, which ends the process
//   ignored      the same without the signal
//   throwing     a full device, with exceptions for it switched on
// ACTION is one of
//   messages     one message of every kind that the library writes
//   log PATH     an exception, logged to a file
//   redirect PATH...  redirects to each of the paths and writes a line after it
//   nobody_log, nobody_redirect  the same without the rights of the super-user
#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <iostream>
#include <string>
#include <thread>

#include "orvo/orvo.h"

namespace {

void BreakPipe() {
  int ends[2];
  if (pipe(ends) != 0) _exit(2);
  close(ends[0]);
  dup2(ends[1], STDOUT_FILENO);
  close(ends[1]);
}

void FillUp() {
  const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
  dup2(full, STDOUT_FILENO);
  close(full);
}

void BreakOutput(const std::string& how) {
  if (how == "closed") close(STDOUT_FILENO);
  if (how == "full" || how == "throwing") FillUp();
  if (how == "broken" || how == "ignored") BreakPipe();
  if (how == "ignored") signal(SIGPIPE, SIG_IGN);
  if (how == "throwing") std::cout.exceptions(std::ios_base::badbit);
}

void WriteEveryKindOfMessage() {
  orvo::CoutBuffer() << "message" << orvo::endl;
  orvo::LogAttempt("f", 7, "trying");
  orvo::LogSuccess("f", 7, "trying");
  orvo::PrintStackTrace(5);
  orvo::midi::PrintAllMidiNotes();
  const orvo::FrameParts frame("no frame");
  orvo::LogException("m", "f", 7);
  orvo::DebugLockImpl_ lock("lock");
  lock.lock();
  std::thread([&] { lock.try_lock(); }).join();
  lock.unlock();
}

void Act(std::string action, int argc, char** argv) {
  const std::string nobody = "nobody_";
  if (action.compare(0, nobody.size(), nobody) == 0) {
    if (geteuid() == 0 && setuid(65534) != 0) _exit(2);
    action.erase(0, nobody.size());
  }
  if (action == "messages") WriteEveryKindOfMessage();
  if (action == "log") {
    orvo::SetThreadExceptionLogPath(argv[3]);
    orvo::LogException("m", "f", 7);
  }
  if (action == "redirect") {
    for (int i = 3; i < argc; ++i) {
      orvo::RedirectCout(argv[i]);
      orvo::CoutBuffer() << "line " << i - 2 << orvo::endl;
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  const int saved = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
  BreakOutput(argv[1]);
  Act(argv[2], argc, argv);
  std::cerr << (std::cout.good() ? "good" : "failed") << "\n";
  if (saved >= 0) dup2(saved, STDOUT_FILENO);
  std::cout.clear();
  orvo::CoutBuffer() << "kept" << orvo::endl;
}

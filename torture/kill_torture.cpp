// Kills a process at random moments while its threads log exceptions: all of
// its records must be whole, except possibly the last.
//
//   kill_torture [--kills=N] [--twin=NAME]
//
// The twins are faults to be found: two_pieces writes each record in two
// pieces, ends_early ends before it writes any.
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <exception>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>

#include "orvo/exception_log.h"
#include "torture/support.h"

namespace {

using orvo_torture::Faults;
using orvo_torture::Options;

constexpr unsigned kSeed = 20261121;
constexpr int kThreads = 4;
constexpr char kSource[] = "kill_torture.cpp";

// Mostly short, seldom of several pages.
std::string Message(int number) {
  const std::uint64_t lot =
      orvo_torture::Scatter(static_cast<std::uint64_t>(number));
  const std::uint64_t length = lot % 16 == 0 ? lot / 16 % 50000 : lot % 80;
  return std::to_string(number) + " " +
         std::string(length, static_cast<char>('a' + lot / 5 % 26)) + ".";
}

std::string Record(int number) {
  return std::string("\n") + kSource + " line " + std::to_string(number) +
         ": " + Message(number) + "\n";
}

using Logger = void (*)(const std::string& path, int number);

void Log(const std::string&, int number) {
  try {
    throw std::runtime_error(Message(number));
  } catch (const std::exception& error) {
    orvo::LogException(error.what(), kSource, number);
  }
}

void LogInTwoPieces(const std::string& path, int number) {
  const std::string record = Record(number);
  const std::size_t half = record.size() / 2;
  const int file =
      open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
  if (write(file, record.data(), half) < 0 ||
      write(file, record.data() + half, record.size() - half) < 0) {
    std::_Exit(2);
  }
  close(file);
}

void EndEarly(const std::string&, int) {
  std::_Exit(0);
}

Logger LoggerNamed(const std::string& twin) {
  if (twin == "two_pieces") return LogInTwoPieces;
  if (twin == "ends_early") return EndEarly;
  return Log;
}

// Until it is killed.
[[noreturn]] void LogForEver(const std::string& path, Logger log) {
  orvo::SetThreadExceptionLogPath(path);
  orvo_torture::InThreads(kThreads, [&](int thread) {
    for (int number = thread;; number += kThreads) log(path, number);
  });
  std::_Exit(2);
}

struct Tally {
  long records = 0;
  long torn = 0;  // as the last of a process, which is allowed
};

// The number of the record that begins here, or -1.
int NumberAt(const std::string& text, std::size_t start) {
  const std::string prefix = std::string("\n") + kSource + " line ";
  if (text.compare(start, prefix.size(), prefix) != 0) return -1;
  return std::atoi(text.c_str() + start + prefix.size());
}

// Whether the text is no more than the beginning of a record.
bool BeginsRecord(const std::string& text) {
  const std::string prefix = std::string("\n") + kSource + " line ";
  if (text.size() <= prefix.size()) {
    return prefix.compare(0, text.size(), text) == 0;
  }
  const int number = NumberAt(text, 0);
  if (number < 0) return false;
  // The cut may go through the number.
  const bool cut_in_number =
      text.find_first_not_of("0123456789", prefix.size()) == std::string::npos;
  return cut_in_number || Record(number).compare(0, text.size(), text) == 0;
}

void CheckRecords(const std::string& text, Tally& tally, Faults& faults) {
  std::size_t start = 0;
  int next[kThreads] = {0, 1, 2, 3};
  while (start < text.size()) {
    const int number = NumberAt(text, start);
    const std::string record = number < 0 ? std::string() : Record(number);
    if (number < 0 || text.compare(start, record.size(), record) != 0) {
      faults.Check(BeginsRecord(text.substr(start)),
                   "only the last record may be torn");
      ++tally.torn;
      return;
    }
    int& expected = next[number % kThreads];
    faults.Check(number == expected, "no record is lost");
    expected = number + kThreads;
    start += record.size();
    ++tally.records;
  }
}

bool IsEmpty(const std::string& path) {
  return std::ifstream(path).peek() == std::ifstream::traits_type::eof();
}

pid_t Wait(pid_t child, int* status, int options) {
  pid_t ended = -1;
  do {
    ended = waitpid(child, status, options);
  } while (ended < 0 && errno == EINTR);
  return ended;
}

// Whether the child writes before it ends.
bool AwaitRecord(const std::string& path, pid_t child) {
  while (IsEmpty(path)) {
    int status = 0;
    if (Wait(child, &status, WNOHANG) != 0) return false;
    std::this_thread::yield();
  }
  return true;
}

void KillOnce(const std::string& path, Logger log,
              std::chrono::microseconds delay, Tally& tally, Faults& faults) {
  const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  const pid_t child =
      orvo_torture::StartChild(nowhere, [&] { LogForEver(path, log); });
  close(nowhere);
  if (!AwaitRecord(path, child)) {
    return faults.Add("the process lives until it has written a record");
  }
  std::this_thread::sleep_for(delay);
  kill(child, SIGKILL);
  int status = 0;
  Wait(child, &status, 0);
  faults.Check(WIFSIGNALED(status), "the process lives until it is killed");

  std::ifstream file(path, std::ios_base::binary);
  const std::string text((std::istreambuf_iterator<char>(file)),
                         std::istreambuf_iterator<char>());
  CheckRecords(text, tally, faults);
  unlink(path.c_str());
}

}  // namespace

int main(int argc, char** argv) {
  const Options options(argc, argv);
  const orvo_torture::Stopwatch watch;
  const orvo_torture::Folder folder;
  const long kills = options.Number("kills", 100);
  const Logger log = LoggerNamed(options.Text("twin"));
  std::minstd_rand random(kSeed);
  Faults faults;
  Tally tally;
  for (long i = 0; i < kills; ++i) {
    KillOnce(folder / "exceptions.log", log,
             std::chrono::microseconds(random() % 3000), tally, faults);
  }
  orvo_torture::Report("kill",
                       std::to_string(kills) + " kills, " +
                           std::to_string(tally.records) + " whole records, " +
                           std::to_string(tally.torn) + " torn at the end",
                       faults, watch);
  return orvo_torture::ExitStatus();
}

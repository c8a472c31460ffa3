#ifndef ORVO_TORTURE_SUPPORT_H_
#define ORVO_TORTURE_SUPPORT_H_

/// @file
/// What the torture programs share: their arguments, the faults they find, the
/// threads they start, and the lines they end with.

#include <sys/types.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <set>
#include <string>
#include <thread>

namespace orvo_torture {

/// Arguments of the forms "--NAME=VALUE" and "--NAME".
///
/// "--ticks" is for all programs: a signal each millisecond, which interrupts
/// whatever the system calls wait for.
class Options {
 public:
  Options(int argc, char** argv);

  /// The value of "--NAME=VALUE", or the default.
  long Number(const std::string& name, long otherwise) const;
  std::string Text(const std::string& name) const;

  /// Whether "--NAME" was given.
  bool Has(const std::string& name) const;

 private:
  std::set<std::string> arguments_;
};

/// Counts faults; the first of each kind is shown on the standard error stream.
class Faults {
 public:
  /// Any thread may check. @param what  The rule that holds if all is well.
  void Check(bool good, const char* what) {
    if (!good) Add(what);
  }
  void Add(const std::string& what);

  long count() const { return count_; }

 private:
  std::atomic<long> count_{0};
  std::mutex mutex_;
  std::set<std::string> shown_;  // guarded by mutex_
};

/// Measures from its construction on.
class Stopwatch {
 public:
  double Seconds() const {
    return std::chrono::duration<double>(Clock::now() - start_).count();
  }

 private:
  using Clock = std::chrono::steady_clock;
  Clock::time_point start_ = Clock::now();
};

/// Ends the process with a fault if it lives for too long, because what is
/// stuck would last for ever.
class TimeLimit {
 public:
  TimeLimit(long seconds, const char* what);
  TimeLimit(const TimeLimit&) = delete;
  TimeLimit& operator=(const TimeLimit&) = delete;
  ~TimeLimit();

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  bool over_ = false;  // guarded by mutex_
  std::thread thread_;
};

/// Ends the process with status 2, which says that it could not check, and
/// with the reason that is in errno.
[[noreturn]] void Fail(const char* what);

/// Calls the function with 0, 1, 2 ... in as many threads, which start it at
/// once.
void InThreads(int count, const std::function<void(int)>& function);

/// A number for each triple, spread over all 64 bits.
std::uint64_t Scatter(std::uint64_t a, std::uint64_t b = 0,
                      std::uint64_t c = 0);

/// Runs a function in a child process whose standard output is this descriptor
/// (-1: as here), for as long as it takes, but no longer than the calling
/// thread lives.
///
/// @return  The child; the caller waits for it.
pid_t StartChild(int standard_output, const std::function<void()>& function);

/// Whether the child came to its own end, with status 0.
bool EndsWell(pid_t child);

/// A new empty folder, removed with all it holds when the object goes.
class Folder {
 public:
  Folder();
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  ~Folder();

  std::string operator/(const std::string& name) const;

 private:
  std::string path_;
};

/// Bytes of this process's memory that are in use right now.
long ResidentBytes();

/// Descriptors that this process has open.
long OpenDescriptors();

/// Prints "CHECK: DETAILS, N faults, S s" and adds to the exit status of the
/// program.
void Report(const std::string& check, const std::string& details,
            const Faults& faults, const Stopwatch& watch);

/// 1 if any report had faults.
int ExitStatus();

}  // namespace orvo_torture

#endif  // ORVO_TORTURE_SUPPORT_H_

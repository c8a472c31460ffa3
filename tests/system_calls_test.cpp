// What the library does when a system call fails: once, and from then on.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/time.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdarg>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <functional>
#include <iostream>
#include <memory>
#include <new>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "orvo/orvo.h"
#include "tests/support/files.h"
#include "tests/support/interpose.h"
#include "tests/support/time_zone.h"

namespace {

using orvo_test::ScopedFailure;
using orvo_test::TemporaryFolder;

// What a call does, as a text.
using Act = std::string (*)();

std::string Outcome(Act act) {
  try {
    return act();
  } catch (const orvo::path::PathError& error) {
    return std::string("PathError: ") + error.what();
  } catch (const orvo::BadDir& error) {
    return std::string("BadDir: ") + error.what();
  } catch (const orvo::TimeError& error) {
    return std::string("TimeError: ") + error.what();
  } catch (const orvo::TimeValueError& error) {
    return std::string("TimeValueError: ") + error.what();
  } catch (const orvo::LockError& error) {
    return std::string("LockError: ") + error.what();
  } catch (const std::length_error&) {
    return "length_error";
  } catch (const std::bad_alloc&) {
    return "bad_alloc";
  }
}

std::string ToText(bool answer) {
  return answer ? "true" : "false";
}

std::string MakeOne() {
  std::filesystem::remove("new");
  orvo::path::MakeDirectory("new");
  return "made";
}

std::string MakeTwo() {
  orvo::path::MakeDirectories("outer/inner");
  return "made";
}

std::string IsDir() {
  return ToText(orvo::path::isdir("folder"));
}

std::string IsFile() {
  return ToText(orvo::path::isfile("folder/file"));
}

std::string List() {
  return std::to_string(orvo::listdir("folder").size());
}

std::string ListInOrder() {
  return std::to_string(orvo::path::entries("folder").size());
}

// An object in memory that is all zero, which the system takes for a sound
// mutex and for a sound condition even where it did not initialise them.
template <typename Object>
class InZeroes {
 public:
  template <typename... Arguments>
  explicit InZeroes(const Arguments&... arguments)
      : memory_(std::calloc(1, sizeof(Object)), std::free),
        object_(new (memory_.get()) Object(arguments...)) {}
  InZeroes(const InZeroes&) = delete;
  InZeroes& operator=(const InZeroes&) = delete;
  ~InZeroes() { object_->~Object(); }

  Object* operator->() { return object_; }

 private:
  const std::unique_ptr<void, void (*)(void*)> memory_;
  Object* const object_;
};

template <typename Impl>
std::string MakeLock() {
  InZeroes<Impl> lock("lock");
  lock->lock();
  lock->unlock();
  return "made";
}

std::string MakeCondition() {
  InZeroes<orvo::Condition> changed;
  changed->BroadcastWhileLocked();
  return "made";
}

std::string TryLock() {
  orvo::Lock lock("lock");
  const bool held = lock.try_lock();
  if (held) lock.unlock();
  return ToText(held);
}

std::string PollForLock() {
  orvo::Lock lock("lock");
  const bool held = lock.TimedLock(1e-5);
  if (held) lock.unlock();
  return ToText(held);
}

// Polls for a lock that this thread holds already.
std::string PollForHeldLock() {
  orvo::Lock lock("lock");
  lock.lock();
  const bool held = lock.TimedLock(1e-5);
  lock.unlock();
  return ToText(held);
}

std::string LockInDebugging() {
  orvo::DebugLock lock("lock");
  lock.lock();
  lock.unlock();
  return "locked";
}

std::string LockRecursivelyInDebugging() {
  orvo::DebugRLock lock("lock");
  lock.lock();
  lock.unlock();
  return "locked";
}

std::string TryLockForNoTime() {
  orvo::Lock lock("lock");
  const bool held = lock.TryLockFor(std::chrono::seconds(0));
  if (held) lock.unlock();
  return ToText(held);
}

std::string LockPlainly() {
  orvo::Lock lock("lock");
  lock.lock();
  // Held or not, it has to be free in the end.
  static_cast<void>(pthread_mutex_trylock(lock.get_mutex()));
  lock.unlock();
  return "returned";
}

// Also what was printed.
template <typename Wait>
std::string OutcomeOfWait(Wait wait) {
  const orvo::ScopedCoutCapture output;
  orvo::Lock lock("lock");
  orvo::Condition changed;
  const orvo::ScopeLock scope(lock);
  const std::string woken = ToText(wait(changed, lock));
  return output.Text() + woken;
}

std::string WaitForTheClock() {
  return OutcomeOfWait([](orvo::Condition& changed, orvo::Lock& lock) {
    return changed.TimedWaitWhileLocked(lock, 0);
  });
}

std::string WaitForNoTime() {
  return OutcomeOfWait([](orvo::Condition& changed, orvo::Lock& lock) {
    return changed.WaitFor(lock, std::chrono::seconds(0));
  });
}

std::string WaitForASignal() {
  orvo::Lock lock("lock");
  orvo::Condition().Wait(lock);
  return lock.try_lock() ? (lock.unlock(), "returned") : "kept the lock";
}

std::string Signal() {
  orvo::Lock lock("lock");
  orvo::Condition changed;
  changed.Signal(lock);
  changed.Broadcast(lock);
  return "returned";
}

std::string Sleep() {
  orvo::Sleep(1);
  return "slept";
}

std::string BreakDownUtc() {
  std::tm fields{};
  orvo::GmtimeSafe(86400, &fields);
  return std::to_string(fields.tm_mday);
}

std::string BreakDownLocally() {
  std::tm fields{};
  orvo::LocaltimeSafe(86400, &fields);
  return std::to_string(fields.tm_mday);
}

std::string ShowTime() {
  return orvo::TimeValue(1.5).GetAsIso8601();
}

std::string ShowTimeWithColons() {
  return orvo::TimeValue(1.5).GetAsIso8601WithColonTimeSeparator();
}

std::string ShowPreciseTime() {
  return orvo::TimeValue(1.5).GetAsIso8601Precise(9);
}

// Without the digits, which differ each time.
std::string ShowCurrentTime() {
  std::string text = orvo::current_time();
  for (char& c : text) {
    if (c >= '0' && c <= '9') c = '0';
  }
  return text.substr(text.size() < 15 ? 0 : text.size() - 15);
}

std::string ShowCurrentYear() {
  const std::string text = orvo::current_time();
  return ToText(text.size() == 25 && text.substr(20) > "2020\n");
}

std::string Format() {
  return orvo::format("%d-%d", 1, 2);
}

std::string FormatByString() {
  return orvo::format(std::string("%d-%d"), 1, 2);
}

ORVO_PRINTF_LIKE(1, 2)
std::string CallVformat(const char* fmt, ...) {
  char buffer[8] = "";
  va_list args;
  va_start(args, fmt);
  const int length = orvo::vformat(buffer, sizeof buffer, fmt, args);
  va_end(args);
  return std::to_string(length);
}

std::string FormatIntoBuffer() {
  return CallVformat("%d-%d", 1, 2);
}

std::string ExplainError() {
  // What follows the text are zero bytes.
  const std::string text = orvo::errmsg(ENOENT);
  return text.substr(0, text.find('\0'));
}

std::string ListMissing() {
  orvo::listdir("missing");
  return "listed";
}

std::string TraceStack() {
  return ToText(!orvo::GetStackTrace(5).empty());
}

std::string DissectStack() {
  return ToText(!orvo::GetStackFrames(5).empty());
}

std::string PrintStack() {
  const orvo::ScopedCoutCapture output;
  orvo::PrintStackTrace(5);
  return output.Text();
}

std::string DemangleName() {
  return orvo::Demangle("_ZN4orvo5SleepEj");
}

// What is echoed and what is in the file.
std::string LogToFile() {
  std::filesystem::remove("log");
  const orvo::ScopedCoutCapture output;
  orvo::LogException("m", "f", 7);
  return output.Text() + "[" + orvo_test::ReadFile("log") + "]";
}

// A failing call, and what comes of it.
struct Row {
  const char* call;
  int error;
  Act act;
  std::string once;
  std::string for_ever;
  // Calls that are made again and again, as they are meant to be, fail so often
  // instead of for ever.
  int times = -1;
};

#ifdef __SANITIZE_THREAD__
constexpr bool kWaitsByClock = false;
#else
constexpr bool kWaitsByClock = true;
#endif

// How often a call fails that is made until it succeeds.
constexpr int kVeryOften = 100000;

using Rows = std::vector<Row>;

// Each of these errors has the same outcome, once and for ever.
void Add(Rows* rows, const char* call, const std::vector<int>& errors,
         const std::vector<std::pair<Act, std::string>>& outcomes) {
  for (const int error : errors) {
    for (const auto& [act, outcome] : outcomes) {
      rows->push_back({call, error, act, outcome, outcome});
    }
  }
}

void AddFiles(Rows* rows) {
  const struct {
    int error;
    const char* text;
  } explanations[] = {
      {EACCES,
       "Search permission is denied on a component of the path prefix, or "
       "write permission is denied on the parent directory of the directory to "
       "be created."},
      {EDQUOT, "Unknown errno 122"},
      {EFAULT, "Unknown errno 14"},
      {EINTR, "Unknown errno 4"},
      {EIO, "Unknown errno 5"},
      {ELOOP,
       "A loop exists in symbolic links encountered during resolution of the "
       "path argument."},
      {EMLINK,
       "The link count of the parent directory would exceed {LINK_MAX}."},
      {ENAMETOOLONG,
       "The length of the path argument exceeds {PATH_MAX} or a pathname "
       "component is longer than {NAME_MAX}."},
      {ENOENT,
       "A component of the path prefix specified by path does not name an "
       "existing directory or path is an empty string."},
      {ENOMEM, "Unknown errno 12"},
      {ENOSPC,
       "The file system does not contain enough space to hold the contents of "
       "the new directory or to extend the parent directory of the new "
       "directory."},
      {ENOTDIR, "A component of the path prefix is not a directory."},
      {EPERM, "Unknown errno 1"},
      {EROFS, "The parent directory resides on a read-only file system."},
  };
  for (const auto& e : explanations) {
    const std::string failed = "PathError: Failed to create directory: ";
    Add(rows, "mkdir", {e.error},
        {{MakeOne, failed + "new, " + e.text},
         {MakeTwo, failed + "outer, " + e.text}});
  }
  Add(rows, "mkdir", {EEXIST},
      {{MakeOne,
        "PathError: Failed to create directory new. File already exists."}});
  Add(rows, "stat",
      {EACCES, EFAULT, EIO, ELOOP, ENAMETOOLONG, ENOENT, ENOMEM, ENOTDIR,
       EOVERFLOW},
      {{IsDir, "false"}, {IsFile, "false"}});

  Add(rows, "opendir", {EACCES},
      {{List, "BadDir: Permission denied"},
       {ListInOrder, "BadDir: Permission denied"}});
  Add(rows, "opendir", {EMFILE}, {{List, "BadDir: Too many open files"}});
  Add(rows, "opendir", {ENFILE},
      {{List, "BadDir: Too many open files in system"}});
  Add(rows, "opendir", {ENOENT}, {{List, "BadDir: No such file or directory"}});
  Add(rows, "opendir", {ENOMEM}, {{List, "BadDir: Cannot allocate memory"}});
  Add(rows, "opendir", {ENOTDIR}, {{List, "BadDir: Not a directory"}});
  // A failure ends the list like the end of the folder.
  Add(rows, "readdir", {EBADF, EIO, ENOENT, EOVERFLOW},
      {{List, "0"}, {ListInOrder, "0"}});
  Add(rows, "closedir", {EBADF, EINTR, EIO}, {{ListInOrder, "1"}});
}

void AddExceptionLog(Rows* rows) {
  const std::string sound = "LogException(m)\n[\nf line 7: m\n]";
  Add(rows, "open",
      {EACCES, EFBIG, EIO, EISDIR, ELOOP, EMFILE, ENFILE, ENOENT, ENOSPC, EPERM,
       EROFS},
      {{LogToFile,
        "LogException(m)\n"
        "Unable to write to threadExceptionLogPath: log\n"
        "f line 7: m\n[]"}});
  rows->push_back({"open", EINTR, LogToFile, sound, sound, kVeryOften});
  Add(rows, "write", {EAGAIN, EBADF, EDQUOT, EFBIG, EIO, ENOSPC, EPIPE},
      {{LogToFile, "LogException(m)\n[]"}});
  rows->push_back({"write", EINTR, LogToFile, sound, sound, kVeryOften});
}

void AddLocks(Rows* rows) {
  Add(rows, "pthread_mutex_init", {EAGAIN, EBUSY, EINVAL, ENOMEM, EPERM},
      {{MakeLock<orvo::LockImpl_>, "made"},
       {MakeLock<orvo::RLockImpl_>, "made"}});
  for (const int error :
       {EAGAIN, EDEADLK, EINVAL, ENOTRECOVERABLE, EOWNERDEAD, EPERM}) {
    const std::string outcome =
        "LockError: pthread_mutex_trylock failed with error " +
        std::to_string(error);
    Add(rows, "pthread_mutex_trylock", {error},
        {{TryLock, outcome},
         {PollForLock, outcome},
         {LockInDebugging, outcome},
         {LockRecursivelyInDebugging, outcome}});
  }
  Add(rows, "pthread_mutex_trylock", {EBUSY}, {{TryLock, "false"}});
  rows->push_back(
      {"pthread_mutex_trylock", EBUSY, PollForLock, "true", "false"});
  Add(rows, "pthread_mutex_lock", {EAGAIN, EDEADLK, EINVAL},
      {{LockPlainly, "returned"}});

  // Where it polls instead, there is nothing of these calls to fail.
  if (kWaitsByClock) {
    for (const int error : {EAGAIN, EDEADLK, EINVAL}) {
      Add(rows, "pthread_mutex_clocklock", {error},
          {{TryLockForNoTime,
            "LockError: pthread_mutex_clocklock failed with error " +
                std::to_string(error)}});
    }
    Add(rows, "pthread_mutex_clocklock", {ETIMEDOUT},
        {{TryLockForNoTime, "false"}});
  }
}

void AddConditions(Rows* rows) {
  Add(rows, "pthread_cond_init", {EAGAIN, EBUSY, EINVAL, ENOMEM},
      {{MakeCondition, "made"}});
  for (const int error : {EINVAL, ENOTRECOVERABLE, EPERM}) {
    const std::string rest = " errcode " + std::to_string(error) + "\nfalse";
    Add(rows, "pthread_cond_timedwait", {error},
        {{WaitForTheClock, "pthread_cond_timedwait" + rest}});
    Add(rows, "pthread_cond_clockwait", {error},
        {{WaitForNoTime, "pthread_cond_clockwait" + rest}});
  }
  Add(rows, "pthread_cond_timedwait", {ETIMEDOUT},
      {{WaitForTheClock, "false"}});
  Add(rows, "pthread_cond_clockwait", {ETIMEDOUT}, {{WaitForNoTime, "false"}});
  Add(rows, "pthread_cond_wait", {EINVAL, EPERM},
      {{WaitForASignal, "returned"}});
  Add(rows, "pthread_cond_signal", {EINVAL}, {{Signal, "returned"}});
  Add(rows, "pthread_cond_broadcast", {EINVAL}, {{Signal, "returned"}});
  Add(rows, "time", {EFAULT},
      {{WaitForTheClock, "false"}, {ShowCurrentYear, "false"}});
}

void AddTime(Rows* rows) {
  Add(rows, "nanosleep", {EFAULT, EINVAL, ENOSYS},
      {{Sleep, "slept"}, {PollForHeldLock, "false"}});
  rows->push_back({"nanosleep", EINTR, Sleep, "slept", "slept", kVeryOften});
  rows->push_back(
      {"nanosleep", EINTR, PollForHeldLock, "false", "false", kVeryOften});

  const std::string no_fields =
      "TimeValueError: Error converting time to UTC time.";
  Add(rows, "gmtime_r", {EINVAL, EOVERFLOW},
      {{BreakDownUtc, "TimeError: gmtime_r failed."},
       {ShowTime, no_fields},
       {ShowTimeWithColons, no_fields},
       {ShowPreciseTime, no_fields}});
  Add(rows, "localtime_r", {EINVAL, EOVERFLOW},
      {{BreakDownLocally, "TimeError: localtime_r failed"},
       {ShowCurrentTime, " 00:00:00 0000\n"}});
  const std::string no_text =
      "TimeValueError: Time to string conversion failed.";
  Add(rows, "strftime", {EINVAL, ERANGE},
      {{ShowTime, no_text},
       {ShowTimeWithColons, no_text},
       {ShowPreciseTime, no_text}});
  Add(rows, "asctime_r", {EINVAL, EOVERFLOW}, {{ShowCurrentTime, ""}});
}

void AddTexts(Rows* rows) {
  const struct {
    int error;
    const char* text;
  } reasons[] = {
      {EILSEQ, "Invalid or incomplete multibyte or wide character"},
      {ENOMEM, "Cannot allocate memory"},
      {EOVERFLOW, "Value too large for defined data type"},
  };
  for (const auto& r : reasons) {
    Add(rows, "vsnprintf", {r.error},
        {{Format, "length_error"},
         {FormatByString, "length_error"},
         {FormatIntoBuffer, "-1"},
         {ShowPreciseTime,
          std::string("1970-01-01T00-00-01.Formatting error: ") + r.text +
              "Z"}});
  }
  Add(rows, "__xpg_strerror_r", {EINVAL, ERANGE},
      {{ExplainError, ""}, {ListMissing, "BadDir: "}});
}

void AddStackTraces(Rows* rows) {
  Add(rows, "backtrace", {ENOMEM},
      {{TraceStack, "false"},
       {DissectStack, "false"},
       {PrintStack, "\nstack trace:\n  no frames found.\n"}});
  Add(rows, "backtrace_symbols", {ENOMEM},
      {{TraceStack, "bad_alloc"},
       {DissectStack, "bad_alloc"},
       {PrintStack, "bad_alloc"}});
  Add(rows, "__cxa_demangle", {ENOMEM}, {{DemangleName, "_ZN4orvo5SleepEj"}});
}

Rows AllRows() {
  Rows rows;
  AddFiles(&rows);
  AddExceptionLog(&rows);
  AddLocks(&rows);
  AddConditions(&rows);
  AddTime(&rows);
  AddTexts(&rows);
  AddStackTraces(&rows);
  return rows;
}

// Ends the process when it has worked for so long, however busy the machine is:
// a call that nobody would wait for.
void LimitTime(std::chrono::microseconds time) {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
  const itimerval limit = {{0, 0}, {seconds.count(), (time - seconds).count()}};
  setitimer(ITIMER_PROF, &limit, nullptr);
}

class SystemCalls : public testing::Test {
 protected:
  SystemCalls() {
    std::filesystem::create_directory("folder");
    orvo_test::WriteFile("folder/file", "");
    orvo::SetThreadExceptionLogPath("log");
    LimitTime(std::chrono::seconds(60));
  }
  ~SystemCalls() override {
    LimitTime(std::chrono::seconds(0));
    orvo::SetThreadExceptionLogPath("");
  }

 private:
  const TemporaryFolder folder_;
  const orvo_test::ScopedWorkingDirectory directory_{folder_.path()};
  const orvo_test::ScopedTimeZone zone_{"UTC0"};
};

TEST_F(SystemCalls, FailWithTheOutcomeThatIsDescribed) {
  std::set<std::pair<std::string, int>> pairs;
  const Rows rows = AllRows();
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.call) + " " + std::to_string(row.error));
    {
      const ScopedFailure failure(row.call, row.error, 0, 1);
      EXPECT_EQ(Outcome(row.act), row.once);
      EXPECT_EQ(failure.count(), 1);
    }
    {
      const ScopedFailure failure(row.call, row.error, 0, row.times);
      EXPECT_EQ(Outcome(row.act), row.for_ever);
      EXPECT_GE(failure.count(), row.times < 0 ? 1 : row.times);
    }
    pairs.emplace(row.call, row.error);
  }
  EXPECT_GE(pairs.size(), 60U);
  std::cout << "failing system calls: " << pairs.size()
            << " pairs of call and error, " << rows.size()
            << " outcomes, each once and for ever\n";
}

// Nothing of a failure stays behind.
TEST_F(SystemCalls, SucceedAfterwards) {
  const std::pair<Act, std::string> sound[] = {
      {MakeOne, "made"},
      {MakeTwo, "made"},
      {IsDir, "true"},
      {IsFile, "true"},
      {List, "3"},
      {ListInOrder, "1"},
      {LogToFile, "LogException(m)\n[\nf line 7: m\n]"},
      {MakeLock<orvo::LockImpl_>, "made"},
      {MakeLock<orvo::RLockImpl_>, "made"},
      {MakeCondition, "made"},
      {TryLock, "true"},
      {PollForLock, "true"},
      {PollForHeldLock, "false"},
      {LockInDebugging, "locked"},
      {LockRecursivelyInDebugging, "locked"},
      {TryLockForNoTime, "true"},
      {LockPlainly, "returned"},
      {WaitForTheClock, "false"},
      {WaitForNoTime, "false"},
      {Signal, "returned"},
      {Sleep, "slept"},
      {BreakDownUtc, "2"},
      {BreakDownLocally, "2"},
      {ShowTime, "1970-01-01T00-00-02Z"},
      {ShowTimeWithColons, "1970-01-01T00:00:02Z"},
      {ShowPreciseTime, "1970-01-01T00-00-01.500000000Z"},
      {ShowCurrentTime, " 00:00:00 0000\n"},
      {ShowCurrentYear, "true"},
      {Format, "1-2"},
      {FormatByString, "1-2"},
      {FormatIntoBuffer, "3"},
      {ExplainError, "No such file or directory"},
      {ListMissing, "BadDir: No such file or directory"},
      {TraceStack, "true"},
      {DissectStack, "true"},
      {DemangleName, "orvo::Sleep(unsigned int)"},
  };
  for (const Row& row : AllRows()) {
    const ScopedFailure failure(row.call, row.error, 0, 1);
    Outcome(row.act);
  }
  for (const auto& [act, outcome] : sound) EXPECT_EQ(Outcome(act), outcome);
}

// What the checks above have to catch.

TEST(SystemCallsDeathTest, EndACallThatIsMadeForEver) {
  const auto sleep_for_ever = [] {
    LimitTime(std::chrono::milliseconds(50));
    const ScopedFailure failure("nanosleep", EINVAL);
    const timespec request = {0, 1};
    while (nanosleep(&request, nullptr) != 0) {
    }
  };
  EXPECT_EXIT(sleep_for_ever(), testing::KilledBySignal(SIGPROF), "");
}

std::string IgnoreTheFailure() {
  std::tm fields{};
  const std::time_t day = 86400;
  gmtime_r(&day, &fields);
  return std::to_string(fields.tm_mday);
}

TEST(SystemCallsOutcome, TellsAnIgnoredFailureFromAReportedOne) {
  EXPECT_EQ(Outcome(IgnoreTheFailure), Outcome(BreakDownUtc));
  const ScopedFailure failure("gmtime_r", EOVERFLOW);
  EXPECT_NE(Outcome(IgnoreTheFailure), Outcome(BreakDownUtc));
}

}  // namespace

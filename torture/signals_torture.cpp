// A signal each millisecond interrupts what sleeps: no sleep may be short, and
// each poll for a lock has to ask for what an interrupted one left over.
//
//   signals_torture [--sleeps=N] [--interruptions=N] [--limit=SECONDS]
//                   [--twin=NAME]
//
// The twins are faults to be found: short_sleeps takes an interrupted sleep for
// a whole one, fresh_polls asks for a whole sleep after an interrupted one.
#include <sys/time.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <csignal>
#include <ctime>
#include <future>
#include <memory>
#include <string>
#include <thread>

#include "orvo/lock.h"
#include "orvo/time_value.h"
#include "tests/support/interpose/calls.h"
#include "torture/support.h"

namespace {

using orvo_test::nanosleep_calls;
using orvo_test::ScopedHook;
using orvo_torture::Faults;
using orvo_torture::Options;
using orvo_torture::Stopwatch;

volatile std::sig_atomic_t ticks = 0;

void CountTick(int) {
  ticks = ticks + 1;
}

// A thousand signals a second, which interrupt system calls for good.
void StartTicks() {
  struct sigaction action {};
  action.sa_handler = CountTick;
  sigaction(SIGALRM, &action, nullptr);
  const itimerval millisecond{{0, 1000}, {0, 1000}};
  setitimer(ITIMER_REAL, &millisecond, nullptr);
}

void TortureSleep(long sleeps) {
  const Stopwatch watch;
  Faults faults;
  for (long i = 0; i < sleeps; ++i) {
    const auto milliseconds = static_cast<unsigned>(1 + i % 20);
    const Stopwatch sleep;
    orvo::Sleep(milliseconds);
    faults.Check(sleep.Seconds() * 1000 >= milliseconds, "no sleep is short");
  }
  faults.Check(ticks > sleeps, "the signals come");
  orvo_torture::Report(
      "signals, sleeps",
      std::to_string(sleeps) + " sleeps, " + std::to_string(ticks) + " signals",
      faults, watch);
}

// Sees each sleep of a TimedLock() on a lock in other hands.
class PollObserver {
 public:
  explicit PollObserver(Faults& faults) : faults_(faults) {}

  // What a poll sleeps, and so does each later one, unless it is interrupted.
  void Restart() { expected_ = 2000; }

  int Sleep(const timespec* request, timespec* remainder) {
    ++polls_;
    faults_.Check(request->tv_sec == 0 && request->tv_nsec == expected_,
                  "a poll asks for what was left");
    const timespec stretched{0, kStretch * request->tv_nsec};
    const int result = nanosleep_calls.Real(&stretched, remainder);
    if (result != 0 && errno == EINTR) {
      --polls_;
      ++interruptions_;
      expected_ = remainder->tv_nsec /= kStretch;
      errno = EINTR;
    }
    return result;
  }

  long interruptions() const { return interruptions_; }
  long polls() const { return polls_; }

 private:
  // Two microseconds are over before a signal is there.
  static constexpr long kStretch = 100;

  Faults& faults_;
  long expected_ = 2000;
  long interruptions_ = 0;
  long polls_ = 0;  // whole ones
};

void TorturePolls(orvo::Lock lock, long interruptions) {
  const Stopwatch watch;
  Faults faults;
  std::promise<void> over;
  std::promise<void> held;
  std::thread holder([&] {
    lock.lock();
    held.set_value();
    over.get_future().wait();
    lock.unlock();
  });
  held.get_future().wait();

  PollObserver observer(faults);
  {
    const ScopedHook hook(nanosleep_calls,
                          [&](const timespec* request, timespec* remainder) {
                            return observer.Sleep(request, remainder);
                          });
    while (observer.interruptions() < interruptions && faults.count() == 0) {
      constexpr long kPolls = 500;
      const long before = observer.polls();
      observer.Restart();
      faults.Check(!lock.TimedLock(kPolls * 2e-6), "a held lock is not taken");
      faults.Check(observer.polls() - before == kPolls,
                   "an interrupted sleep counts once");
    }
  }
  over.set_value();
  holder.join();
  faults.Check(lock.TimedLock(0), "a free lock is taken");
  lock.unlock();
  orvo_torture::Report("signals, polls",
                       std::to_string(observer.polls()) + " polls, " +
                           std::to_string(observer.interruptions()) +
                           " of them interrupted",
                       faults, watch);
}

// --- Broken twins ----------------------------------------------------------

void BreakSleeps(long sleeps) {
  const ScopedHook hook(nanosleep_calls,
                        [](const timespec* request, timespec* remainder) {
                          nanosleep_calls.Real(request, remainder);
                          return 0;
                        });
  TortureSleep(sleeps);
}

class FreshPolls : public orvo::LockImpl_ {
 public:
  using LockImpl_::LockImpl_;
  bool TimedLock(double seconds) override {
    const long polls = std::lround(seconds / 2e-6);
    for (long i = 0; i < polls; ++i) {
      if (try_lock()) return true;
      const timespec request{0, 2000};
      timespec remainder{};
      while (nanosleep(&request, &remainder) != 0 && errno == EINTR) {
      }
    }
    return false;
  }
};

}  // namespace

int main(int argc, char** argv) {
  const Options options(argc, argv);
  const orvo_torture::TimeLimit limit(options.Number("limit", 600),
                                      "the sleeps and polls");
  // Inherited by no thread, so that the signals meet this one.
  StartTicks();
  const long sleeps = options.Number("sleeps", 200);
  const long interruptions = options.Number("interruptions", 20);
  const std::string twin = options.Text("twin");
  if (twin == "short_sleeps") {
    BreakSleeps(sleeps);
  } else if (twin == "fresh_polls") {
    TorturePolls(orvo::Lock(std::make_unique<FreshPolls>("polls")),
                 interruptions);
  } else {
    TortureSleep(sleeps);
    TorturePolls(orvo::Lock("polls"), interruptions);
  }
  return orvo_torture::ExitStatus();
}

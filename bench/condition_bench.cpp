// The condition beside the bare POSIX one and those of abseil and the standard
// library.
#include <absl/synchronization/mutex.h>
#include <benchmark/benchmark.h>
#include <pthread.h>

#include <chrono>
#include <condition_variable>
#include <ctime>
#include <mutex>
#include <thread>

#include "orvo/condition.h"
#include "orvo/lock.h"
#include "orvo/scope_lock.h"

namespace {

// The kinds of condition, each with its lock, behind one interface.
struct Orvo {
  using Held = orvo::ScopeLock;

  void Wait(Held&) { condition.WaitWhileLocked(lock); }
  void WaitUntilThisSecond(Held&) { condition.TimedWaitWhileLocked(lock, 0); }
  void Signal() { condition.SignalWhileLocked(); }
  void LockAndSignal() { condition.Signal(lock); }

  orvo::Lock lock{"bench"};
  orvo::Condition condition;
};

struct Std {
  using Held = std::unique_lock<std::mutex>;

  void Wait(Held& held) { condition.wait(held); }
  void WaitUntilThisSecond(Held& held) {
    using std::chrono::system_clock;
    condition.wait_until(
        held, std::chrono::floor<std::chrono::seconds>(system_clock::now()));
  }
  void Signal() { condition.notify_one(); }
  void LockAndSignal() {
    const Held held(lock);
    condition.notify_one();
  }

  std::mutex lock;
  std::condition_variable condition;
};

struct Absl {
  using Held = absl::MutexLock;

  void Wait(Held&) { condition.Wait(&lock); }
  void Signal() { condition.Signal(); }
  void LockAndSignal() {
    const Held held(&lock);
    condition.Signal();
  }

  absl::Mutex lock;
  absl::CondVar condition;
};

struct PosixMutex {
  void lock() { pthread_mutex_lock(&mutex); }
  void unlock() { pthread_mutex_unlock(&mutex); }
  pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
};

struct Posix {
  using Held = std::unique_lock<PosixMutex>;

  void Wait(Held&) { pthread_cond_wait(&condition, &lock.mutex); }
  void WaitUntilThisSecond(Held&) {
    const timespec deadline{time(nullptr), 0};
    pthread_cond_timedwait(&condition, &lock.mutex, &deadline);
  }
  void Signal() { pthread_cond_signal(&condition); }
  void LockAndSignal() {
    const Held held(lock);
    pthread_cond_signal(&condition);
  }

  PosixMutex lock;
  pthread_cond_t condition = PTHREAD_COND_INITIALIZER;
};

// What a Held of the kind is made from.
template <typename Kind>
auto& Lock(Kind* kind) {
  return kind->lock;
}
absl::Mutex* Lock(Absl* kind) {
  return &kind->lock;
}

// Two threads that wake each other in turn, through one condition each.
template <typename Kind>
class Players {
 public:
  Players() : partner_([this] { AnswerAll(); }) {}
  Players(const Players&) = delete;
  Players& operator=(const Players&) = delete;
  ~Players() {
    Set(&asked_, kEnd, &question_);
    partner_.join();
  }

  void RoundTrip() {
    ++round_;
    Set(&asked_, round_, &question_);
    Await(answered_, round_, &answer_);
  }

 private:
  static constexpr long kEnd = -1;

  void AnswerAll() {
    for (long round = 1; Await(asked_, round, &question_) != kEnd; ++round) {
      Set(&answered_, round, &answer_);
    }
  }

  static void Set(long* number, long value, Kind* kind) {
    typename Kind::Held held(Lock(kind));
    *number = value;
    kind->Signal();
  }

  static long Await(const long& number, long value, Kind* kind) {
    typename Kind::Held held(Lock(kind));
    while (number != value && number != kEnd) kind->Wait(held);
    return number;
  }

  Kind question_;
  Kind answer_;
  long asked_ = 0;     // guarded by the lock of question_
  long answered_ = 0;  // guarded by the lock of answer_
  long round_ = 0;
  std::thread partner_;
};

template <typename Kind>
void RoundTrip(benchmark::State& state) {
  Players<Kind> players;
  for (auto _ : state) players.RoundTrip();
}
BENCHMARK_TEMPLATE(RoundTrip, Orvo)
    ->Name("lock/round_trip/orvo/1")
    ->UseRealTime();
BENCHMARK_TEMPLATE(RoundTrip, Absl)
    ->Name("lock/round_trip/absl/1")
    ->UseRealTime();
BENCHMARK_TEMPLATE(RoundTrip, Std)
    ->Name("lock/round_trip/std/1")
    ->UseRealTime();
BENCHMARK_TEMPLATE(RoundTrip, Posix)
    ->Name("lock/round_trip/limit/1")
    ->UseRealTime();

template <typename Kind>
void Signal(benchmark::State& state) {
  Kind kind;
  for (auto _ : state) kind.LockAndSignal();
}
BENCHMARK_TEMPLATE(Signal, Orvo)->Name("lock/signal/orvo/1");
BENCHMARK_TEMPLATE(Signal, Absl)->Name("lock/signal/absl/1");
BENCHMARK_TEMPLATE(Signal, Std)->Name("lock/signal/std/1");
BENCHMARK_TEMPLATE(Signal, Posix)->Name("lock/signal/limit/1");

template <typename Kind>
void SignalLocked(benchmark::State& state) {
  Kind kind;
  typename Kind::Held held(Lock(&kind));
  for (auto _ : state) kind.Signal();
}
BENCHMARK_TEMPLATE(SignalLocked, Orvo)->Name("lock/signal_locked/orvo/1");
BENCHMARK_TEMPLATE(SignalLocked, Absl)->Name("lock/signal_locked/absl/1");
BENCHMARK_TEMPLATE(SignalLocked, Std)->Name("lock/signal_locked/std/1");
BENCHMARK_TEMPLATE(SignalLocked, Posix)->Name("lock/signal_locked/limit/1");

template <typename Kind>
void TimedWaitExpired(benchmark::State& state) {
  Kind kind;
  typename Kind::Held held(Lock(&kind));
  for (auto _ : state) kind.WaitUntilThisSecond(held);
}
BENCHMARK_TEMPLATE(TimedWaitExpired, Orvo)
    ->Name("lock/timed_wait_expired/orvo/1");
BENCHMARK_TEMPLATE(TimedWaitExpired, Std)
    ->Name("lock/timed_wait_expired/std/1");
BENCHMARK_TEMPLATE(TimedWaitExpired, Posix)
    ->Name("lock/timed_wait_expired/limit/1");

}  // namespace

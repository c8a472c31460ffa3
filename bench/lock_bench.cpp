// Plain locks beside the bare POSIX mutex and those of abseil, GLib and the
// standard library.
#include <benchmark/benchmark.h>

#include <chrono>
#include <ctime>
#include <mutex>
#include <thread>

#include "bench/locks.h"
#include "orvo/lock.h"

namespace {

using orvo_bench::AbslMutex;
using orvo_bench::GlibMutex;
using orvo_bench::GlibRecMutex;
using orvo_bench::LockPair;
using orvo_bench::NamedLock;
using orvo_bench::PlainMutex;
using orvo_bench::RecursiveMutex;
using orvo_bench::Shared;

struct NamedRLock : orvo::RLock {
  NamedRLock() : RLock("bench") {}
};

BENCHMARK_TEMPLATE(LockPair, NamedLock)->Name("lock/plain/orvo/1");
BENCHMARK_TEMPLATE(LockPair, std::mutex)->Name("lock/plain/std/1");
BENCHMARK_TEMPLATE(LockPair, AbslMutex)->Name("lock/plain/absl/1");
BENCHMARK_TEMPLATE(LockPair, GlibMutex)->Name("lock/plain/glib/1");
BENCHMARK_TEMPLATE(LockPair, PlainMutex)->Name("lock/plain/limit/1");
BENCHMARK_TEMPLATE(LockPair, NamedLock)
    ->Name("lock/plain_contended/orvo/1")
    ->UseRealTime()
    ->Threads(2);
BENCHMARK_TEMPLATE(LockPair, std::mutex)
    ->Name("lock/plain_contended/std/1")
    ->UseRealTime()
    ->Threads(2);
BENCHMARK_TEMPLATE(LockPair, AbslMutex)
    ->Name("lock/plain_contended/absl/1")
    ->UseRealTime()
    ->Threads(2);
BENCHMARK_TEMPLATE(LockPair, GlibMutex)
    ->Name("lock/plain_contended/glib/1")
    ->UseRealTime()
    ->Threads(2);
BENCHMARK_TEMPLATE(LockPair, PlainMutex)
    ->Name("lock/plain_contended/limit/1")
    ->UseRealTime()
    ->Threads(2);
BENCHMARK_TEMPLATE(LockPair, NamedRLock)->Name("lock/recursive/orvo/1");
BENCHMARK_TEMPLATE(LockPair, std::recursive_mutex)
    ->Name("lock/recursive/std/1");
BENCHMARK_TEMPLATE(LockPair, GlibRecMutex)->Name("lock/recursive/glib/1");
BENCHMARK_TEMPLATE(LockPair, RecursiveMutex)->Name("lock/recursive/limit/1");

template <typename Lock>
void TryFree(benchmark::State& state) {
  Lock& lock = Shared<Lock>();
  for (auto _ : state) {
    benchmark::DoNotOptimize(lock.try_lock());
    lock.unlock();
  }
}
BENCHMARK_TEMPLATE(TryFree, NamedLock)->Name("lock/try_free/orvo/1");
BENCHMARK_TEMPLATE(TryFree, std::mutex)->Name("lock/try_free/std/1");
BENCHMARK_TEMPLATE(TryFree, AbslMutex)->Name("lock/try_free/absl/1");
BENCHMARK_TEMPLATE(TryFree, GlibMutex)->Name("lock/try_free/glib/1");
BENCHMARK_TEMPLATE(TryFree, PlainMutex)->Name("lock/try_free/limit/1");

template <typename Lock>
void TryHeld(benchmark::State& state) {
  Lock& lock = Shared<Lock>();
  lock.lock();
  for (auto _ : state) benchmark::DoNotOptimize(lock.try_lock());
  lock.unlock();
}
BENCHMARK_TEMPLATE(TryHeld, NamedLock)->Name("lock/try_held/orvo/1");
BENCHMARK_TEMPLATE(TryHeld, AbslMutex)->Name("lock/try_held/absl/1");
BENCHMARK_TEMPLATE(TryHeld, GlibMutex)->Name("lock/try_held/glib/1");
BENCHMARK_TEMPLATE(TryHeld, PlainMutex)->Name("lock/try_held/limit/1");

void TimedFree(benchmark::State& state) {
  orvo::Lock& lock = Shared<NamedLock>();
  for (auto _ : state) {
    benchmark::DoNotOptimize(lock.TimedLock(1.0));
    lock.unlock();
  }
}
BENCHMARK(TimedFree)->Name("lock/timed_free/orvo/1");

void TimedFreeStd(benchmark::State& state) {
  std::timed_mutex& mutex = Shared<std::timed_mutex>();
  for (auto _ : state) {
    benchmark::DoNotOptimize(mutex.try_lock_for(std::chrono::seconds(1)));
    mutex.unlock();
  }
}
BENCHMARK(TimedFreeStd)->Name("lock/timed_free/std/1");
BENCHMARK_TEMPLATE(TryFree, PlainMutex)->Name("lock/timed_free/limit/1");

void TimedZeroHeld(benchmark::State& state) {
  orvo::Lock& lock = Shared<NamedLock>();
  lock.lock();
  for (auto _ : state) benchmark::DoNotOptimize(lock.TimedLock(0.0));
  lock.unlock();
}
BENCHMARK(TimedZeroHeld)->Name("lock/timed_zero_held/orvo/1")->UseRealTime();

void TimedZeroHeldLimit(benchmark::State& state) {
  PlainMutex& mutex = Shared<PlainMutex>();
  mutex.lock();
  const timespec request{0, 2000};
  for (auto _ : state) {
    benchmark::DoNotOptimize(mutex.try_lock());
    nanosleep(&request, nullptr);
  }
  mutex.unlock();
}
BENCHMARK(TimedZeroHeldLimit)
    ->Name("lock/timed_zero_held/limit/1")
    ->UseRealTime();

}  // namespace

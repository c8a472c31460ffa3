#ifndef ORVO_BENCH_LOCKS_H_
#define ORVO_BENCH_LOCKS_H_

#include <absl/synchronization/mutex.h>
#include <benchmark/benchmark.h>
#include <glib.h>
#include <pthread.h>

#include "orvo/lock.h"

namespace orvo_bench {

/// A bare mutex with the interface of a lock.
template <int type>
class PosixMutex {
 public:
  PosixMutex() {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, type);
    pthread_mutex_init(&mutex_, &attributes);
    pthread_mutexattr_destroy(&attributes);
  }
  ~PosixMutex() { pthread_mutex_destroy(&mutex_); }

  void lock() { pthread_mutex_lock(&mutex_); }
  void unlock() { pthread_mutex_unlock(&mutex_); }
  bool try_lock() { return pthread_mutex_trylock(&mutex_) == 0; }

 private:
  pthread_mutex_t mutex_;
};

using PlainMutex = PosixMutex<PTHREAD_MUTEX_DEFAULT>;
using RecursiveMutex = PosixMutex<PTHREAD_MUTEX_RECURSIVE>;

class AbslMutex {
 public:
  void lock() { mutex_.Lock(); }
  void unlock() { mutex_.Unlock(); }
  bool try_lock() { return mutex_.TryLock(); }

 private:
  absl::Mutex mutex_;
};

class GlibMutex {
 public:
  GlibMutex() { g_mutex_init(&mutex_); }
  ~GlibMutex() { g_mutex_clear(&mutex_); }
  void lock() { g_mutex_lock(&mutex_); }
  void unlock() { g_mutex_unlock(&mutex_); }
  bool try_lock() { return g_mutex_trylock(&mutex_) != 0; }

 private:
  GMutex mutex_;
};

class GlibRecMutex {
 public:
  GlibRecMutex() { g_rec_mutex_init(&mutex_); }
  ~GlibRecMutex() { g_rec_mutex_clear(&mutex_); }
  void lock() { g_rec_mutex_lock(&mutex_); }
  void unlock() { g_rec_mutex_unlock(&mutex_); }

 private:
  GRecMutex mutex_;
};

struct NamedLock : orvo::Lock {
  NamedLock() : Lock("bench") {}
};

/// One lock for all threads of a benchmark.
template <typename Lock>
Lock& Shared() {
  static Lock lock;
  return lock;
}

template <typename Lock>
void LockPair(benchmark::State& state) {
  Lock& lock = Shared<Lock>();
  for (auto _ : state) {
    lock.lock();
    benchmark::ClobberMemory();
    lock.unlock();
  }
}

}  // namespace orvo_bench

#endif  // ORVO_BENCH_LOCKS_H_

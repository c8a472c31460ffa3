#include "orvo/condition.h"

#include <cerrno>
#include <ctime>
#include <mutex>
#include <string>
#include <typeinfo>

#include "orvo/debug_locks.h"
#include "orvo/scope_lock.h"
#include "orvo/thread_safe_ostream.h"

namespace orvo {
namespace {

// Made once, because a string per call would cost more than the signal, and
// never destroyed, because programs signal while they exit, too.
const std::string& ThisFile() {
  static const auto* const file = new std::string(__FILE__);
  return *file;
}

// Does what a DebugScopeLock does, but for the copies of the names, which would
// cost more than the signal.
std::unique_lock<OrvoLock> LockFrom(OrvoLock& lock, const char* function,
                                    int line) {
  lock.LockWithFilenameAndLineNumber(function, ThisFile(), line);
  return std::unique_lock<OrvoLock>(lock, std::adopt_lock);
}

// Answers for a timed wait of this result.
bool WasWoken(int result, const char* function) {
  if (result != 0 && result != ETIMEDOUT) {
    CoutBuffer() << function << " errcode " << result << endl;
  }
  return result == 0;
}

}  // namespace

// Keeps the books of a debug lock for the length of a wait; any other lock
// hears nothing of it.
class __attribute__((visibility("hidden"))) Condition::WaitBooks {
 public:
  WaitBooks(OrvoLock& lock, int line)
      : lock_(FindDebugLock(lock)), line_(line) {
    if (lock_ != nullptr) lock_->BeginWait(ThisFile(), line_);
  }
  WaitBooks(const WaitBooks&) = delete;
  WaitBooks& operator=(const WaitBooks&) = delete;
  ~WaitBooks() {
    if (lock_ != nullptr) lock_->EndWait(ThisFile(), line_);
  }

 private:
  // Also behind scope locks; null if there is none.
  static DebugLock* FindDebugLock(OrvoLock& lock) {
    // Spares plain locks, which are most, the casts.
    if (typeid(lock) == typeid(Lock)) return nullptr;
    OrvoLock* found = &lock;
    while (auto* const scope = dynamic_cast<ScopeLockBase*>(found)) {
      found = scope->held();
    }
    return dynamic_cast<DebugLock*>(found);
  }

  DebugLock* lock_;
  int line_;
};

Condition::Condition() {
  pthread_cond_init(&condition_, nullptr);
}

Condition::~Condition() {
  pthread_cond_destroy(&condition_);
}

void Condition::Wait(OrvoLock& lock) {
  const auto held = LockFrom(lock, "Wait", __LINE__);
  WaitWhileLocked(lock);
}

void Condition::WaitWhileLocked(OrvoLock& lock) {
  const WaitBooks books(lock, __LINE__);
  pthread_cond_wait(&condition_, lock.get_mutex());
}

bool Condition::TimedWait(OrvoLock& lock, int seconds) {
  const auto held = LockFrom(lock, "TimedWait", __LINE__);
  return TimedWaitWhileLocked(lock, seconds);
}

bool Condition::TimedWaitWhileLocked(OrvoLock& lock, int seconds) {
  const WaitBooks books(lock, __LINE__);
  const timespec deadline{time(nullptr) + seconds, 0};
  const int result =
      pthread_cond_timedwait(&condition_, lock.get_mutex(), &deadline);
  return WasWoken(result, "pthread_cond_timedwait");
}

void Condition::Signal(OrvoLock& lock) {
  const auto held = LockFrom(lock, "Signal", __LINE__);
  SignalWhileLocked();
}

void Condition::Broadcast(OrvoLock& lock) {
  const auto held = LockFrom(lock, "Broadcast", __LINE__);
  BroadcastWhileLocked();
}

void Condition::SignalWhileLocked() {
  pthread_cond_signal(&condition_);
}

void Condition::BroadcastWhileLocked() {
  pthread_cond_broadcast(&condition_);
}

bool Condition::WaitBefore(OrvoLock& lock, const Deadline& deadline) {
  const WaitBooks books(lock, __LINE__);
  const timespec time = deadline.GetAsTimespec();
  return WasWoken(pthread_cond_clockwait(&condition_, lock.get_mutex(),
                                         CLOCK_MONOTONIC, &time),
                  "pthread_cond_clockwait");
}

}  // namespace orvo

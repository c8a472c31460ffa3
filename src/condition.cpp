#include "orvo/condition.h"

#include <cerrno>
#include <ctime>
#include <string>

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

}  // namespace

Condition::Condition() {
  pthread_cond_init(&condition_, nullptr);
}

Condition::~Condition() {
  pthread_cond_destroy(&condition_);
}

void Condition::Wait(OrvoLock& lock) {
  const DebugScopeLock scope(lock, "Wait", ThisFile(), __LINE__);
  WaitWhileLocked(lock);
}

void Condition::WaitWhileLocked(OrvoLock& lock) {
  pthread_cond_wait(&condition_, lock.get_mutex());
}

bool Condition::TimedWait(OrvoLock& lock, int seconds) {
  const DebugScopeLock scope(lock, "TimedWait", ThisFile(), __LINE__);
  return TimedWaitWhileLocked(lock, seconds);
}

bool Condition::TimedWaitWhileLocked(OrvoLock& lock, int seconds) {
  const timespec deadline{time(nullptr) + seconds, 0};
  const int result =
      pthread_cond_timedwait(&condition_, lock.get_mutex(), &deadline);
  if (result != 0 && result != ETIMEDOUT) {
    CoutBuffer() << "pthread_cond_timedwait errcode " << result << endl;
  }
  return result == 0;
}

void Condition::Signal(OrvoLock& lock) {
  const DebugScopeLock scope(lock, "Signal", ThisFile(), __LINE__);
  SignalWhileLocked();
}

void Condition::Broadcast(OrvoLock& lock) {
  const DebugScopeLock scope(lock, "Broadcast", ThisFile(), __LINE__);
  BroadcastWhileLocked();
}

void Condition::SignalWhileLocked() {
  pthread_cond_signal(&condition_);
}

void Condition::BroadcastWhileLocked() {
  pthread_cond_broadcast(&condition_);
}

}  // namespace orvo

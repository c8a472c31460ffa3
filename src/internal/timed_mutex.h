#ifndef ORVO_SRC_INTERNAL_TIMED_MUTEX_H_
#define ORVO_SRC_INTERNAL_TIMED_MUTEX_H_

#include <pthread.h>
#include <sched.h>

#include <cerrno>
#include <ctime>

#include "orvo/deadline.h"
#include "orvo/errors.h"
#include "orvo/format.h"

// clang's ThreadSanitizer and that of g++ 12 do not see a mutex taken with
// pthread_mutex_clocklock().
#if defined(__SANITIZE_THREAD__)
#define ORVO_POLL_TIMED_MUTEX_ 1
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define ORVO_POLL_TIMED_MUTEX_ 1
#endif
#endif

namespace orvo::internal {

inline int ClockLock(pthread_mutex_t* mutex, const timespec& deadline) {
#ifdef ORVO_POLL_TIMED_MUTEX_
  for (;;) {
    const int result = pthread_mutex_trylock(mutex);
    if (result != EBUSY) return result;
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    if (now.tv_sec > deadline.tv_sec ||
        (now.tv_sec == deadline.tv_sec && now.tv_nsec >= deadline.tv_nsec)) {
      return ETIMEDOUT;
    }
    sched_yield();
  }
#else
  return pthread_mutex_clocklock(mutex, CLOCK_MONOTONIC, &deadline);
#endif
}

/// Waits for a mutex until the deadline.
///
/// @return  Whether the mutex is now held.
/// @throws LockError  "pthread_mutex_clocklock failed with error N".
inline bool TryLockBefore(pthread_mutex_t* mutex, const Deadline& deadline) {
  const int result = ClockLock(mutex, deadline.GetAsTimespec());
  if (result == 0) return true;
  if (result == ETIMEDOUT) return false;
  throw LockError(
      orvo::format("pthread_mutex_clocklock failed with error %d", result));
}

}  // namespace orvo::internal

#endif  // ORVO_SRC_INTERNAL_TIMED_MUTEX_H_

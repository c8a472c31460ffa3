#ifndef ORVO_CONDITION_H_
#define ORVO_CONDITION_H_

/// @file
/// A POSIX condition variable for any lock of the library.
///
/// Each operation has two forms: the plain one takes the lock itself, the one
/// whose name ends in WhileLocked is for callers that hold the lock already.
/// As with any condition variable the state that is waited for has to be
/// tested again after each wake-up, because spurious ones count as wake-ups:
///
/// @code
/// // the waiting thread                  // the other thread
/// const orvo::ScopeLock scope(lock);     {
/// while (queue.empty()) {                  const orvo::ScopeLock scope(lock);
///   filled.WaitWhileLocked(lock);          queue.push_back(job);
/// }                                      }
/// Run(queue.front());                    filled.Signal(lock);
/// @endcode
///
/// Any number of threads may wait and signal at once.
///
/// A wait releases and retakes the mutex behind the lock's back. A DebugLock or
/// DebugRLock (debug_locks.h), given directly or through scope locks, learns of
/// it: the waiting thread does not count as its holder.
///
/// Kept on purpose: a Lock that owns a debug implementation does not survive a
/// wait that is signalled. The signalling thread takes and releases the lock
/// meanwhile, which clears the owner, so that the release after the wait throws
/// LockError and, in a scope lock or in Wait() itself, ends the process. An
/// RLock that owns one forgets its holder. Declare such locks as DebugLock or
/// DebugRLock.

#include <pthread.h>

#include <chrono>

#include "orvo/deadline.h"
#include "orvo/export.h"
#include "orvo/lock.h"
#include "orvo/thread_annotations.h"

namespace orvo {

/// A condition variable. Nothing here throws but what the lock itself throws.
class ORVO_EXPORT Condition {
 public:
  Condition();
  Condition(const Condition&) = delete;
  Condition& operator=(const Condition&) = delete;

  /// No thread may be waiting any more.
  ~Condition();

  /// Takes the lock, waits for one wake-up and releases the lock.
  ///
  /// The caller must not hold the lock, not even a recursive one, which would
  /// stay taken meanwhile. Nothing is tested in between: to wait for a state
  /// use WaitWhileLocked().
  void Wait(OrvoLock& lock) ORVO_EXCLUDES(lock);

  /// Waits for one wake-up; the lock is free meanwhile and held again after.
  void WaitWhileLocked(OrvoLock& lock) ORVO_REQUIRES(lock);

  /// Wait() with a time-out; see TimedWaitWhileLocked() for its length.
  ///
  /// @return  Whether the thread was woken.
  bool TimedWait(OrvoLock& lock, int seconds) ORVO_EXCLUDES(lock);

  /// WaitWhileLocked() with a time-out.
  ///
  /// The deadline is a whole second of the wall clock: the current second plus
  /// @p seconds. The wait therefore lasts up to one second less than asked
  /// for, and setting the clock shortens or lengthens it. WaitFor() waits in
  /// real time.
  ///
  /// @param seconds  0 and less are over at once.
  /// @return         Whether the thread was woken; false after the deadline
  ///                 and, with a line on the standard output, on any error.
  bool TimedWaitWhileLocked(OrvoLock& lock, int seconds) ORVO_REQUIRES(lock);

  /// @name Waits in real time
  /// For callers that hold the lock; it is free meanwhile and held again after.
  /// They end on the monotonic clock, to the nanosecond, unlike
  /// TimedWaitWhileLocked(). A length of 0 or less is over at once.
  ///
  /// With a predicate they wait until it is true, testing it with the lock held
  /// first of all and after each wake-up. An exception of its own passes
  /// through, with the lock held.
  ///
  /// @code
  /// const orvo::ScopeLock scope(lock);
  /// if (filled.WaitFor(lock, std::chrono::milliseconds(20),
  ///                    [&] { return !queue.empty(); })) {
  ///   Run(queue.front());
  /// }
  /// @endcode
  ///
  /// @return  Without a predicate whether the thread was woken; false after the
  ///          deadline and, with a line on the standard output, on any error.
  ///          With one whether it is true, be it after the deadline.
  /// @{

  /// Waits until then at most.
  template <typename Rep, typename Period>
  bool WaitFor(OrvoLock& lock, const std::chrono::duration<Rep, Period>& length)
      ORVO_REQUIRES(lock) {
    return WaitBefore(lock, Deadline::After(length));
  }
  template <typename Rep, typename Period, typename Predicate>
  bool WaitFor(OrvoLock& lock, const std::chrono::duration<Rep, Period>& length,
               Predicate predicate) ORVO_REQUIRES(lock) {
    return WaitBefore(lock, Deadline::After(length), predicate);
  }
  template <typename Duration>
  bool WaitUntil(
      OrvoLock& lock,
      const std::chrono::time_point<std::chrono::steady_clock, Duration>& time)
      ORVO_REQUIRES(lock) {
    return WaitBefore(lock, Deadline::At(time));
  }
  template <typename Duration, typename Predicate>
  bool WaitUntil(
      OrvoLock& lock,
      const std::chrono::time_point<std::chrono::steady_clock, Duration>& time,
      Predicate predicate) ORVO_REQUIRES(lock) {
    return WaitBefore(lock, Deadline::At(time), predicate);
  }
  /// @}

  /// WaitWhileLocked() until the predicate is true, which is tested with the
  /// lock held first of all and after each wake-up.
  ///
  /// @code
  /// filled.WaitUntilTrue(lock, [&] { return !queue.empty(); });
  /// @endcode
  template <typename Predicate>
  void WaitUntilTrue(OrvoLock& lock, Predicate predicate) ORVO_REQUIRES(lock) {
    while (!predicate()) WaitWhileLocked(lock);
  }

  /// Takes the lock, wakes one waiting thread and releases the lock.
  void Signal(OrvoLock& lock) ORVO_EXCLUDES(lock);

  /// Takes the lock, wakes all waiting threads and releases the lock.
  void Broadcast(OrvoLock& lock) ORVO_EXCLUDES(lock);

  /// Wakes one waiting thread.
  void SignalWhileLocked();

  /// Wakes all waiting threads.
  void BroadcastWhileLocked();

 private:
  class WaitBooks;

  bool WaitBefore(OrvoLock& lock, const Deadline& deadline) ORVO_REQUIRES(lock);

  template <typename Predicate>
  bool WaitBefore(OrvoLock& lock, const Deadline& deadline,
                  Predicate& predicate) ORVO_REQUIRES(lock) {
    while (!predicate()) {
      if (!WaitBefore(lock, deadline)) return predicate();
    }
    return true;
  }

  pthread_cond_t condition_;
};

}  // namespace orvo

#endif  // ORVO_CONDITION_H_

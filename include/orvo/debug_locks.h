#ifndef ORVO_DEBUG_LOCKS_H_
#define ORVO_DEBUG_LOCKS_H_

/// @file
/// Debug locks to declare in the place of Lock and RLock.
///
/// They report misuse as the debug implementations do (orvo_lock_debug.h), and
/// beyond a Lock that owns such an implementation they pass on the places from
/// which they are taken, survive a wait on a Condition, and tell who holds
/// them. The declaration is all that a program has to change:
///
/// @code
/// orvo::DebugLock lock("orders");  // was: orvo::Lock lock("orders");
/// orvo::Condition changed;
///
/// const orvo::DebugScopeLock scope(lock, "TakeOrder", __FILE__, __LINE__);
/// while (orders.empty()) changed.WaitWhileLocked(lock);
/// lock.Describe();  // "Lock orders is held by cook, depth 1, last announced
///                   // from TakeOrder --> shop/orders.cpp:62."
/// @endcode
///
/// Any thread may use a lock at any time; moving or destroying a handle while
/// another thread uses it is undefined.

#include <pthread.h>

#include <chrono>
#include <memory>
#include <string>
#include <thread>

#include "orvo/deadline.h"
#include "orvo/export.h"
#include "orvo/lock.h"
#include "orvo/orvo_lock_debug.h"
#include "orvo/thread_annotations.h"

namespace orvo {

/// A Lock that keeps books. Not recursive: a holder that takes it again gets an
/// error in place of a wait without end.
///
/// A moved-from handle holds no implementation; only destroying it or
/// assigning to it is defined.
class ORVO_EXPORT DebugLock : public OrvoLock {
 public:
  /// @param name  Shown in the reports.
  explicit DebugLock(const std::string& name);

  /// A lock with an implementation of the caller's choice.
  ///
  /// @throws std::invalid_argument  @p impl is null.
  explicit DebugLock(std::unique_ptr<DebugLockImpl_> impl);

  /// @{

  /// Takes the implementation over.
  DebugLock(DebugLock&& other) noexcept;
  DebugLock& operator=(DebugLock&& other) noexcept;
  /// @}
  ~DebugLock() override;

  /// Waits for the lock, printing a banner now and then; see
  /// DebugLockImpl_::lock().
  ///
  /// @throws std::runtime_error  This thread holds the lock; its stack trace
  ///                             has been printed.
  void lock() ORVO_ACQUIRE() override;

  /// @throws LockError  Another thread holds the lock, or none.
  void unlock() ORVO_RELEASE() override;

  /// Prints a banner if the lock is held.
  bool try_lock() ORVO_TRY_ACQUIRE(true) override;

  /// Polls for the lock, in silence; see LockImpl_::TimedLock() for what the
  /// time means and what is thrown.
  bool TimedLock(double seconds) ORVO_TRY_ACQUIRE(true);

  /// @name Waits in real time
  /// On the monotonic clock, at once where the lock is free. A length of 0 or
  /// less makes one attempt.
  /// Nothing is printed.
  ///
  /// @return  Whether the lock is now held.
  /// @throws LockError  "pthread_mutex_clocklock failed with error N".
  /// @{

  /// Waits until then at most.
  template <typename Rep, typename Period>
  bool TryLockFor(const std::chrono::duration<Rep, Period>& length)
      ORVO_TRY_ACQUIRE(true) {
    return TryLockBefore(Deadline::After(length));
  }
  template <typename Duration>
  bool TryLockUntil(
      const std::chrono::time_point<std::chrono::steady_clock, Duration>& time)
      ORVO_TRY_ACQUIRE(true) {
    return TryLockBefore(Deadline::At(time));
  }
  /// @}

  pthread_mutex_t* get_mutex() override;
  void SetOwner(const std::thread::id& owner) override;

  /// lock(), after this place has become the thread's pending reference.
  ///
  /// @throws std::runtime_error  This thread holds the lock.
  void LockWithFilenameAndLineNumber(const std::string& function,
                                     const std::string& file, int line)
      ORVO_ACQUIRE() override;

  void SetPendingLockingCodeReference(const std::string& function,
                                      const std::string& file,
                                      int line) override;

  /// See DebugLockImpl_::SetWaitWillUnlock(). A Condition makes these
  /// announcements itself.
  void SetWaitWillUnlock(bool waitWillUnlock, const std::string& file,
                         int line) override;

  void ThrowIfOwnedByThisThread() override;

  /// @name Inspection
  /// See DebugLockImpl_. A thread in a wait on a Condition is no holder.
  /// @{

  /// As the member of this name of DebugLockImpl_.
  std::thread::id GetOwner() const;
  std::string GetOwnerName() const;
  int GetDepth() const;
  LockingCodeReference GetPendingReference(
      const std::thread::id& threadId) const;
  std::string Describe() const;
  /// @}

 protected:
  std::unique_ptr<DebugLockImpl_> impl_;  ///< Never null but after a move.

 private:
  friend class Condition;

  bool TryLockBefore(const Deadline& deadline) ORVO_TRY_ACQUIRE(true);

  // Around a wait that releases the mutex behind the lock's back: the calling
  // thread, which holds the lock once, is no holder in between.
  void BeginWait(const std::string& file, int line);
  void EndWait(const std::string& file, int line);
};

/// An RLock that keeps books: its holder may take it again.
///
/// A wait on a Condition releases the lock only once, so that it needs a holder
/// that has taken it exactly once; any other ends the process in an assertion
/// in place of a wait without end.
///
/// @code
/// orvo::DebugRLock tree("tree");
/// tree.lock();
/// tree.lock();
/// tree.GetDepth();  // 2
/// @endcode
class ORVO_EXPORT DebugRLock : public DebugLock {
 public:
  /// @param name  Shown in the reports.
  explicit DebugRLock(const std::string& name);

  /// A recursive lock with an implementation of the caller's choice.
  ///
  /// @throws std::invalid_argument  @p impl is null.
  explicit DebugRLock(std::unique_ptr<DebugRLockImpl_> impl);

  /// @{
  /// Takes the implementation over.
  DebugRLock(DebugRLock&& other) noexcept;
  DebugRLock& operator=(DebugRLock&& other) noexcept;
  /// @}
  ~DebugRLock() override;

  /// Waits for the lock unless this thread holds it; see
  /// DebugRLockImpl_::lock().
  void lock() ORVO_ACQUIRE() override;

  /// lock(), after this place has become the thread's pending reference.
  void LockWithFilenameAndLineNumber(const std::string& function,
                                     const std::string& file, int line)
      ORVO_ACQUIRE() override;

  /// Kept on purpose: always 0, as that of RLock; GetDepth() counts.
  int count();
};

}  // namespace orvo

#endif  // ORVO_DEBUG_LOCKS_H_

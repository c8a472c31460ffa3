#ifndef ORVO_LOCK_H_
#define ORVO_LOCK_H_

/// @file
/// The lock interface and the plain locks: a POSIX mutex with a name.
///
/// Lock and RLock are the handles that programs declare. A handle owns an
/// implementation; give it a debug implementation to learn who holds the lock:
///
/// @code
/// orvo::Lock totals("totals");                      // a plain mutex
/// orvo::RLock tree("tree");                         // may be taken repeatedly
/// orvo::Lock watched(std::make_unique<orvo::DebugLockImpl_>("watched"));
/// @endcode
///
/// Where debug locks meet a Condition, declare DebugLock or DebugRLock
/// (debug_locks.h) in place of Lock or RLock.
///
/// The handles are standard Lockables: std::lock_guard, std::unique_lock,
/// std::scoped_lock and std::condition_variable_any work with them.
///
/// @code
/// const std::scoped_lock both(totals, tree);
/// if (lock.TryLockFor(std::chrono::milliseconds(20))) lock.unlock();
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
#include "orvo/errors.h"  // IWYU pragma: export
#include "orvo/export.h"
#include "orvo/thread_annotations.h"

namespace orvo {

/// What every lock-like object offers: the handles and the scope locks.
class ORVO_EXPORT ORVO_LOCKABLE OrvoLock {
 public:
  /// Waits until the lock is free and takes it.
  ///
  /// @throws std::runtime_error  This thread holds the lock already, a debug
  ///                             lock that is not recursive.
  /// @throws LockError           The system reports an error to a debug lock.
  virtual void lock() ORVO_ACQUIRE() = 0;

  /// Releases the lock.
  ///
  /// @throws LockError  This thread does not hold the lock, a debug lock.
  virtual void unlock() ORVO_RELEASE() = 0;

  /// Takes the lock if it is free.
  ///
  /// @return  Whether the lock is now held.
  /// @throws LockError  The system reports anything but "free" or "held".
  virtual bool try_lock() ORVO_TRY_ACQUIRE(true) = 0;

  virtual ~OrvoLock();

  /// The POSIX mutex behind the lock; owned by the lock.
  virtual pthread_mutex_t* get_mutex() = 0;

  /// Tells a debug lock that the thread with this id holds it now.
  virtual void SetOwner(const std::thread::id& owner) = 0;

  /// lock(), naming the place from which the lock is taken.
  virtual void LockWithFilenameAndLineNumber(const std::string& function,
                                             const std::string& file, int line)
      ORVO_ACQUIRE() = 0;

  /// Announces the place from which this thread is about to take the lock.
  virtual void SetPendingLockingCodeReference(const std::string& function,
                                              const std::string& file,
                                              int line) = 0;

  /// Announces to a debug lock that a wait is about to release its mutex
  /// (true) or has taken it again (false).
  virtual void SetWaitWillUnlock(bool waitWillUnlock, const std::string& file,
                                 int line) = 0;

  /// Throws if this thread already holds a debug lock; by default does nothing.
  virtual void ThrowIfOwnedByThisThread();
};

/// A named POSIX mutex: what a Lock owns, and the base of the debug locks.
class ORVO_EXPORT LockImpl_ {
 public:
  /// @param name  Used in the reports of debug locks only.
  explicit LockImpl_(const std::string& name);

  /// For derived classes that initialise mutex_ themselves; the flag is
  /// ignored.
  LockImpl_(const std::string& name, bool);

  LockImpl_(const LockImpl_&) = delete;
  LockImpl_& operator=(const LockImpl_&) = delete;
  virtual ~LockImpl_();

  /// Waits for the mutex; an error of the system is ignored.
  virtual void lock();

  /// Releases the mutex; an error of the system is ignored.
  virtual void unlock();

  /// @return  Whether the mutex was free and is now held.
  /// @throws LockError  "pthread_mutex_trylock failed with error N".
  virtual bool try_lock();

  /// Polls the mutex until it is free or the time is up.
  ///
  /// Between two attempts the thread asks to sleep 2 microseconds; only these
  /// requests count, so that the real wait is longer. Kept on purpose: the
  /// budget is cut to 32 bits of nanoseconds, so that 5 seconds mean 0.705
  /// seconds and a negative time a long one (the last 15 nanoseconds below
  /// 2^32 never end while the lock is held), and after a sleep that a signal
  /// interrupts each later one asks for the remainder of that sleep only. A
  /// time beyond 64 bits of nanoseconds counts as 0.
  /// For waits in real time see Lock::TryLockFor().
  ///
  /// @param seconds  0 still makes one attempt and one sleep.
  /// @return         Whether the mutex is now held.
  /// @throws LockError  "pthread_mutex_trylock failed with error N".
  virtual bool TimedLock(double seconds);

  /// Does nothing here; debug locks keep books.
  virtual void SetOwner(const std::thread::id& owner);

  /// Kept on purpose: always 0, also in the recursive implementations.
  virtual int count();

  /// Does nothing here; debug locks check the announcement.
  virtual void SetWaitWillUnlock(bool waitWillUnlock, const std::string& file,
                                 int line);

  /// lock(); the place is ignored here.
  virtual void LockWithFilenameAndLineNumber(const std::string& function,
                                             const std::string& file, int line);

  /// Does nothing here; debug locks record the place.
  virtual void SetPendingLockingCodeReference(const std::string& function,
                                              const std::string& file,
                                              int line);

  /// Does nothing here; debug locks know their owner.
  virtual void ThrowIfOwnedByThisThread();

  /// The mutex itself, owned by this object.
  pthread_mutex_t* get_mutex();

 protected:
  /// Initialises mutex_ so that its holder may take it again.
  void InitializeRecursiveMutex();

  pthread_mutex_t mutex_;  ///< The real lock.
  std::string name_;       ///< The lock's name, for reports.
};

/// A named recursive POSIX mutex: what an RLock owns.
class ORVO_EXPORT RLockImpl_ : public LockImpl_ {
 public:
  /// @param name  Used in the reports of debug locks only.
  explicit RLockImpl_(const std::string& name);
  ~RLockImpl_() override;
};

/// A mutex with a name. Not recursive: taking it twice in one thread hangs.
///
/// A moved-from handle holds no implementation; only destroying it or
/// assigning to it is defined.
///
/// @code
/// orvo::Lock lock("queue");
/// lock.lock();
/// lock.unlock();
/// @endcode
class ORVO_EXPORT Lock : public OrvoLock {
 public:
  /// A plain lock.
  explicit Lock(const std::string& name);

  /// A lock with an implementation of the caller's choice.
  ///
  /// Kept on purpose: with a debug implementation a wait on a Condition that is
  /// signalled leaves the lock without an owner, which ends the process at the
  /// next release; DebugLock survives it, see condition.h.
  ///
  /// @throws std::invalid_argument  @p impl is null.
  explicit Lock(std::unique_ptr<LockImpl_> impl);

  /// @{

  /// Takes the implementation over.
  Lock(Lock&& other) noexcept;
  Lock& operator=(Lock&& other) noexcept;
  /// @}
  ~Lock() override;

  void lock() ORVO_ACQUIRE() override;
  void unlock() ORVO_RELEASE() override;
  bool try_lock() ORVO_TRY_ACQUIRE(true) override;

  /// Polls for the lock; see LockImpl_::TimedLock() for what the time means and
  /// what is thrown.
  ///
  /// Kept on purpose: a debug implementation records no owner, so that its
  /// unlock() throws. TryLockFor() records one.
  bool TimedLock(double seconds) ORVO_TRY_ACQUIRE(true);

  /// @name Waits in real time
  /// On the monotonic clock, at once where the lock is free. A length of 0 or
  /// less makes one attempt.
  ///
  /// A debug implementation records its new owner. Any other is not asked: it
  /// is its mutex that is taken.
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

  /// Kept on purpose: the same as lock(); the place is not passed on. DebugLock
  /// passes it on.
  void LockWithFilenameAndLineNumber(const std::string& function,
                                     const std::string& file, int line)
      ORVO_ACQUIRE() override;

  /// Kept on purpose: does nothing, whatever the implementation. DebugLock
  /// passes it on.
  void SetPendingLockingCodeReference(const std::string& function,
                                      const std::string& file,
                                      int line) override;

  /// Kept on purpose: does nothing, whatever the implementation. DebugLock
  /// passes it on.
  void SetWaitWillUnlock(bool waitWillUnlock, const std::string& file,
                         int line) override;

  void ThrowIfOwnedByThisThread() override;

 protected:
  std::unique_ptr<LockImpl_> impl_;  ///< Never null but after a move.

 private:
  bool TryLockBefore(const Deadline& deadline) ORVO_TRY_ACQUIRE(true);
};

/// A mutex with a name that its holder may take again; each lock() needs an
/// unlock() of its own.
class ORVO_EXPORT RLock : public Lock {
 public:
  /// A plain recursive lock.
  explicit RLock(const std::string& name);

  /// A recursive lock with an implementation of the caller's choice.
  ///
  /// @throws std::invalid_argument  @p impl is null.
  explicit RLock(std::unique_ptr<LockImpl_> impl);

  /// @{
  /// Takes the implementation over.
  RLock(RLock&& other) noexcept;
  RLock& operator=(RLock&& other) noexcept;
  /// @}
  ~RLock() override;

  /// Kept on purpose: always 0, however often the lock is held;
  /// DebugRLock::GetDepth() counts.
  int count();
};

}  // namespace orvo

#endif  // ORVO_LOCK_H_

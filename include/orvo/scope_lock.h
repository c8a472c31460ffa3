#ifndef ORVO_SCOPE_LOCK_H_
#define ORVO_SCOPE_LOCK_H_

/// @file
/// Locks held for the length of a block.
///
/// A scope lock takes a lock when it is made and releases it at the end of the
/// block. It can be released and taken again in between, and it is a lock
/// itself, so that it fits wherever an OrvoLock is asked for:
///
/// @code
/// orvo::Lock lock("totals");
/// {
///   orvo::ScopeLock scope(lock);
///   ++total;
///   scope.unlock();
///   Report();  // without the lock
///   scope.lock();
///   ++reports;
/// }  // released here
/// @endcode
///
/// A scope lock borrows the lock, which must outlive it, and belongs to the
/// thread that made it.

#include <pthread.h>

#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

#include "orvo/export.h"
#include "orvo/lock.h"
#include "orvo/thread_annotations.h"

namespace orvo {

class Condition;

/// What all scope locks have in common.
///
/// An acquisition that fails with an exception leaves the scope lock released.
class ORVO_EXPORT ORVO_SCOPED_LOCKABLE ScopeLockBase : public OrvoLock {
 public:
  /// The lock counts as held: it is not taken here, but released at the end.
  ORVO_EXPORT_INLINE explicit ScopeLockBase(OrvoLock& lock)
      ORVO_ACQUIRE(lock) ORVO_NO_THREAD_SAFETY_ANALYSIS : held_(&lock) {}

  /// A scope lock is a lock like any other: this is no copy.
  ORVO_EXPORT_INLINE explicit ScopeLockBase(ScopeLockBase& lock)
      ORVO_ACQUIRE(lock) ORVO_NO_THREAD_SAFETY_ANALYSIS : held_(&lock) {}

  ScopeLockBase(const ScopeLockBase&) = delete;
  ScopeLockBase& operator=(const ScopeLockBase&) = delete;

  /// Releases the lock if it is held. An exception on the way ends the process.
  ORVO_EXPORT_INLINE ~ScopeLockBase()
      ORVO_RELEASE() ORVO_NO_THREAD_SAFETY_ANALYSIS override {
    ScopeLockBase::unlock();
  }

  /// Takes the lock again. Undefined unless it was released before.
  ORVO_EXPORT_INLINE void lock()
      ORVO_ACQUIRE() ORVO_NO_THREAD_SAFETY_ANALYSIS override {
    Hold();
    AcquireOrRelease([this] { Acquire(); });
  }

  /// Releases the lock; nothing happens if it is released already.
  ORVO_EXPORT_INLINE void unlock()
      ORVO_RELEASE() ORVO_NO_THREAD_SAFETY_ANALYSIS override {
    if (held_ == nullptr) return;
    held_->unlock();
    Release();
  }

  /// Takes the lock again if it is free. Undefined unless it was released
  /// before.
  ORVO_EXPORT_INLINE bool try_lock()
      ORVO_TRY_ACQUIRE(true) ORVO_NO_THREAD_SAFETY_ANALYSIS override {
    Hold();
    AcquireOrRelease([this]() ORVO_NO_THREAD_SAFETY_ANALYSIS {
      if (!held_->try_lock()) Release();
    });
    return held_ != nullptr;
  }

  /// @throws std::logic_error  The lock is released.
  ORVO_EXPORT_INLINE pthread_mutex_t* get_mutex() override {
    return HeldLock().get_mutex();
  }

  /// @throws std::logic_error  The lock is released.
  ORVO_EXPORT_INLINE void SetOwner(const std::thread::id& owner) override {
    HeldLock().SetOwner(owner);
  }

  /// @throws std::logic_error  Always: a DebugScopeLock knows its place.
  ORVO_EXPORT_INLINE void LockWithFilenameAndLineNumber(const std::string&,
                                                        const std::string&,
                                                        int) override {
    ThrowNotForScopeLocks();
  }

  /// @throws std::logic_error  Always: a DebugScopeLock knows its place.
  ORVO_EXPORT_INLINE void SetPendingLockingCodeReference(const std::string&,
                                                         const std::string&,
                                                         int) override {
    ThrowNotForScopeLocks();
  }

  /// Passes the announcement on. Undefined while released.
  ORVO_EXPORT_INLINE void SetWaitWillUnlock(bool waitWillUnlock,
                                            const std::string& file,
                                            int line) override {
    held_->SetWaitWillUnlock(waitWillUnlock, file, line);
  }

  /// How this kind of scope lock takes its lock: here with lock().
  ORVO_EXPORT_INLINE virtual void Acquire() ORVO_NO_THREAD_SAFETY_ANALYSIS {
    held_->lock();
  }

 protected:
  /// Calls @p acquire; if it throws, the lock counts as released.
  template <typename Callable>
  void AcquireOrRelease(Callable acquire) {
    try {
      acquire();
    } catch (...) {
      Release();
      throw;
    }
  }

  /// The lock while it is held; Acquire() takes this one.
  OrvoLock* held() { return held_; }

 private:
  friend class Condition;  // keeps the books of debug locks behind scope locks

  void Hold() { held_ = std::exchange(released_, nullptr); }
  void Release() { released_ = std::exchange(held_, nullptr); }

  OrvoLock& HeldLock() {
    if (held_ == nullptr) {
      throw std::logic_error("ScopeLock has already been released");
    }
    return *held_;
  }

  [[noreturn]] static void ThrowNotForScopeLocks() {
    throw std::logic_error(
        "This method is required by the base class, but should not be used "
        "with ScopeLock.");
  }

  OrvoLock* held_;                // null while released
  OrvoLock* released_ = nullptr;  // null while held
};

/// Holds a lock for the length of a block.
///
/// @code
/// const orvo::ScopeLock scope(lock);
/// @endcode
class ORVO_EXPORT ORVO_SCOPED_LOCKABLE ScopeLock : public ScopeLockBase {
 public:
  /// Takes the lock with lock().
  ORVO_EXPORT_INLINE explicit ScopeLock(OrvoLock& lock)
      ORVO_ACQUIRE(lock) ORVO_NO_THREAD_SAFETY_ANALYSIS : ScopeLockBase(lock) {
    AcquireOrRelease([this] { ScopeLock::Acquire(); });
  }

  /// Locks through another scope lock, which has to be released.
  ORVO_EXPORT_INLINE explicit ScopeLock(ScopeLock& lock)
      ORVO_ACQUIRE(lock) ORVO_NO_THREAD_SAFETY_ANALYSIS
      : ScopeLock(static_cast<OrvoLock&>(lock)) {}

  ScopeLock(const ScopeLock&) = delete;
  ScopeLock& operator=(const ScopeLock&) = delete;
  ORVO_EXPORT_INLINE ~ScopeLock() ORVO_RELEASE() override = default;
};

/// Holds a lock for the length of a block and tells it from where.
///
/// @code
/// const orvo::DebugScopeLock scope(lock, "AddOrder", __FILE__, __LINE__);
/// @endcode
class ORVO_EXPORT ORVO_SCOPED_LOCKABLE DebugScopeLock : public ScopeLockBase {
 public:
  /// Takes the lock with LockWithFilenameAndLineNumber(), as does each later
  /// lock().
  ///
  /// @param function  Name of the function that asks for the lock.
  /// @param file      Its source file, usually __FILE__.
  /// @param line      The line in it, usually __LINE__.
  ORVO_EXPORT_INLINE DebugScopeLock(OrvoLock& lock, const std::string& function,
                                    const std::string& file, int line)
      ORVO_ACQUIRE(lock) ORVO_NO_THREAD_SAFETY_ANALYSIS : ScopeLockBase(lock),
                                                          line_(line) {
    // A lock that is not held yet must not be released when a copy fails.
    AcquireOrRelease([&] {
      function_ = function;
      file_ = file;
      DebugScopeLock::Acquire();
    });
  }

  DebugScopeLock(const DebugScopeLock&) = delete;
  DebugScopeLock& operator=(const DebugScopeLock&) = delete;
  ORVO_EXPORT_INLINE ~DebugScopeLock() ORVO_RELEASE() override = default;

  /// Takes the lock, naming function, file and line.
  ORVO_EXPORT_INLINE void Acquire() ORVO_NO_THREAD_SAFETY_ANALYSIS override {
    held()->LockWithFilenameAndLineNumber(function_, file_, line_);
  }

 private:
  std::string function_;
  std::string file_;
  int line_;
};

}  // namespace orvo

#endif  // ORVO_SCOPE_LOCK_H_

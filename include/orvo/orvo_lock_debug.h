#ifndef ORVO_ORVO_LOCK_DEBUG_H_
#define ORVO_ORVO_LOCK_DEBUG_H_

/// @file
/// Locks that know who holds them and report what goes wrong.
///
/// A debug lock is an implementation for the handles Lock and RLock:
///
/// @code
/// orvo::Lock orders(std::make_unique<orvo::DebugLockImpl_>("orders"));
/// orvo::RLock tree(std::make_unique<orvo::DebugRLockImpl_>("tree"));
/// @endcode
///
/// DebugLock and DebugRLock (debug_locks.h) own one and also work with
/// conditions.
///
/// A thread that waits in vain says so on the standard output and keeps
/// trying; a release by the wrong thread is an exception; books that do not
/// add up end the process in an assertion. Where assertions are compiled out, a
/// wait that is announced wrongly prints "Would have thrown." and why, and the
/// rest passes without a word. Give threads names (thread_names.h), because the
/// reports show them.
///
/// Any thread may use a debug lock at any time. Its books have a mutex of their
/// own, which is never held while a thread waits for the lock itself.

#include <atomic>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "orvo/export.h"
#include "orvo/lock.h"

namespace orvo {

class DebugLockImpl_;

/// @cond
namespace internal {
void RecordAcquisition(DebugLockImpl_& impl);
}  // namespace internal
/// @endcond

/// Names the place in the source from which a lock was taken.
class ORVO_EXPORT LockingCodeReference {
 public:
  /// No reference.
  LockingCodeReference();

  /// @param function  Name of the function that asks for the lock.
  /// @param file      Its source file, usually __FILE__.
  /// @param line      The line in it, usually __LINE__.
  LockingCodeReference(const std::string& function, const std::string& file,
                       int line);

  /// @{
  /// A value as any other.
  LockingCodeReference(const LockingCodeReference& other);
  LockingCodeReference(LockingCodeReference&& other) noexcept;
  LockingCodeReference& operator=(const LockingCodeReference& other);
  LockingCodeReference& operator=(LockingCodeReference&& other) noexcept;
  /// @}
  ~LockingCodeReference();

  /// Whether a function is named; file and line alone are no reference.
  bool HasReference() const;

  /// Function, file and line, for example "AddOrder --> shop/orders.cpp:62".
  ///
  /// @return  Empty without a reference. The file is shown without the
  ///          leading components that it shares with the directory that
  ///          ORVO_DEVELOPMENT_ROOT named when the library was built, also
  ///          where it lies elsewhere; see path::relpath().
  std::string GetAsString() const;

 private:
  std::string function_;
  std::string file_;
  int line_ = 0;
};

/// A mutex that knows its owner.
///
/// @code
/// orvo::Lock lock(std::make_unique<orvo::DebugLockImpl_>("orders"));
/// lock.lock();
/// std::thread([&] {
///   try {
///     lock.unlock();
///   } catch (const orvo::LockError& error) {
///     orvo::CoutBuffer() << error.what() << orvo::endl;
///   }
/// }).join();  // prints "Unnamed thread tried to release lock orders without
///             // first acquiring it."
/// lock.unlock();
/// @endcode
///
/// TimedLock() is that of the base and, called by a program, records no owner.
class ORVO_EXPORT DebugLockImpl_ : public LockImpl_ {
 public:
  /// @param name  Shown in the reports.
  explicit DebugLockImpl_(const std::string& name);

  /// For derived classes that initialise mutex_ themselves; the flag is
  /// ignored.
  DebugLockImpl_(const std::string& name, bool);

  ~DebugLockImpl_() override;

  /// Waits for the mutex, however long it takes, and prints a banner whenever
  /// 0.7 seconds of requested sleep have passed. The sleeps are so short that
  /// on Linux with its default timer slack this takes 20 to 30 seconds.
  ///
  /// @throws LockError  "pthread_mutex_trylock failed with error N".
  void lock() override;

  /// Gives the lock up.
  ///
  /// @throws LockError  Another thread holds it, or none.
  void unlock() override;

  /// Prints a banner if the lock is held.
  bool try_lock() override;

  /// Hands the books, not the mutex, over to the thread with this id; the
  /// default id means that nobody holds the lock.
  void SetOwner(const std::thread::id& owner) override;

  /// Announces that a wait is about to release the mutex (true) or has taken
  /// it again (false). Asserts that the calling thread holds the lock and has
  /// not announced a wait yet, or that nobody holds it and it has.
  ///
  /// Kept on purpose: an announcement of true leaves the thread the owner, so
  /// that one of false only fits after unlock() or SetOwner() has cleared it.
  void SetWaitWillUnlock(bool waitWillUnlock, const std::string& file,
                         int line) override;

  /// SetPendingLockingCodeReference(), then lock().
  void LockWithFilenameAndLineNumber(const std::string& function,
                                     const std::string& file,
                                     int line) override;

  /// Records the place from which this thread is about to take the lock.
  void SetPendingLockingCodeReference(const std::string& function,
                                      const std::string& file,
                                      int line) override;

  /// Call it before lock() to turn a thread that would wait for itself into an
  /// error: prints the stack trace of a thread that already holds the lock.
  ///
  /// @throws std::runtime_error  This thread holds the lock.
  void ThrowIfOwnedByThisThread() override;

  /// Does nothing here; recursive locks set the calling thread's count.
  virtual void SetCount(int count);

  /// Whether the thread with this id has announced a wait.
  bool GetWaitWillUnlock(const std::thread::id& threadId);

  /// @name Inspection
  /// What the books say at this moment; unless the calling thread holds the
  /// lock, another one may change it at once. Nothing is changed or printed.
  /// @{

  /// The holder, or the default id.
  std::thread::id GetOwner() const;

  /// The holder's name, see thread_names.h; empty if nobody holds the lock.
  std::string GetOwnerName() const;

  /// How often the holder has taken the lock: at most 1 unless the lock is
  /// recursive, 0 if nobody holds it.
  int GetDepth() const;

  /// The place that the thread with this id has announced last; no reference if
  /// it has announced none.
  LockingCodeReference GetPendingReference(
      const std::thread::id& threadId) const;

  /// All of the above in one line, without an end of line, for example "Lock
  /// orders is held by cook, depth 1, last announced from AddOrder -->
  /// shop/orders.cpp:62." or "Lock orders is free.".
  ///
  /// @return  The place is left out if the holder has announced none. Control
  ///          characters in names become blanks.
  std::string Describe() const;
  /// @}

 protected:
  /// Guards the books of this class and of derived ones. Recursive, because
  /// checks call other guarded members.
  mutable std::recursive_mutex books_mutex_;

  /// The holder, or the default id. Written under books_mutex_; atomic, because
  /// ThrowIfOwnedByThisThread() reads it without.
  std::atomic<std::thread::id> owner_;

 private:
  using CodeReferences = std::map<std::thread::id, LockingCodeReference>;

  // All guarded by books_mutex_. Kept on purpose: two maps that nothing uses
  // yet hold their place in the layout.
  std::map<std::thread::id, std::vector<LockingCodeReference>> held_references_;
  CodeReferences pending_references_;
  CodeReferences waiting_references_;
  std::map<std::thread::id, bool> wait_will_unlock_;
};

/// A recursive mutex that knows its owner and how often each thread holds it.
///
/// @code
/// orvo::RLock lock(std::make_unique<orvo::DebugRLockImpl_>("tree"));
/// lock.lock();
/// lock.lock();
/// lock.unlock();
/// lock.unlock();
/// lock.unlock();  // LockError: "Unnamed thread tried to release lock tree
///                 // more times than it was acquired."
/// @endcode
class ORVO_EXPORT DebugRLockImpl_ : public DebugLockImpl_ {
 public:
  /// @param name  Shown in the reports.
  explicit DebugRLockImpl_(const std::string& name);
  ~DebugRLockImpl_() override;

  /// As DebugLockImpl_::lock(), but another lock() of the holder succeeds at
  /// once, and a list of the other threads that still have a count follows each
  /// banner.
  ///
  /// @throws LockError  "pthread_mutex_trylock failed with error N".
  void lock() override;

  /// Gives up one lock() of this thread.
  ///
  /// @throws LockError  This thread has released as often as it has acquired.
  void unlock() override;

  /// Prints a banner and a list as lock() does if another thread holds the
  /// lock.
  bool try_lock() override;

  /// Hands the holder's whole count over to the thread with this id. Asserts
  /// that there is a holder.
  void SetOwner(const std::thread::id& owner) override;

  /// As DebugLockImpl_::SetWaitWillUnlock(); an announcement of true also
  /// asserts that this thread holds the lock exactly once. The count is 0 for
  /// the length of the wait.
  void SetWaitWillUnlock(bool waitWillUnlock, const std::string& file,
                         int line) override;

  /// Sets the calling thread's count. Takes no lock: for callers that hold
  /// the mutex of the books.
  void SetCount(int count) override;

  /// Counts one acquisition more.
  ///
  /// @return  The new count.
  int IncrementCount(const std::thread::id& threadId);

  /// Counts one acquisition less. Asserts that there is one.
  ///
  /// @return  The new count.
  int DecrementCount(const std::thread::id& threadId);

  /// How often the thread with this id holds the lock.
  int GetCount(const std::thread::id& threadId);

  /// Gives the thread with this id a count of 0 unless it has one. Takes no
  /// lock: for callers that hold the mutex of the books.
  void InitializeCountIfNeeded(const std::thread::id& threadId);

  /// Prints the count of each thread but @p threadId that is not 0.
  ///
  /// Kept on purpose: negative counts are listed too, and no thread is named.
  void PrintAllCountsGreaterThanZero(const std::thread::id& threadId);

 private:
  // Writes down that a thread has taken the mutex.
  void CountAcquisition(const std::thread::id& threadId);

  // Prints the banner of a lock in other hands and the list that follows it.
  void PrintContention();

  friend void internal::RecordAcquisition(DebugLockImpl_& impl);
  friend class DebugLockImpl_;  // whose GetDepth() looks up the holder's count

  // Entries are never erased. Guarded by books_mutex_.
  std::map<std::thread::id, int> counts_;
};

}  // namespace orvo

#endif  // ORVO_ORVO_LOCK_DEBUG_H_

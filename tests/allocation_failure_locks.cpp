// The exported functions of locks and conditions, each with what it does when
// memory runs out. Whatever happens, the lock is as free or as held afterwards
// as its holder believes, and usable.
#include <pthread.h>

#include <cerrno>
#include <chrono>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "orvo/orvo.h"
#include "tests/support/allocation_sweep.h"
#include "tests/support/debug_locks.h"
#include "tests/support/holder.h"
#include "tests/support/interpose/calls.h"
#include "tests/support/is_free.h"

namespace orvo_test {
namespace {

using Cases = std::vector<AllocationCase>;
using DebugImpl = OpenBooks<orvo::DebugLockImpl_>;
using DebugRImpl = OpenBooks<orvo::DebugRLockImpl_>;

constexpr auto kNeverMatters = OutOfMemory::kNeverMatters;
constexpr auto kThrows = OutOfMemory::kThrows;
constexpr auto kEnds = OutOfMemory::kEnds;

// No string holds it without memory of its own.
const std::string kLong = "a text that takes more room than a string has";

// Takes and releases a lock as its user would.
template <typename Lock>
bool IsUsable(Lock& lock) {
  lock.lock();
  const bool held = !IsFree(lock);
  lock.unlock();
  return held && IsFree(lock);
}

// A case that makes a lock and lets it go again.
template <typename Lock>
std::function<void(Attempt&)> Making() {
  return Just([] {
    Lock lock(kLong);
    lock.lock();
    lock.unlock();
  });
}

// A case about a lock that is free before and after the call.
template <typename Lock, typename Call>
std::function<void(Attempt&)> WithFree(Call call) {
  return [call](Attempt& attempt) {
    Lock lock(kLong);
    attempt([&] { call(lock); });
    attempt.Check(IsFree(lock));
    attempt.Check(IsUsable(lock));
  };
}

// The same for a lock that this thread holds before and after.
template <typename Lock, typename Call>
std::function<void(Attempt&)> WithHeld(Call call) {
  return [call](Attempt& attempt) {
    Lock lock(kLong);
    lock.lock();
    attempt([&] { call(lock); });
    attempt.Check(!IsFree(lock));
    lock.unlock();
    attempt.Check(IsFree(lock));
    attempt.Check(IsUsable(lock));
  };
}

// The mutex of a lock without its books.
class BareMutex {
 public:
  explicit BareMutex(pthread_mutex_t* mutex) : mutex_(mutex) {}
  void lock() { pthread_mutex_lock(mutex_); }
  void unlock() { pthread_mutex_unlock(mutex_); }

 private:
  pthread_mutex_t* mutex_;
};

// The same for a lock that another thread holds until more than one banner is
// due, without the time that this takes.
template <typename Lock, typename Call>
std::function<void(Attempt&)> WithContended(Call call) {
  return [call](Attempt& attempt) {
    Lock lock(kLong);
    BareMutex mutex(lock.get_mutex());
    {
      Holder<BareMutex> holder(mutex);
      int polls = 0;
      const ScopedHook hook(nanosleep_calls, [&](const timespec*, timespec*) {
        if (++polls == kPollsPerBanner + 10) holder.Release();
        return 0;
      });
      attempt([&] { call(lock); });
    }
    attempt.Check(IsFree(lock));
    attempt.Check(IsUsable(lock));
  };
}

template <typename Lock>
void TakeAndRelease(Lock& lock) {
  lock.lock();
  lock.unlock();
}

template <typename Lock>
void TryToTake(Lock& lock) {
  if (lock.try_lock()) lock.unlock();
}

// Is refused where nobody holds the lock.
template <typename Lock>
void JustRelease(Lock& lock) {
  try {
    lock.unlock();
  } catch (const orvo::LockError&) {
  }
}

// All that locks and their implementations have in common.
template <typename Lock>
void UseEachWay(Lock& lock) {
  lock.try_lock();
  lock.unlock();
  lock.TimedLock(0.0);
  lock.unlock();
  lock.LockWithFilenameAndLineNumber(kLong, kLong, 1);
  lock.unlock();
  lock.SetOwner(std::thread::id());
  lock.SetPendingLockingCodeReference(kLong, kLong, 1);
  lock.SetWaitWillUnlock(true, kLong, 1);
  lock.ThrowIfOwnedByThisThread();
  lock.count();
  lock.get_mutex();
  TakeAndRelease(lock);
}

void AddPlainLocks(Cases* cases) {
  cases->push_back({{{"orvo::LockImpl_::LockImpl_(", 2},
                     {"orvo::LockImpl_::~LockImpl_(", 1},
                     {"orvo::RLockImpl_::", 2},
                     {"orvo::LockImpl_::InitializeRecursiveMutex(", 1}},
                    kThrows,
                    Just([] {
                      TakeAndRelease(*std::make_unique<orvo::LockImpl_>(kLong));
                      orvo::RLockImpl_ recursive(kLong);
                      TakeAndRelease(recursive);
                    })});
  cases->push_back({{{"orvo::LockImpl_::", 11}},
                    kNeverMatters,
                    WithFree<orvo::LockImpl_>(UseEachWay<orvo::LockImpl_>)});
  cases->push_back(
      {{{"orvo::Lock::Lock(", 3},
        {"orvo::Lock::operator=(", 1},
        {"orvo::Lock::~Lock(", 1},
        {"orvo::RLock::RLock(", 3},
        {"orvo::RLock::operator=(", 1},
        {"orvo::RLock::~RLock(", 1}},
       kThrows,
       Just([] {
         orvo::Lock lock(kLong);
         orvo::Lock moved(std::move(lock));
         moved = orvo::Lock(std::make_unique<orvo::LockImpl_>(kLong));
         orvo::RLock recursive(kLong);
         orvo::RLock moved_recursive(std::move(recursive));
         moved_recursive =
             orvo::RLock(std::make_unique<orvo::RLockImpl_>(kLong));
         try {
           const orvo::Lock none(std::unique_ptr<orvo::LockImpl_>{});
         } catch (const std::invalid_argument&) {
         }
       })});
  cases->push_back({{{"orvo::Lock::", 11},
                     {"orvo::RLock::count(", 1},
                     {"orvo::OrvoLock::", 2}},
                    kNeverMatters,
                    WithFree<orvo::RLock>([](orvo::RLock& lock) {
                      UseEachWay(lock);
                      lock.TryLockFor(std::chrono::seconds(0));
                      lock.unlock();
                      static_cast<orvo::OrvoLock&>(lock).get_mutex();
                    })});
}

void AddCodeReferences(Cases* cases) {
  cases->push_back({{{"orvo::LockingCodeReference::", 9}}, kThrows, Just([] {
                      using orvo::LockingCodeReference;
                      LockingCodeReference reference(kLong, kLong, 1);
                      LockingCodeReference copy(reference);
                      copy = reference;
                      LockingCodeReference moved(std::move(copy));
                      moved = LockingCodeReference();
                      moved = reference;
                      if (!moved.HasReference()) throw std::logic_error("lost");
                      moved.GetAsString();
                    })});
}

void AddDebugLocks(Cases* cases) {
  cases->push_back({{{"orvo::DebugLockImpl_::DebugLockImpl_(", 2},
                     {"orvo::DebugLockImpl_::~DebugLockImpl_(", 1}},
                    kThrows,
                    Making<orvo::DebugLockImpl_>()});
  cases->push_back({{{"orvo::DebugLockImpl_::lock(", 1},
                     {"orvo::DebugLockImpl_::try_lock(", 1},
                     {"orvo::DebugLockImpl_::SetOwner(", 1},
                     {"orvo::DebugLockImpl_::SetCount(", 1},
                     {"orvo::DebugLockImpl_::GetOwner() const", 1},
                     {"orvo::DebugLockImpl_::GetWaitWillUnlock(", 1},
                     {"orvo::DebugLockImpl_::GetDepth(", 1}},
                    kNeverMatters,
                    WithFree<DebugImpl>([](DebugImpl& lock) {
                      TakeAndRelease(lock);
                      lock.try_lock();
                      lock.SetOwner(lock.GetOwner());
                      lock.SetCount(lock.GetDepth());
                      lock.GetWaitWillUnlock(lock.GetOwner());
                      lock.unlock();
                    })});
  cases->push_back({{{"orvo::DebugLockImpl_::lock(", 0}},
                    kEnds,
                    WithContended<DebugImpl>(TakeAndRelease<DebugImpl>)});
  cases->push_back({{{"orvo::DebugLockImpl_::try_lock(", 0}},
                    kEnds,
                    WithContended<DebugImpl>(TryToTake<DebugImpl>)});
  cases->push_back({{{"orvo::DebugLockImpl_::unlock(", 1}},
                    kThrows,
                    WithFree<DebugImpl>(JustRelease<DebugImpl>)});
  cases->push_back({{{"orvo::DebugLockImpl_::SetWaitWillUnlock(", 1}},
                    kThrows,
                    [](Attempt& attempt) {
                      DebugImpl lock(kLong);
                      lock.lock();
                      attempt([&] { lock.SetWaitWillUnlock(true, "", 1); });
                      attempt.Check(lock.BooksAreFree());
                      const std::thread::id self = std::this_thread::get_id();
                      attempt.Check(lock.GetWaitWillUnlock(self) ==
                                    attempt.returned());
                      attempt.Check(lock.GetOwner() == self);
                      lock.unlock();
                      attempt.Check(IsUsable(lock));
                    }});
  cases->push_back(
      {{{"orvo::DebugLockImpl_::LockWithFilenameAndLineNumber(", 1},
        {"orvo::DebugLockImpl_::SetPendingLockingCodeReference(", 1}},
       kThrows,
       WithFree<DebugImpl>([](DebugImpl& lock) {
         lock.LockWithFilenameAndLineNumber(kLong, kLong, 1);
         lock.unlock();
       })});
  cases->push_back({{{"orvo::DebugLockImpl_::GetOwnerName[", 1},
                     {"orvo::DebugLockImpl_::GetPendingReference(", 1},
                     {"orvo::DebugLockImpl_::Describe[", 1}},
                    kThrows,
                    WithHeld<DebugImpl>([](DebugImpl& lock) {
                      lock.SetPendingLockingCodeReference(kLong, kLong, 1);
                      lock.GetOwnerName();
                      lock.GetPendingReference(lock.GetOwner());
                      lock.Describe();
                    })});
  cases->push_back({{{"orvo::DebugLockImpl_::ThrowIfOwnedByThisThread(", 1}},
                    kEnds,
                    WithHeld<DebugImpl>([](DebugImpl& lock) {
                      try {
                        lock.ThrowIfOwnedByThisThread();
                      } catch (const std::runtime_error&) {
                      }
                    })});
}

void AddDebugRLocks(Cases* cases) {
  cases->push_back({{{"orvo::DebugRLockImpl_::DebugRLockImpl_(", 1},
                     {"orvo::DebugRLockImpl_::~DebugRLockImpl_(", 1}},
                    kThrows,
                    Making<orvo::DebugRLockImpl_>()});
  cases->push_back({{{"orvo::DebugRLockImpl_::lock(", 1},
                     {"orvo::DebugRLockImpl_::unlock(", 1},
                     {"orvo::DebugRLockImpl_::CountAcquisition(", 1},
                     {"orvo::DebugRLockImpl_::InitializeCountIfNeeded(", 1}},
                    kThrows,
                    WithFree<DebugRImpl>(TakeAndRelease<DebugRImpl>)});
  cases->push_back({{{"orvo::DebugRLockImpl_::unlock(", 0}},
                    kThrows,
                    WithFree<DebugRImpl>(JustRelease<DebugRImpl>)});
  cases->push_back({{{"orvo::DebugRLockImpl_::try_lock(", 1}},
                    kThrows,
                    WithFree<DebugRImpl>(TryToTake<DebugRImpl>)});
  cases->push_back({{{"orvo::DebugRLockImpl_::lock(", 0},
                     {"orvo::DebugRLockImpl_::PrintContention(", 1}},
                    kEnds,
                    WithContended<DebugRImpl>(TakeAndRelease<DebugRImpl>)});
  cases->push_back({{{"orvo::DebugRLockImpl_::try_lock(", 0}},
                    kEnds,
                    WithContended<DebugRImpl>(TryToTake<DebugRImpl>)});
  cases->push_back({{{"orvo::DebugRLockImpl_::SetOwner(", 1}},
                    kThrows,
                    [](Attempt& attempt) {
                      DebugRImpl lock(kLong);
                      const std::thread::id self = std::this_thread::get_id();
                      const std::thread::id nobody;
                      lock.lock();
                      attempt([&] { lock.SetOwner(nobody); });
                      attempt.Check(lock.BooksAreFree());
                      const bool moved = attempt.returned();
                      attempt.Check(lock.owner() == (moved ? nobody : self));
                      attempt.Check(lock.GetCount(self) == (moved ? 0 : 1));
                      attempt.Check(lock.GetCount(nobody) == (moved ? 1 : 0));
                      pthread_mutex_unlock(lock.get_mutex());
                    }});
  cases->push_back({{{"orvo::DebugRLockImpl_::SetWaitWillUnlock(", 1},
                     {"orvo::DebugRLockImpl_::SetCount(", 1}},
                    kThrows,
                    [](Attempt& attempt) {
                      DebugRImpl lock(kLong);
                      const std::thread::id self = std::this_thread::get_id();
                      lock.lock();
                      attempt([&] { lock.SetWaitWillUnlock(true, "", 1); });
                      attempt.Check(lock.BooksAreFree());
                      const bool announced = attempt.returned();
                      attempt.Check(lock.GetWaitWillUnlock(self) == announced);
                      attempt.Check(lock.GetCount(self) == (announced ? 0 : 1));
                      pthread_mutex_unlock(lock.get_mutex());
                    }});
  cases->push_back({{{"orvo::DebugRLockImpl_::IncrementCount(", 1},
                     {"orvo::DebugRLockImpl_::DecrementCount(", 1},
                     {"orvo::DebugRLockImpl_::GetCount(", 1}},
                    kThrows,
                    [](Attempt& attempt) {
                      DebugRImpl lock(kLong);
                      const std::thread::id self = std::this_thread::get_id();
                      const std::thread::id nobody;
                      attempt([&] {
                        lock.IncrementCount(self);
                        lock.DecrementCount(self);
                        lock.GetCount(nobody);
                      });
                      attempt.Check(lock.BooksAreFree());
                      attempt.Check(lock.GetCount(self) == 0);
                      attempt.Check(IsUsable(lock));
                    }});
  cases->push_back(
      {{{"orvo::DebugRLockImpl_::PrintAllCountsGreaterThanZero(", 1}},
       kEnds,
       WithFree<DebugRImpl>([](DebugRImpl& lock) {
         lock.IncrementCount(std::thread::id());
         lock.PrintAllCountsGreaterThanZero(std::this_thread::get_id());
       })});
}

void AddHandles(Cases* cases) {
  cases->push_back(
      {{{"orvo::DebugLock::DebugLock(", 3},
        {"orvo::DebugLock::operator=(", 1},
        {"orvo::DebugLock::~DebugLock(", 1},
        {"orvo::DebugRLock::DebugRLock(", 3},
        {"orvo::DebugRLock::operator=(", 1},
        {"orvo::DebugRLock::~DebugRLock(", 1}},
       kThrows,
       Just([] {
         using orvo::DebugLock;
         using orvo::DebugRLock;
         DebugLock lock(kLong);
         DebugLock moved(std::move(lock));
         moved = DebugLock(std::make_unique<orvo::DebugLockImpl_>(kLong));
         DebugRLock recursive(kLong);
         DebugRLock moved_recursive(std::move(recursive));
         moved_recursive =
             DebugRLock(std::make_unique<orvo::DebugRLockImpl_>(kLong));
       })});
  const auto take_each_way = [](auto& lock) {
    if (lock.try_lock()) lock.unlock();
    if (lock.TimedLock(0.0)) lock.unlock();
    if (lock.TryLockFor(std::chrono::seconds(0))) lock.unlock();
    lock.LockWithFilenameAndLineNumber(kLong, kLong, 1);
    lock.unlock();
    lock.ThrowIfOwnedByThisThread();
    TakeAndRelease(lock);
  };
  cases->push_back({{{"orvo::DebugLock::", 8}},
                    kThrows,
                    WithFree<orvo::DebugLock>(take_each_way)});
  cases->push_back({{{"orvo::DebugRLock::", 2}},
                    kThrows,
                    WithFree<orvo::DebugRLock>(take_each_way)});
  cases->push_back({{{"orvo::DebugLock::SetPendingLockingCodeReference(", 1},
                     {"orvo::DebugLock::Get", 4},
                     {"orvo::DebugLock::Describe[", 1},
                     {"orvo::DebugLock::SetOwner(", 1},
                     {"orvo::DebugRLock::count(", 1}},
                    kThrows,
                    WithHeld<orvo::DebugRLock>([](orvo::DebugRLock& lock) {
                      lock.SetPendingLockingCodeReference(kLong, kLong, 1);
                      lock.GetOwnerName();
                      lock.GetPendingReference(lock.GetOwner());
                      lock.GetDepth();
                      lock.Describe();
                      lock.SetOwner(lock.GetOwner());
                      lock.count();
                    })});
  cases->push_back({{{"orvo::DebugLock::SetWaitWillUnlock(", 1}},
                    kThrows,
                    WithHeld<orvo::DebugLock>([](orvo::DebugLock& lock) {
                      lock.SetWaitWillUnlock(true, kLong, 1);
                    })});
}

void AddScopeLocks(Cases* cases) {
  const auto scopes = [](orvo::OrvoLock& lock) {
    try {
      orvo::ScopeLock scope(lock);
      scope.get_mutex();
      scope.unlock();
      scope.lock();
      scope.unlock();
      scope.try_lock();
      scope.unlock();
    } catch (const orvo::LockError&) {
      throw std::logic_error("no error of the lock is due");
    }
    {
      orvo::DebugScopeLock scope(lock, kLong, kLong, 1);
      scope.SetOwner(std::this_thread::get_id());
      try {
        scope.SetPendingLockingCodeReference(kLong, kLong, 1);
      } catch (const std::logic_error&) {
      }
      try {
        scope.LockWithFilenameAndLineNumber(kLong, kLong, 1);
      } catch (const std::logic_error&) {
      }
    }
    orvo::ScopeLock outer(lock);
    outer.unlock();
    try {
      outer.get_mutex();
    } catch (const std::logic_error&) {
    }
    const orvo::ScopeLock inner(outer);
  };
  cases->push_back({{{"orvo::ScopeLock::", 3},
                     {"orvo::DebugScopeLock::", 3},
                     {"orvo::ScopeLockBase::", 11}},
                    kThrows,
                    WithFree<orvo::DebugLock>(scopes)});
  cases->push_back({{{"orvo::ScopeLock::", 0}},
                    kThrows,
                    WithFree<orvo::DebugRLock>(scopes)});
  cases->push_back({{{"orvo::ScopeLockBase::SetWaitWillUnlock(", 1}},
                    kThrows,
                    WithFree<orvo::DebugLock>([](orvo::DebugLock& lock) {
                      orvo::ScopeLock scope(lock);
                      scope.SetWaitWillUnlock(true, kLong, 1);
                    })});
}

void AddConditions(Cases* cases) {
  const auto wait_each_way = [](auto& lock) {
    orvo::Condition changed;
    const ScopedHook hook(pthread_cond_wait_calls,
                          [](pthread_cond_t*, pthread_mutex_t*) { return 0; });
    changed.Signal(lock);
    changed.Broadcast(lock);
    changed.SignalWhileLocked();
    changed.BroadcastWhileLocked();
    changed.Wait(lock);
    changed.TimedWait(lock, 0);
    const orvo::ScopeLock scope(lock);
    changed.WaitWhileLocked(lock);
    changed.TimedWaitWhileLocked(lock, 0);
    changed.WaitFor(lock, std::chrono::seconds(0));
  };
  cases->push_back({{{"orvo::Condition::", 10},
                     {"orvo::DebugLock::BeginWait(", 1},
                     {"orvo::DebugLock::EndWait(", 1}},
                    kThrows,
                    WithFree<orvo::DebugLock>(wait_each_way)});
  cases->push_back({{{"orvo::Condition::", 0}},
                    kThrows,
                    WithFree<orvo::DebugRLock>(wait_each_way)});
  cases->push_back({{{"orvo::Condition::", 0}},
                    kNeverMatters,
                    WithFree<orvo::Lock>(wait_each_way)});
  cases->push_back({{{"orvo::Condition::TimedWaitWhileLocked(", 1}},
                    kEnds,
                    WithHeld<orvo::DebugLock>([](orvo::DebugLock& lock) {
                      const ScopedFailure failure("pthread_cond_timedwait",
                                                  EINVAL);
                      orvo::Condition().TimedWaitWhileLocked(lock, 0);
                    })});
}

}  // namespace

std::vector<AllocationCase> LockCases() {
  Cases cases;
  AddPlainLocks(&cases);
  AddCodeReferences(&cases);
  AddDebugLocks(&cases);
  AddDebugRLocks(&cases);
  AddHandles(&cases);
  AddScopeLocks(&cases);
  AddConditions(&cases);
  return cases;
}

}  // namespace orvo_test

// clang's thread-safety analysis follows locks, scope locks and conditions.
#ifndef MISTAKE
#define MISTAKE 0
#endif

#include <chrono>

#include "orvo/condition.h"
#include "orvo/debug_locks.h"
#include "orvo/lock.h"
#include "orvo/scope_lock.h"
#include "orvo/thread_annotations.h"

class Orders {
 public:
  void Add() {
    const orvo::ScopeLock scope(lock_);
    ++count_;
  }

  void AddInTwoSteps() {
    orvo::DebugScopeLock scope(lock_, "AddInTwoSteps", __FILE__, __LINE__);
    ++count_;
    scope.unlock();
    changed_.Broadcast(lock_);
    scope.lock();
    ++count_;
#if MISTAKE == 1
    scope.unlock();
    ++count_;
#endif
  }

  void Take() {
    const orvo::ScopeLock scope(lock_);
    while (count_ == 0) changed_.WaitWhileLocked(lock_);
    --count_;
  }

  bool TakeInTime() {
    if (!lock_.TryLockFor(std::chrono::seconds(1))) return false;
    const bool woken = changed_.WaitFor(lock_, std::chrono::seconds(1));
    --count_;
    lock_.unlock();
#if MISTAKE == 2
    --count_;
#endif
    return woken;
  }

  void WaitForChange() {
#if MISTAKE == 3
    const orvo::ScopeLock scope(lock_);
#endif
    changed_.Wait(lock_);
  }

  void WaitForChangeHoldingTheLock() {
#if MISTAKE != 4
    const orvo::ScopeLock scope(lock_);
#endif
    changed_.TimedWaitWhileLocked(lock_, 1);
  }

  void Toggle() {
#if MISTAKE != 5
    debug_.lock();
#endif
    debug_.unlock();
    if (plain_.try_lock()) plain_.unlock();
#if MISTAKE == 6
    plain_.lock();
#endif
  }

 private:
  orvo::Lock lock_{"orders"};
  orvo::DebugLock debug_{"debug"};
  orvo::Lock plain_{"plain"};
  orvo::Condition changed_;
  int count_ ORVO_GUARDED_BY(lock_) = 0;
};

// So that every member is compiled.
void Use(Orders& orders) {
  orders.Add();
  orders.AddInTwoSteps();
  orders.Take();
  orders.TakeInTime();
  orders.WaitForChange();
  orders.WaitForChangeHoldingTheLock();
  orders.Toggle();
}

#include "tests/support/debug_locks.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <functional>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include "orvo/condition.h"
#include "orvo/debug_locks.h"
#include "orvo/errors.h"
#include "orvo/orvo_lock_debug.h"
#include "orvo/scope_lock.h"
#include "orvo/thread_names.h"
#include "tests/support/capture.h"
#include "tests/support/holder.h"
#include "tests/support/latch.h"

namespace {

using orvo_test::Holder;
using orvo_test::OpenBooks;
using orvo_test::StdoutCapture;
using testing::HasSubstr;
using testing::ThrowsMessage;

const std::thread::id nobody;

void NameThisThread(const std::string& name) {
  orvo::threadNames.SetNameOfCurrentThread(name);
}

TEST(DebugImplementationBehindALock, EndsTheProcessAfterAWaitThatIsSignalled) {
  const orvo_test::ProgramResult result =
      orvo_test::RunProgram({orvo_test::ProgramPath("debug_lock_wait")});
  EXPECT_EQ(result.exit_status, -SIGABRT);
  EXPECT_THAT(result.errors,
              HasSubstr("waiter tried to release lock orders without first "
                        "acquiring it."));
}

template <typename Impl>
class Inspection : public testing::Test {
 protected:
  Inspection() { NameThisThread("cook"); }

  const std::thread::id self_ = std::this_thread::get_id();
  Impl lock_{"orders"};
};

using Implementations =
    testing::Types<orvo::DebugLockImpl_, orvo::DebugRLockImpl_>;
TYPED_TEST_SUITE(Inspection, Implementations);

TYPED_TEST(Inspection, FindsNobodyInAFreeLock) {
  EXPECT_EQ(this->lock_.GetOwner(), nobody);
  EXPECT_EQ(this->lock_.GetOwnerName(), "");
  EXPECT_EQ(this->lock_.GetDepth(), 0);
  EXPECT_EQ(this->lock_.Describe(), "Lock orders is free.");
  this->lock_.lock();
  this->lock_.unlock();
  EXPECT_EQ(this->lock_.GetOwner(), nobody);
  EXPECT_EQ(this->lock_.GetDepth(), 0);
}

TYPED_TEST(Inspection, NamesTheHolder) {
  this->lock_.lock();
  EXPECT_EQ(this->lock_.GetOwner(), this->self_);
  EXPECT_EQ(this->lock_.GetOwnerName(), "cook");
  EXPECT_EQ(this->lock_.GetDepth(), 1);
  EXPECT_EQ(this->lock_.Describe(), "Lock orders is held by cook, depth 1.");
  this->lock_.unlock();
}

TYPED_TEST(Inspection, NamesAHolderInAnotherThread) {
  const Holder<TypeParam> holder(this->lock_);
  EXPECT_EQ(this->lock_.GetOwner(), holder.id());
  EXPECT_EQ(this->lock_.GetOwnerName(), "holder");
  EXPECT_EQ(this->lock_.Describe(), "Lock orders is held by holder, depth 1.");
}

TYPED_TEST(Inspection, FindsThePlaceThatAThreadHasAnnouncedLast) {
  EXPECT_FALSE(this->lock_.GetPendingReference(this->self_).HasReference());
  this->lock_.SetPendingLockingCodeReference("Look", "menu.cpp", 3);
  EXPECT_EQ(this->lock_.GetPendingReference(this->self_).GetAsString(),
            "Look --> menu.cpp:3");
  this->lock_.LockWithFilenameAndLineNumber("Add", "shop.cpp", 62);
  EXPECT_EQ(this->lock_.GetPendingReference(this->self_).GetAsString(),
            "Add --> shop.cpp:62");
  EXPECT_FALSE(this->lock_.GetPendingReference(nobody).HasReference());
  EXPECT_EQ(this->lock_.Describe(),
            "Lock orders is held by cook, depth 1, last announced from Add --> "
            "shop.cpp:62.");
  this->lock_.unlock();
}

TYPED_TEST(Inspection, LeavesTheBooksFree) {
  OpenBooks<TypeParam> lock("orders");
  lock.lock();
  lock.GetOwner();
  lock.GetOwnerName();
  lock.GetDepth();
  lock.GetPendingReference(this->self_);
  lock.Describe();
  EXPECT_TRUE(lock.BooksAreFree());
  lock.unlock();
}

TEST(InspectionOfARecursiveLock, CountsAlsoThroughItsBase) {
  orvo::DebugRLockImpl_ lock("tree");
  const orvo::DebugLockImpl_& base = lock;
  for (int depth = 1; depth <= 3; ++depth) {
    lock.lock();
    EXPECT_EQ(base.GetDepth(), depth);
  }
  NameThisThread("cook");
  EXPECT_EQ(base.Describe(), "Lock tree is held by cook, depth 3.");
  for (int depth = 2; depth >= 0; --depth) {
    lock.unlock();
    EXPECT_EQ(base.GetDepth(), depth);
  }
}

TEST(InspectionOfARecursiveLock, FindsNoDepthWithoutACountOfTheOwner) {
  orvo::DebugRLockImpl_ lock("tree");
  lock.DebugLockImpl_::SetOwner(std::this_thread::get_id());
  EXPECT_EQ(lock.GetDepth(), 0);
}

template <typename LockType>
class DebugHandle : public testing::Test {
 protected:
  DebugHandle() { NameThisThread("cook"); }

  const std::thread::id self_ = std::this_thread::get_id();
  LockType lock_{"orders"};
};

using Handles = testing::Types<orvo::DebugLock, orvo::DebugRLock>;
TYPED_TEST_SUITE(DebugHandle, Handles);

TYPED_TEST(DebugHandle, MovesButDoesNotCopy) {
  EXPECT_FALSE(std::is_copy_constructible_v<TypeParam>);
  EXPECT_FALSE(std::is_copy_assignable_v<TypeParam>);
  EXPECT_EQ(sizeof(TypeParam), sizeof(orvo::Lock));
  this->lock_.lock();
  TypeParam moved(std::move(this->lock_));
  EXPECT_EQ(moved.GetOwner(), this->self_);
  TypeParam assigned("another");
  assigned = std::move(moved);
  EXPECT_EQ(assigned.Describe(), "Lock orders is held by cook, depth 1.");
  assigned.unlock();
}

TYPED_TEST(DebugHandle, KeepsBooksWhicheverWayItIsTaken) {
  const auto check_held_and_release = [this] {
    EXPECT_EQ(this->lock_.GetOwner(), this->self_);
    EXPECT_EQ(this->lock_.GetOwnerName(), "cook");
    EXPECT_EQ(this->lock_.GetDepth(), 1);
    this->lock_.unlock();
    EXPECT_EQ(this->lock_.GetOwner(), nobody);
    EXPECT_EQ(this->lock_.GetDepth(), 0);
  };
  this->lock_.lock();
  check_held_and_release();
  EXPECT_TRUE(this->lock_.try_lock());
  check_held_and_release();
  EXPECT_TRUE(this->lock_.TimedLock(0.0));
  check_held_and_release();
  this->lock_.LockWithFilenameAndLineNumber("Add", "shop.cpp", 62);
  check_held_and_release();
  EXPECT_EQ(this->lock_.GetPendingReference(this->self_).GetAsString(),
            "Add --> shop.cpp:62");
}

TYPED_TEST(DebugHandle, LeavesTheBooksAloneWhereItCannotBeTaken) {
  const StdoutCapture output;
  const Holder<TypeParam> holder(this->lock_);
  EXPECT_FALSE(this->lock_.TimedLock(0.0));
  EXPECT_EQ(output.Text(), "");
  EXPECT_FALSE(this->lock_.try_lock());
  EXPECT_THAT(output.Text(), HasSubstr("cook cannot acquire lock orders"));
  EXPECT_EQ(this->lock_.GetOwner(), holder.id());
  EXPECT_EQ(this->lock_.GetDepth(), 1);
}

TYPED_TEST(DebugHandle, PassesOnWhatItIsTold) {
  this->lock_.SetPendingLockingCodeReference("Add", "shop.cpp", 62);
  EXPECT_EQ(this->lock_.GetPendingReference(this->self_).GetAsString(),
            "Add --> shop.cpp:62");
  this->lock_.lock();
  std::thread::id other;
  std::thread([&] { other = std::this_thread::get_id(); }).join();
  this->lock_.SetOwner(other);
  EXPECT_EQ(this->lock_.GetOwner(), other);
  this->lock_.SetOwner(this->self_);
  this->lock_.unlock();
}

TYPED_TEST(DebugHandle, KnowsThePlaceOfAScopeLock) {
  const orvo::DebugScopeLock scope(this->lock_, "Add", "shop.cpp", 62);
  EXPECT_EQ(this->lock_.Describe(),
            "Lock orders is held by cook, depth 1, last announced from Add --> "
            "shop.cpp:62.");
}

TYPED_TEST(DebugHandle, RefusesARelease) {
  EXPECT_THAT([this] { this->lock_.unlock(); },
              ThrowsMessage<orvo::LockError>(
                  HasSubstr("cook tried to release lock orders ")));
}

TYPED_TEST(DebugHandle, ThrowsOnRequestInTheThreadThatHoldsIt) {
  EXPECT_NO_THROW(this->lock_.ThrowIfOwnedByThisThread());
  const StdoutCapture output;
  this->lock_.lock();
  EXPECT_THAT([this] { this->lock_.ThrowIfOwnedByThisThread(); },
              ThrowsMessage<std::runtime_error>(
                  "This lock is already owned by this thread."));
  this->lock_.unlock();
}

TEST(DebugLock, RefusesToWaitForItsOwnThread) {
  orvo::DebugLock lock("orders");
  const auto error = ThrowsMessage<std::runtime_error>(
      "This lock is already owned by this thread.");
  const orvo::ScopeLock scope(lock);
  const StdoutCapture output;
  EXPECT_THAT([&] { lock.lock(); }, error);
  EXPECT_THAT([&] { lock.LockWithFilenameAndLineNumber("F", "f.cpp", 1); },
              error);
  EXPECT_THAT([&] { const orvo::ScopeLock again(lock); }, error);
  EXPECT_THAT(output.Text(), HasSubstr("stack trace:\n"));
  EXPECT_EQ(lock.GetDepth(), 1);
}

TEST(DebugRLock, CountsWhicheverWayItIsTakenAgain) {
  orvo::DebugRLock lock("tree");
  lock.lock();
  lock.LockWithFilenameAndLineNumber("Add", "shop.cpp", 62);
  EXPECT_TRUE(lock.try_lock());
  EXPECT_TRUE(lock.TimedLock(0.0));
  EXPECT_EQ(lock.GetDepth(), 4);
  EXPECT_EQ(lock.count(), 0);
  for (int depth = 3; depth >= 0; --depth) {
    lock.unlock();
    EXPECT_EQ(lock.GetDepth(), depth);
  }
  EXPECT_THROW(lock.unlock(), orvo::LockError);
}

TEST(DebugLock, TakesAnImplementation) {
  orvo::DebugLock lock(std::make_unique<orvo::DebugLockImpl_>("orders"));
  EXPECT_EQ(lock.Describe(), "Lock orders is free.");
  orvo::DebugRLock tree(std::make_unique<orvo::DebugRLockImpl_>("tree"));
  EXPECT_EQ(tree.Describe(), "Lock tree is free.");
  const auto error =
      ThrowsMessage<std::invalid_argument>("A lock needs an implementation.");
  EXPECT_THAT([] { orvo::DebugLock(std::unique_ptr<orvo::DebugLockImpl_>()); },
              error);
  EXPECT_THAT(
      [] { orvo::DebugRLock(std::unique_ptr<orvo::DebugRLockImpl_>()); },
      error);
}

// A debug lock whose announcements can be read.
template <typename Handle>
struct Open;
template <>
struct Open<orvo::DebugLock> : orvo::DebugLock {
  using DebugLock::DebugLock;
  using DebugLock::impl_;
};
template <>
struct Open<orvo::DebugRLock> : orvo::DebugRLock {
  using DebugRLock::DebugRLock;
  using DebugRLock::impl_;
};

// Far enough in the future that only a wake-up ends the wait.
constexpr int kLong = 100000;

template <typename Handle>
class DebugHandleInAWait : public testing::Test {
 protected:
  using Wait = std::function<void(orvo::OrvoLock&)>;

  DebugHandleInAWait() { NameThisThread("cook"); }

  // A thread that holds the lock waits until this one has looked at the books
  // and wakes it up, and finds the books as it has left them.
  void WaitAndLookAtTheBooks(orvo::OrvoLock& held, const Wait& wait) {
    orvo_test::Latch about_to_wait;
    bool ready = false;  // guarded by lock_
    std::thread waker([&] {
      about_to_wait.Wait();
      const orvo::ScopeLock scope(lock_);
      EXPECT_EQ(lock_.GetOwner(), std::this_thread::get_id());
      EXPECT_EQ(lock_.GetDepth(), 1);
      EXPECT_TRUE(lock_.impl_->GetWaitWillUnlock(self_));
      ready = true;
      condition_.BroadcastWhileLocked();
    });
    about_to_wait.CountDown();
    while (!ready) wait(held);
    ExpectHeld();
    waker.join();
    ExpectHeld();
  }

  void ExpectHeld() {
    EXPECT_EQ(lock_.GetOwner(), self_);
    EXPECT_EQ(lock_.GetDepth(), 1);
    EXPECT_FALSE(lock_.impl_->GetWaitWillUnlock(self_));
  }

  void ExpectFree() {
    EXPECT_EQ(lock_.GetOwner(), nobody);
    EXPECT_EQ(lock_.GetDepth(), 0);
    EXPECT_FALSE(lock_.impl_->GetWaitWillUnlock(self_));
  }

  // Both waits of callers that hold the lock.
  std::vector<Wait> Waits() {
    return {[this](orvo::OrvoLock& lock) { condition_.WaitWhileLocked(lock); },
            [this](orvo::OrvoLock& lock) {
              EXPECT_TRUE(condition_.TimedWaitWhileLocked(lock, kLong));
            }};
  }

  const std::thread::id self_ = std::this_thread::get_id();
  Open<Handle> lock_{"orders"};
  orvo::Condition condition_;
};

TYPED_TEST_SUITE(DebugHandleInAWait, Handles);

TYPED_TEST(DebugHandleInAWait, HasItsBooksKept) {
  for (const auto& wait : this->Waits()) {
    this->lock_.lock();
    this->WaitAndLookAtTheBooks(this->lock_, wait);
    this->lock_.unlock();
    this->ExpectFree();
  }
}

TYPED_TEST(DebugHandleInAWait, HasItsBooksKeptBehindAScopeLock) {
  for (const auto& wait : this->Waits()) {
    {
      orvo::ScopeLock scope(this->lock_);
      this->WaitAndLookAtTheBooks(scope, wait);
    }
    this->ExpectFree();
    {
      orvo::DebugScopeLock scope(this->lock_, "Add", "shop.cpp", 62);
      this->WaitAndLookAtTheBooks(scope, wait);
    }
    this->ExpectFree();
  }
}

TYPED_TEST(DebugHandleInAWait, HasItsBooksKeptBehindNestedScopeLocks) {
  for (const auto& wait : this->Waits()) {
    orvo::DebugScopeLock outer(this->lock_, "Add", "shop.cpp", 62);
    outer.unlock();
    orvo::ScopeLock inner(outer);
    this->WaitAndLookAtTheBooks(inner, wait);
  }
  this->ExpectFree();
}

TYPED_TEST(DebugHandleInAWait, IsHeldAgainAfterATimeOut) {
  this->lock_.lock();
  EXPECT_FALSE(this->condition_.TimedWaitWhileLocked(this->lock_, 0));
  this->ExpectHeld();
  this->lock_.unlock();
  EXPECT_FALSE(this->condition_.TimedWait(this->lock_, 0));
  this->ExpectFree();
}

// The plain waits test nothing, so the other thread signals until they return.
TYPED_TEST(DebugHandleInAWait, SurvivesThePlainForms) {
  const StdoutCapture output;  // banners, if any
  for (const bool timed : {false, true}) {
    std::atomic<bool> woken{false};
    std::thread waker([&] {
      while (!woken) {
        this->condition_.Signal(this->lock_);
        std::this_thread::yield();
        this->condition_.Broadcast(this->lock_);
      }
    });
    if (timed) {
      EXPECT_TRUE(this->condition_.TimedWait(this->lock_, kLong));
    } else {
      this->condition_.Wait(this->lock_);
    }
    woken = true;
    waker.join();
    this->ExpectFree();
    EXPECT_THAT(this->lock_.GetPendingReference(this->self_).GetAsString(),
                HasSubstr(timed ? "TimedWait --> " : "Wait --> "));
  }
}

TYPED_TEST(DebugHandleInAWait, IsNotWaitedForBehindAReleasedScopeLock) {
  orvo::ScopeLock scope(this->lock_);
  scope.unlock();
  EXPECT_THROW(this->condition_.WaitWhileLocked(scope), std::logic_error);
  this->ExpectFree();
}

TEST(DebugLock, IsGivenBackByTheEndOfAnAnnouncedWait) {
  orvo::DebugLock lock("orders");
  lock.lock();
  lock.SetWaitWillUnlock(true, "a.cpp", 1);
  lock.SetOwner(nobody);
  EXPECT_EQ(lock.GetDepth(), 0);
  lock.SetWaitWillUnlock(false, "a.cpp", 2);
  EXPECT_EQ(lock.GetOwner(), std::this_thread::get_id());
  lock.unlock();
}

TEST(DebugLock, RefusesAPlainWaitOfItsHolder) {
  orvo::DebugLock lock("orders");
  orvo::Condition condition;
  const orvo::ScopeLock scope(lock);
  const StdoutCapture output;
  EXPECT_THAT([&] { condition.Wait(lock); },
              ThrowsMessage<std::runtime_error>(
                  "This lock is already owned by this thread."));
  EXPECT_EQ(lock.GetDepth(), 1);
}

#if ORVO_ASSERTIONS
TEST(DebugLockDeathTest, AssertsThatAWaitingThreadHoldsIt) {
  orvo::Condition condition;
  orvo::DebugLock lock("orders");
  EXPECT_DEATH(condition.WaitWhileLocked(lock), "this->owner_ == threadId");
  orvo::DebugRLock tree("tree");
  EXPECT_DEATH(condition.WaitWhileLocked(tree), "threadLockCount == 1");
}

// A child process owns no mutex of its parent: it takes the lock itself.
TEST(DebugRLockDeathTest, AssertsThatAWaitingThreadHoldsItOnce) {
  orvo::Condition condition;
  orvo::DebugRLock lock("tree");
  const auto wait_at_depth_2 = [&] {
    lock.lock();
    condition.Wait(lock);
  };
  EXPECT_DEATH(wait_at_depth_2(), "threadLockCount == 1");
}
#endif

TEST(Describe, StaysWithinOneLine) {
  NameThisThread("the\ncook\x7f");
  orvo::DebugLockImpl_ lock("two\r\nlines");
  lock.LockWithFilenameAndLineNumber("F\n", "f.cpp", 1);
  EXPECT_EQ(
      lock.Describe(),
      "Lock two  lines is held by the cook , depth 1, last announced from "
      "F  --> f.cpp:1.");
  lock.unlock();
}

}  // namespace

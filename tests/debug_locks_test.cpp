#include "tests/support/debug_locks.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>

#include "orvo/condition.h"
#include "orvo/debug_locks.h"
#include "orvo/errors.h"
#include "orvo/orvo_lock_debug.h"
#include "orvo/scope_lock.h"
#include "orvo/thread_names.h"
#include "tests/support/capture.h"
#include "tests/support/holder.h"

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

TEST(Describe, StaysWithinOneLine) {
  NameThisThread("the\ncook");
  orvo::DebugLockImpl_ lock("two\r\nlines");
  lock.LockWithFilenameAndLineNumber("F\n", "f.cpp", 1);
  EXPECT_EQ(lock.Describe(),
            "Lock two  lines is held by the cook, depth 1, last announced from "
            "F  --> f.cpp:1.");
  lock.unlock();
}

}  // namespace

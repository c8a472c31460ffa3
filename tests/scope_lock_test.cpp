#include "orvo/scope_lock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>

#include "orvo/errors.h"
#include "tests/support/allocations.h"
#include "tests/support/holder.h"
#include "tests/support/is_free.h"
#include "tests/support/recording_lock.h"
#include "tests/support/virtual_slot.h"

namespace {

using orvo_test::Holder;
using orvo_test::RecordingLock;
using orvo_test::VirtualSlot;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::ThrowsMessage;

constexpr char kReleased[] = "ScopeLock has already been released";
constexpr char kNotForScopeLocks[] =
    "This method is required by the base class, but should not be used with "
    "ScopeLock.";

// Makes each kind of scope lock in the same way.
template <typename ScopeLock>
class Scope {
 public:
  explicit Scope(orvo::OrvoLock& lock) : scope_(lock) {}
  ScopeLock* operator->() { return &scope_; }
  ScopeLock& operator*() { return scope_; }

  static std::string LockCall() { return "lock"; }

 private:
  ScopeLock scope_;
};

// The mechanism alone does not take its lock, so this one has to.
template <>
Scope<orvo::ScopeLockBase>::Scope(orvo::OrvoLock& lock) : scope_(lock) {
  lock.lock();
}

template <>
Scope<orvo::DebugScopeLock>::Scope(orvo::OrvoLock& lock)
    : scope_(lock, "AddOrder", "shop/orders.cpp", 62) {}

template <>
std::string Scope<orvo::DebugScopeLock>::LockCall() {
  return "LockWithFilenameAndLineNumber";
}

template <typename ScopeLock>
class AnyScopeLock : public testing::Test {
 protected:
  RecordingLock lock_;
};

using ScopeLocks =
    testing::Types<orvo::ScopeLockBase, orvo::ScopeLock, orvo::DebugScopeLock>;
TYPED_TEST_SUITE(AnyScopeLock, ScopeLocks);

TYPED_TEST(AnyScopeLock, ReleasesAHeldLockAtTheEnd) {
  { const Scope<TypeParam> scope(this->lock_); }
  EXPECT_THAT(this->lock_.TakeCalls(),
              ElementsAre(Scope<TypeParam>::LockCall(), "unlock"));
}

TYPED_TEST(AnyScopeLock, LeavesAReleasedLockAloneAtTheEnd) {
  {
    Scope<TypeParam> scope(this->lock_);
    scope->unlock();
    this->lock_.TakeCalls();
  }
  EXPECT_THAT(this->lock_.TakeCalls(), IsEmpty());
}

TYPED_TEST(AnyScopeLock, ReleasesOnlyOnce) {
  {
    Scope<TypeParam> scope(this->lock_);
    scope->unlock();
    scope->unlock();
  }
  EXPECT_THAT(this->lock_.TakeCalls(),
              ElementsAre(Scope<TypeParam>::LockCall(), "unlock"));
}

TYPED_TEST(AnyScopeLock, TakesTheLockAgainInItsOwnWay) {
  {
    Scope<TypeParam> scope(this->lock_);
    scope->unlock();
    this->lock_.TakeCalls();
    scope->lock();
    EXPECT_THAT(this->lock_.TakeCalls(),
                ElementsAre(Scope<TypeParam>::LockCall()));
  }
  EXPECT_THAT(this->lock_.TakeCalls(), ElementsAre("unlock"));
}

TYPED_TEST(AnyScopeLock, AcquiresInItsOwnWayWhenAskedDirectly) {
  Scope<TypeParam> scope(this->lock_);
  this->lock_.unlock();
  this->lock_.TakeCalls();
  scope->Acquire();
  EXPECT_THAT(this->lock_.TakeCalls(),
              ElementsAre(Scope<TypeParam>::LockCall()));
}

TYPED_TEST(AnyScopeLock, TriesForAReleasedLock) {
  {
    Scope<TypeParam> scope(this->lock_);
    scope->unlock();
    this->lock_.TakeCalls();
    EXPECT_TRUE(scope->try_lock());
    EXPECT_THAT(this->lock_.TakeCalls(), ElementsAre("try_lock"));
    EXPECT_NO_THROW(scope->get_mutex());
    this->lock_.TakeCalls();
  }
  EXPECT_THAT(this->lock_.TakeCalls(), ElementsAre("unlock"));
}

TYPED_TEST(AnyScopeLock, StaysReleasedWhenAnotherThreadHoldsTheLock) {
  {
    Scope<TypeParam> scope(this->lock_);
    scope->unlock();
    Holder<RecordingLock> holder(this->lock_);
    this->lock_.TakeCalls();
    EXPECT_FALSE(scope->try_lock());
    EXPECT_FALSE(scope->try_lock());
    EXPECT_THROW(scope->get_mutex(), std::logic_error);
    EXPECT_THAT(this->lock_.TakeCalls(), ElementsAre("try_lock", "try_lock"));
    holder.Release();
    this->lock_.TakeCalls();
  }
  EXPECT_THAT(this->lock_.TakeCalls(), IsEmpty());
}

TYPED_TEST(AnyScopeLock, AsksTheHeldLockForItsMutex) {
  Scope<TypeParam> scope(this->lock_);
  pthread_mutex_t* const mutex = this->lock_.get_mutex();
  this->lock_.TakeCalls();
  EXPECT_EQ(scope->get_mutex(), mutex);
  EXPECT_THAT(this->lock_.TakeCalls(), ElementsAre("get_mutex"));
}

TYPED_TEST(AnyScopeLock, HasNoMutexWhileReleased) {
  Scope<TypeParam> scope(this->lock_);
  scope->unlock();
  EXPECT_THAT([&] { scope->get_mutex(); },
              ThrowsMessage<std::logic_error>(kReleased));
}

TYPED_TEST(AnyScopeLock, PassesTheOwnerOn) {
  Scope<TypeParam> scope(this->lock_);
  this->lock_.TakeCalls();
  scope->SetOwner(std::this_thread::get_id());
  EXPECT_THAT(this->lock_.TakeCalls(), ElementsAre("SetOwner"));
  EXPECT_EQ(this->lock_.owner(), std::this_thread::get_id());
}

TYPED_TEST(AnyScopeLock, TakesNoOwnerWhileReleased) {
  Scope<TypeParam> scope(this->lock_);
  scope->unlock();
  EXPECT_THAT([&] { scope->SetOwner(std::thread::id()); },
              ThrowsMessage<std::logic_error>(kReleased));
}

TYPED_TEST(AnyScopeLock, TakesNoCodeReferences) {
  Scope<TypeParam> scope(this->lock_);
  this->lock_.TakeCalls();
  for (const bool held : {true, false}) {
    SCOPED_TRACE(held);
    if (!held) scope->unlock();
    this->lock_.TakeCalls();
    EXPECT_THAT([&] { scope->LockWithFilenameAndLineNumber("f", "a.cpp", 1); },
                ThrowsMessage<std::logic_error>(kNotForScopeLocks));
    EXPECT_THAT([&] { scope->SetPendingLockingCodeReference("f", "a.cpp", 1); },
                ThrowsMessage<std::logic_error>(kNotForScopeLocks));
    EXPECT_THAT(this->lock_.TakeCalls(), IsEmpty());
  }
}

TYPED_TEST(AnyScopeLock, PassesTheAnnouncementOfAWaitOn) {
  Scope<TypeParam> scope(this->lock_);
  this->lock_.TakeCalls();
  scope->SetWaitWillUnlock(true, "a.cpp", 7);
  EXPECT_EQ(this->lock_.file(), "a.cpp");
  EXPECT_EQ(this->lock_.line(), 7);
  scope->SetWaitWillUnlock(false, "b.cpp", 8);
  EXPECT_EQ(this->lock_.file(), "b.cpp");
  EXPECT_EQ(this->lock_.line(), 8);
  EXPECT_THAT(this->lock_.TakeCalls(), ElementsAre("SetWaitWillUnlock(true)",
                                                   "SetWaitWillUnlock(false)"));
}

TYPED_TEST(AnyScopeLock, DoesNotPassTheSelfLockGuardOn) {
  Scope<TypeParam> scope(this->lock_);
  this->lock_.TakeCalls();
  scope->ThrowIfOwnedByThisThread();
  scope->unlock();
  scope->ThrowIfOwnedByThisThread();
  EXPECT_THAT(this->lock_.TakeCalls(), ElementsAre("unlock"));
}

TYPED_TEST(AnyScopeLock, ReleasesTheLockWhileUnwinding) {
  try {
    const Scope<TypeParam> scope(this->lock_);
    throw std::runtime_error("an error");
  } catch (const std::runtime_error&) {
  }
  EXPECT_TRUE(this->lock_.try_lock());
  this->lock_.unlock();
}

TYPED_TEST(AnyScopeLock, IsReleasedAfterAFailedAcquisition) {
  {
    Scope<TypeParam> scope(this->lock_);
    scope->unlock();
    this->lock_.Forbid(Scope<TypeParam>::LockCall());
    EXPECT_THROW(scope->lock(), orvo::LockError);
    EXPECT_THROW(scope->get_mutex(), std::logic_error);
    this->lock_.Forbid("try_lock");
    EXPECT_THAT([&] { scope->try_lock(); },
                ThrowsMessage<orvo::LockError>("no try_lock"));
    EXPECT_THROW(scope->get_mutex(), std::logic_error);
    this->lock_.TakeCalls();
  }
  EXPECT_THAT(this->lock_.TakeCalls(), IsEmpty());
}

TYPED_TEST(AnyScopeLock, StaysHeldWhenTheReleaseFails) {
  {
    Scope<TypeParam> scope(this->lock_);
    this->lock_.Forbid("unlock");
    EXPECT_THAT([&] { scope->unlock(); },
                ThrowsMessage<orvo::LockError>("no unlock"));
    this->lock_.Forbid("");
    EXPECT_NO_THROW(scope->get_mutex());
    this->lock_.TakeCalls();
  }
  EXPECT_THAT(this->lock_.TakeCalls(), ElementsAre("unlock"));
}

TYPED_TEST(AnyScopeLock, EndsTheProcessWhenTheFinalReleaseFails) {
  EXPECT_DEATH(
      {
        const Scope<TypeParam> scope(this->lock_);
        this->lock_.Forbid("unlock");
      },
      "no unlock");
}

TYPED_TEST(AnyScopeLock, IsALockThatOtherScopeLocksTake) {
  Scope<TypeParam> outer(this->lock_);
  outer->unlock();
  this->lock_.TakeCalls();
  {
    const orvo::ScopeLock inner(*outer);
    EXPECT_THAT(this->lock_.TakeCalls(),
                ElementsAre(Scope<TypeParam>::LockCall()));
    EXPECT_EQ(outer->get_mutex(), this->lock_.get_mutex());
    this->lock_.TakeCalls();
  }
  EXPECT_THAT(this->lock_.TakeCalls(), ElementsAre("unlock"));
  EXPECT_THROW(outer->get_mutex(), std::logic_error);
}

TYPED_TEST(AnyScopeLock, IsNeitherCopiedNorMoved) {
  EXPECT_FALSE((std::is_constructible_v<TypeParam, const TypeParam&>));
  EXPECT_FALSE(std::is_move_constructible_v<TypeParam>);
  EXPECT_FALSE(std::is_copy_assignable_v<TypeParam>);
  EXPECT_FALSE(std::is_move_assignable_v<TypeParam>);
}

TEST(ScopeLockBase, DoesNotTakeItsLock) {
  RecordingLock lock;
  lock.lock();
  lock.TakeCalls();
  {
    orvo::ScopeLockBase scope(lock);
    EXPECT_THAT(lock.TakeCalls(), IsEmpty());
    EXPECT_NO_THROW(scope.get_mutex());
    lock.TakeCalls();
  }
  EXPECT_THAT(lock.TakeCalls(), ElementsAre("unlock"));
}

TEST(ScopeLockBase, LocksThroughAnother) {
  RecordingLock lock;
  lock.lock();
  {
    orvo::ScopeLockBase outer(lock);
    {
      orvo::ScopeLockBase inner(outer);
      EXPECT_EQ(inner.get_mutex(), lock.get_mutex());
    }
    EXPECT_THROW(outer.get_mutex(), std::logic_error);
  }
  EXPECT_THAT(lock.TakeCalls(),
              ElementsAre("lock", "get_mutex", "get_mutex", "unlock"));
}

TEST(ScopeLockBase, AcquiresTheWayTheDerivedClassSays) {
  class TryingScopeLock : public orvo::ScopeLockBase {
   public:
    using ScopeLockBase::ScopeLockBase;
    void Acquire() override { held()->try_lock(); }
  };
  RecordingLock lock;
  lock.lock();
  {
    TryingScopeLock scope(lock);
    scope.unlock();
    lock.TakeCalls();
    scope.lock();
    EXPECT_THAT(lock.TakeCalls(), ElementsAre("try_lock"));
  }
}

TEST(ScopeLock, IsNotHeldWhenTheLockCannotBeTaken) {
  RecordingLock lock;
  lock.Forbid("lock");
  EXPECT_THAT([&] { const orvo::ScopeLock scope(lock); },
              ThrowsMessage<orvo::LockError>("no lock"));
  EXPECT_THAT(lock.TakeCalls(), ElementsAre("lock"));
}

#ifdef __x86_64__
TEST(ScopeLockBase, AddsOneVirtualOperation) {
  EXPECT_EQ(VirtualSlot(&orvo::ScopeLockBase::ThrowIfOwnedByThisThread), 10U);
  EXPECT_EQ(VirtualSlot(&orvo::ScopeLockBase::Acquire), 11U);
  EXPECT_EQ(VirtualSlot(&orvo::DebugScopeLock::Acquire), 11U);
}
#endif

TEST(ScopeLock, IsMadeOfItsBaseAlone) {
  EXPECT_EQ(sizeof(orvo::ScopeLock), sizeof(orvo::ScopeLockBase));
  EXPECT_EQ(sizeof(orvo::ScopeLockBase), 3 * sizeof(void*));
}

TEST(DebugScopeLock, AddsThePlaceToItsBase) {
  struct Place {
    std::string function;
    std::string file;
    int line;
  };
  EXPECT_EQ(sizeof(orvo::DebugScopeLock),
            sizeof(orvo::ScopeLockBase) + sizeof(Place));
}

TEST(DebugScopeLock, NamesThePlaceAtEachAcquisition) {
  RecordingLock lock;
  orvo::DebugScopeLock scope(lock, "AddOrder", "shop/orders.cpp", 62);
  for (const bool first : {true, false}) {
    SCOPED_TRACE(first);
    EXPECT_EQ(lock.function(), "AddOrder");
    EXPECT_EQ(lock.file(), "shop/orders.cpp");
    EXPECT_EQ(lock.line(), 62);
    if (!first) break;
    scope.SetWaitWillUnlock(true, "elsewhere.cpp", 1);
    scope.unlock();
    scope.lock();
  }
}

TEST(DebugScopeLock, NamesThePlaceWhenAskedDirectly) {
  RecordingLock lock;
  orvo::DebugScopeLock scope(lock, "AddOrder", "shop/orders.cpp", 62);
  lock.unlock();
  scope.SetWaitWillUnlock(true, "elsewhere.cpp", 1);
  lock.TakeCalls();
  static_cast<orvo::ScopeLockBase&>(scope).Acquire();
  EXPECT_THAT(lock.TakeCalls(), ElementsAre("LockWithFilenameAndLineNumber"));
  EXPECT_EQ(lock.function(), "AddOrder");
  EXPECT_EQ(lock.file(), "shop/orders.cpp");
  EXPECT_EQ(lock.line(), 62);
}

TEST(DebugScopeLock, ReleasesNothingThatItDidNotTake) {
  RecordingLock lock;
  const std::string place(100, 'x');
  for (const long after : {0, 1}) {
    SCOPED_TRACE(after);
    const orvo_test::ScopedAllocationFailure failure(after);
    EXPECT_THROW(orvo::DebugScopeLock(lock, place, place, 62), std::bad_alloc);
  }
  EXPECT_THAT(lock.TakeCalls(), IsEmpty());
}

TEST(DebugScopeLock, KeepsCopiesOfThePlace) {
  RecordingLock lock;
  auto function = std::make_unique<std::string>("AddOrder");
  auto file = std::make_unique<std::string>("a long name of a file.cpp");
  orvo::DebugScopeLock scope(lock, *function, *file, 62);
  function.reset();
  file.reset();
  scope.unlock();
  scope.lock();
  EXPECT_EQ(lock.function(), "AddOrder");
  EXPECT_EQ(lock.file(), "a long name of a file.cpp");
}

TEST(DebugScopeLock, IsNotHeldWhenTheLockCannotBeTaken) {
  RecordingLock lock;
  lock.Forbid("LockWithFilenameAndLineNumber");
  EXPECT_THAT(
      [&] { const orvo::DebugScopeLock scope(lock, "f", "a.cpp", 1); },
      ThrowsMessage<orvo::LockError>("no LockWithFilenameAndLineNumber"));
  EXPECT_THAT(lock.TakeCalls(), ElementsAre("LockWithFilenameAndLineNumber"));
}

TEST(DebugScopeLock, TakesAPlainLock) {
  orvo::Lock lock("a lock");
  {
    const orvo::DebugScopeLock scope(lock, "f", "a.cpp", 1);
    EXPECT_FALSE(orvo_test::IsFree(lock));
  }
  EXPECT_TRUE(orvo_test::IsFree(lock));
}

}  // namespace

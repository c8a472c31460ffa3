// Which mutex the debug locks take and release when.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <thread>
#include <vector>

#include "orvo/errors.h"
#include "orvo/orvo_lock_debug.h"
#include "tests/support/debug_locks.h"
#include "tests/support/interpose/calls.h"

namespace {

using orvo_test::OpenBooks;
using orvo_test::Pieces;
using orvo_test::ScopedFailure;
using orvo_test::ScopedHook;
using testing::Contains;
using testing::ElementsAre;
using testing::ThrowsMessage;

template <typename Impl>
class Calls : public testing::Test {
 protected:
  // The calls for this lock's two mutexes so far, in order; forgets them. A
  // repeated acquisition of the books and its release go unmentioned.
  std::vector<std::string> Take() { return std::move(calls_); }

  OpenBooks<Impl> lock_{"orders"};

 private:
  using Hook = ScopedHook<int(pthread_mutex_t*)>;

  bool IsBooks(pthread_mutex_t* mutex) {
    return mutex == lock_.books_mutex_.native_handle();
  }

  void Note(const char* call, pthread_mutex_t* mutex) {
    if (IsBooks(mutex)) {
      calls_.push_back(std::string(call) + " books");
    } else if (mutex == lock_.get_mutex()) {
      calls_.emplace_back(call);
    }
  }

  int Lock(pthread_mutex_t* mutex) {
    if (!IsBooks(mutex) || depth_++ == 0) Note("lock", mutex);
    return orvo_test::pthread_mutex_lock_calls.Real(mutex);
  }

  int TryLock(pthread_mutex_t* mutex) {
    Note("trylock", mutex);
    return orvo_test::pthread_mutex_trylock_calls.Real(mutex);
  }

  int Unlock(pthread_mutex_t* mutex) {
    if (!IsBooks(mutex) || --depth_ == 0) Note("unlock", mutex);
    return orvo_test::pthread_mutex_unlock_calls.Real(mutex);
  }

  int depth_ = 0;
  std::vector<std::string> calls_;
  Hook lock_hook_{orvo_test::pthread_mutex_lock_calls,
                  [this](pthread_mutex_t* mutex) { return Lock(mutex); }};
  Hook try_lock_hook_{
      orvo_test::pthread_mutex_trylock_calls,
      [this](pthread_mutex_t* mutex) { return TryLock(mutex); }};
  Hook unlock_hook_{orvo_test::pthread_mutex_unlock_calls,
                    [this](pthread_mutex_t* mutex) { return Unlock(mutex); }};
};

using DebugLockCalls = Calls<orvo::DebugLockImpl_>;
using DebugRLockCalls = Calls<orvo::DebugRLockImpl_>;

TEST_F(DebugLockCalls, ReleaseTheBooksBeforeTheMutex) {
  lock_.lock();
  EXPECT_THAT(Take(), ElementsAre("trylock", "lock books", "unlock books"));
  lock_.unlock();
  EXPECT_THAT(Take(), ElementsAre("lock books", "unlock books", "unlock"));
}

TEST_F(DebugLockCalls, TryTheMutexInsideTheBooks) {
  EXPECT_TRUE(lock_.try_lock());
  EXPECT_THAT(Take(), ElementsAre("lock books", "trylock", "unlock books"));
  const Pieces output;
  EXPECT_FALSE(lock_.try_lock());
  EXPECT_THAT(Take(), ElementsAre("lock books", "trylock", "unlock books"));
  lock_.unlock();
}

TEST_F(DebugLockCalls, LeaveTheBooksBeforeTheyWait) {
  lock_.LockWithFilenameAndLineNumber("f", "a.cpp", 1);
  EXPECT_THAT(Take(), ElementsAre("lock books", "unlock books", "trylock",
                                  "lock books", "unlock books"));
  lock_.unlock();
}

TEST_F(DebugLockCalls, LeaveTheBooksWhenTheReleaseIsRefused) {
  EXPECT_THROW(lock_.unlock(), orvo::LockError);
  EXPECT_THAT(Take(), ElementsAre("lock books", "unlock books"));
}

TEST_F(DebugLockCalls, EnterTheBooksOncePerOperation) {
  lock_.SetOwner(std::this_thread::get_id());
  EXPECT_THAT(Take(), ElementsAre("lock books", "unlock books"));
  lock_.SetPendingLockingCodeReference("f", "a.cpp", 1);
  EXPECT_THAT(Take(), ElementsAre("lock books", "unlock books"));
  lock_.SetWaitWillUnlock(true, "a.cpp", 1);
  EXPECT_THAT(Take(), ElementsAre("lock books", "unlock books"));
  lock_.GetWaitWillUnlock(std::this_thread::get_id());
  EXPECT_THAT(Take(), ElementsAre("lock books", "unlock books"));
  lock_.SetCount(1);
  lock_.SetOwner(std::thread::id());
  EXPECT_THAT(Take(), ElementsAre("lock books", "unlock books"));
  lock_.ThrowIfOwnedByThisThread();
  EXPECT_THAT(Take(), ElementsAre());
}

TEST_F(DebugRLockCalls, ReleaseTheMutexInsideTheBooks) {
  lock_.lock();
  EXPECT_THAT(Take(), ElementsAre("trylock", "lock books", "unlock books"));
  lock_.lock();
  EXPECT_THAT(Take(), ElementsAre("trylock", "lock books", "unlock books"));
  for (int i = 0; i < 2; ++i) {
    lock_.unlock();
    EXPECT_THAT(Take(), ElementsAre("lock books", "unlock", "unlock books"));
  }
}

TEST_F(DebugRLockCalls, TryTheMutexBeforeTheBooks) {
  EXPECT_TRUE(lock_.try_lock());
  EXPECT_THAT(Take(), ElementsAre("trylock", "lock books", "unlock books"));
  lock_.unlock();
}

TEST_F(DebugRLockCalls, LeaveTheMutexAloneWhenTheReleaseIsRefused) {
  EXPECT_THROW(lock_.unlock(), orvo::LockError);
  EXPECT_THAT(Take(), ElementsAre("lock books", "unlock books"));
}

TEST_F(DebugRLockCalls, EnterTheBooksOncePerOperation) {
  const std::thread::id self = std::this_thread::get_id();
  lock_.IncrementCount(self);
  EXPECT_THAT(Take(), ElementsAre("lock books", "unlock books"));
  lock_.GetCount(self);
  EXPECT_THAT(Take(), ElementsAre("lock books", "unlock books"));
  lock_.DecrementCount(self);
  EXPECT_THAT(Take(), ElementsAre("lock books", "unlock books"));
  lock_.InitializeCountIfNeeded(self);
  lock_.SetCount(0);
  EXPECT_THAT(Take(), ElementsAre());
}

TEST_F(DebugRLockCalls, StayInTheBooksThroughoutAnOperation) {
  lock_.lock();
  Take();
  lock_.SetOwner(std::this_thread::get_id());
  EXPECT_THAT(Take(), ElementsAre("lock books", "unlock books"));
  lock_.SetWaitWillUnlock(true, "a.cpp", 1);
  EXPECT_THAT(Take(), ElementsAre("lock books", "unlock books"));
  // What a wait does in between.
  lock_.DebugLockImpl_::SetOwner(std::thread::id());
  Take();
  lock_.SetWaitWillUnlock(false, "a.cpp", 1);
  EXPECT_THAT(Take(), ElementsAre("lock books", "unlock books"));
  lock_.unlock();
}

template <typename Impl>
class DebugLockFailures : public testing::Test {};

using Impls = testing::Types<orvo::DebugLockImpl_, orvo::DebugRLockImpl_>;
TYPED_TEST_SUITE(DebugLockFailures, Impls);

TYPED_TEST(DebugLockFailures, OfTheSystemAreErrors) {
  OpenBooks<TypeParam> lock("orders");
  const auto error = ThrowsMessage<orvo::LockError>(
      "pthread_mutex_trylock failed with error 22");
  {
    const ScopedFailure failure("pthread_mutex_trylock", EINVAL);
    EXPECT_THAT([&] { lock.lock(); }, error);
    EXPECT_THAT([&] { lock.try_lock(); }, error);
  }
  EXPECT_EQ(lock.owner(), std::thread::id());
  EXPECT_TRUE(lock.BooksAreFree());
}

TYPED_TEST(DebugLockFailures, OfTheReleaseAreIgnored) {
  OpenBooks<TypeParam> lock("orders");
  lock.lock();
  {
    const ScopedHook hook(
        orvo_test::pthread_mutex_unlock_calls, [&](pthread_mutex_t* mutex) {
          const int result = orvo_test::pthread_mutex_unlock_calls.Real(mutex);
          return mutex == lock.get_mutex() ? EPERM : result;
        });
    lock.unlock();
  }
  EXPECT_EQ(lock.owner(), std::thread::id());
}

TEST(DebugLock, ForgetsItsOwnerBeforeItReleasesItsMutex) {
  OpenBooks<orvo::DebugLockImpl_> lock("orders");
  std::vector<std::thread::id> owners;
  const ScopedHook hook(
      orvo_test::pthread_mutex_unlock_calls, [&](pthread_mutex_t* mutex) {
        if (mutex == lock.get_mutex()) owners.push_back(lock.owner());
        return orvo_test::pthread_mutex_unlock_calls.Real(mutex);
      });
  lock.lock();
  lock.unlock();
  EXPECT_THAT(owners, ElementsAre(std::thread::id()));
}

TEST(DebugRLock, ReleasesItsMutexBeforeItCountsDown) {
  OpenBooks<orvo::DebugRLockImpl_> lock("tree");
  const std::thread::id self = std::this_thread::get_id();
  std::vector<int> counts;
  std::vector<std::thread::id> owners;
  const ScopedHook hook(
      orvo_test::pthread_mutex_unlock_calls, [&](pthread_mutex_t* mutex) {
        if (mutex == lock.get_mutex()) {
          counts.push_back(lock.GetCount(self));
          owners.push_back(lock.owner());
        }
        return orvo_test::pthread_mutex_unlock_calls.Real(mutex);
      });
  lock.lock();
  lock.lock();
  lock.unlock();
  lock.unlock();
  EXPECT_THAT(counts, ElementsAre(2, 1));
  EXPECT_THAT(owners, ElementsAre(self, self));
}

TEST(DebugLock, LeavesItsMutexToDerivedClassesThatAsk) {
  class Derived : public orvo::DebugLockImpl_ {
   public:
    explicit Derived(bool flag) : DebugLockImpl_("orders", flag) {
      InitializeRecursiveMutex();
    }
  };
  std::vector<pthread_mutex_t*> initialised;
  const ScopedHook hook(
      orvo_test::pthread_mutex_init_calls,
      [&](pthread_mutex_t* mutex, const pthread_mutexattr_t* attributes) {
        initialised.push_back(mutex);
        return orvo_test::pthread_mutex_init_calls.Real(mutex, attributes);
      });
  for (const bool flag : {true, false}) {
    SCOPED_TRACE(flag);
    Derived lock(flag);
    EXPECT_EQ(
        std::count(initialised.begin(), initialised.end(), lock.get_mutex()),
        1);
    initialised.clear();
  }
}

TEST(DebugRLock, MakesItsMutexRecursive) {
  std::vector<int> types;
  const ScopedHook hook(
      orvo_test::pthread_mutex_init_calls,
      [&](pthread_mutex_t* mutex, const pthread_mutexattr_t* attributes) {
        int type = -1;
        if (attributes != nullptr) pthread_mutexattr_gettype(attributes, &type);
        types.push_back(type);
        return orvo_test::pthread_mutex_init_calls.Real(mutex, attributes);
      });
  const orvo::DebugRLockImpl_ recursive("tree");
  EXPECT_THAT(types, Contains(static_cast<int>(PTHREAD_MUTEX_RECURSIVE)));
  EXPECT_THAT(types, testing::Not(Contains(-1)));
  types.clear();
  const orvo::DebugLockImpl_ plain("orders");
  EXPECT_THAT(types, Contains(-1));
}

}  // namespace

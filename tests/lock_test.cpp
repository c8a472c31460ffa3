#include "orvo/lock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include "orvo/errors.h"
#include "tests/support/holder.h"
#include "tests/support/interpose/calls.h"
#include "tests/support/is_free.h"
#include "tests/support/virtual_slot.h"

namespace {

using orvo_test::Holder;
using orvo_test::IsFree;
using orvo_test::IsVirtual;
using orvo_test::ScopedFailure;
using orvo_test::ScopedHook;
using orvo_test::VirtualSlot;
using testing::ThrowsMessage;

static_assert(!std::is_base_of_v<orvo::OrvoLock, orvo::LockImpl_>);

// Notes every call that a handle passes on.
class RecordingImpl : public orvo::LockImpl_ {
 public:
  explicit RecordingImpl(std::vector<std::string>* calls)
      : LockImpl_("recording"), calls_(calls) {}
  ~RecordingImpl() override { calls_->push_back("destroyed"); }

  void lock() override { calls_->push_back("lock"); }
  void unlock() override { calls_->push_back("unlock"); }
  bool try_lock() override {
    calls_->push_back("try_lock");
    return true;
  }
  bool TimedLock(double seconds) override {
    calls_->push_back("TimedLock " +
                      std::to_string(std::lround(seconds * 1000)) + " ms");
    return false;
  }
  void SetOwner(const std::thread::id& owner) override {
    calls_->push_back(owner == std::thread::id() ? "SetOwner nobody"
                                                 : "SetOwner somebody");
  }
  int count() override { return 7; }
  void SetWaitWillUnlock(bool, const std::string&, int) override {
    calls_->push_back("SetWaitWillUnlock");
  }
  void LockWithFilenameAndLineNumber(const std::string&, const std::string&,
                                     int) override {
    calls_->push_back("LockWithFilenameAndLineNumber");
  }
  void SetPendingLockingCodeReference(const std::string&, const std::string&,
                                      int) override {
    calls_->push_back("SetPendingLockingCodeReference");
  }
  void ThrowIfOwnedByThisThread() override {
    calls_->push_back("ThrowIfOwnedByThisThread");
  }

 private:
  std::vector<std::string>* calls_;
};

TEST(Lock, ExcludesOtherThreadsWhileHeld) {
  orvo::Lock lock("name");
  lock.lock();
  EXPECT_FALSE(IsFree(lock));
  lock.unlock();
  EXPECT_TRUE(IsFree(lock));
}

TEST(Lock, IsTakenByTryLockWhenFree) {
  orvo::Lock lock("name");
  EXPECT_TRUE(lock.try_lock());
  std::thread([&] { EXPECT_FALSE(lock.try_lock()); }).join();
  EXPECT_FALSE(lock.try_lock());
  lock.unlock();
}

TEST(Lock, TakenWithACodeReferenceIsJustTaken) {
  orvo::Lock lock("name");
  lock.LockWithFilenameAndLineNumber("", "no such file", -1);
  EXPECT_FALSE(IsFree(lock));
  lock.unlock();
}

TEST(Lock, TakesItsMutexByHandleOrDirectly) {
  orvo::Lock lock("name");
  ASSERT_EQ(pthread_mutex_lock(lock.get_mutex()), 0);
  EXPECT_FALSE(IsFree(lock));
  lock.unlock();
  EXPECT_TRUE(IsFree(lock));
}

TEST(Lock, IgnoresErrorsOfTheSystemInLockAndUnlock) {
  orvo::Lock lock("name");
  {
    const ScopedFailure failure("pthread_mutex_lock", EINVAL);
    lock.lock();
  }
  {
    const ScopedFailure failure("pthread_mutex_unlock", EPERM);
    lock.unlock();
  }
  EXPECT_TRUE(IsFree(lock));
}

TEST(Lock, ForwardsToItsImplementationWithTheKeptGaps) {
  std::vector<std::string> calls;
  {
    orvo::Lock lock(std::make_unique<RecordingImpl>(&calls));
    lock.lock();
    lock.unlock();
    EXPECT_TRUE(lock.try_lock());
    EXPECT_FALSE(lock.TimedLock(1.5));
    lock.SetOwner(std::thread::id());
    lock.LockWithFilenameAndLineNumber("f", "file", 1);
    lock.SetPendingLockingCodeReference("f", "file", 1);
    lock.SetWaitWillUnlock(true, "file", 1);
    lock.ThrowIfOwnedByThisThread();
    EXPECT_NE(lock.get_mutex(), nullptr);
  }
  EXPECT_THAT(calls, testing::ElementsAre(
                         "lock", "unlock", "try_lock", "TimedLock 1500 ms",
                         "SetOwner nobody", "lock", "ThrowIfOwnedByThisThread",
                         "destroyed"));
}

TEST(Lock, RejectsANullImplementation) {
  const auto make_lock = [] { orvo::Lock(std::unique_ptr<orvo::LockImpl_>()); };
  const auto make_rlock = [] {
    orvo::RLock(std::unique_ptr<orvo::LockImpl_>());
  };
  EXPECT_THROW(make_lock(), std::invalid_argument);
  EXPECT_THROW(make_rlock(), std::invalid_argument);
}

TEST(Lock, MovesButDoesNotCopy) {
  static_assert(!std::is_copy_constructible_v<orvo::Lock>);
  static_assert(!std::is_copy_assignable_v<orvo::Lock>);
  static_assert(std::is_nothrow_move_constructible_v<orvo::Lock>);
  static_assert(std::is_nothrow_move_assignable_v<orvo::Lock>);
  static_assert(std::is_nothrow_move_constructible_v<orvo::RLock>);

  orvo::Lock first("name");
  first.lock();
  pthread_mutex_t* const mutex = first.get_mutex();
  orvo::Lock second(std::move(first));
  EXPECT_EQ(second.get_mutex(), mutex);
  EXPECT_FALSE(IsFree(second));
  second.unlock();
}

TEST(Lock, DestroysItsImplementationWhenAssigned) {
  std::vector<std::string> calls;
  orvo::Lock lock(std::make_unique<RecordingImpl>(&calls));
  lock = orvo::Lock("other");
  EXPECT_THAT(calls, testing::ElementsAre("destroyed"));
  EXPECT_TRUE(lock.try_lock());
  lock.unlock();
}

TEST(Lock, HoldsNothingButItsImplementation) {
  EXPECT_EQ(sizeof(orvo::Lock), sizeof(void*) + sizeof(std::unique_ptr<int>));
  EXPECT_EQ(sizeof(orvo::RLock), sizeof(orvo::Lock));
}

TEST(OrvoLock, LetsThrowIfOwnedByThisThreadDoNothing) {
  class Minimal : public orvo::OrvoLock {
    void lock() override {}
    void unlock() override {}
    bool try_lock() override { return true; }
    pthread_mutex_t* get_mutex() override { return nullptr; }
    void SetOwner(const std::thread::id&) override {}
    void LockWithFilenameAndLineNumber(const std::string&, const std::string&,
                                       int) override {}
    void SetPendingLockingCodeReference(const std::string&, const std::string&,
                                        int) override {}
    void SetWaitWillUnlock(bool, const std::string&, int) override {}
  };
  Minimal lock;
  EXPECT_NO_THROW(
      static_cast<orvo::OrvoLock&>(lock).ThrowIfOwnedByThisThread());
}

#ifdef __x86_64__
TEST(OrvoLock, KeepsTheOrderOfItsVirtualOperations) {
  using orvo::OrvoLock;
  EXPECT_EQ(VirtualSlot(&OrvoLock::lock), 0U);
  EXPECT_EQ(VirtualSlot(&OrvoLock::unlock), 1U);
  EXPECT_EQ(VirtualSlot(&OrvoLock::try_lock), 2U);
  // The destructor takes two slots.
  EXPECT_EQ(VirtualSlot(&OrvoLock::get_mutex), 5U);
  EXPECT_EQ(VirtualSlot(&OrvoLock::SetOwner), 6U);
  EXPECT_EQ(VirtualSlot(&OrvoLock::LockWithFilenameAndLineNumber), 7U);
  EXPECT_EQ(VirtualSlot(&OrvoLock::SetPendingLockingCodeReference), 8U);
  EXPECT_EQ(VirtualSlot(&OrvoLock::SetWaitWillUnlock), 9U);
  EXPECT_EQ(VirtualSlot(&OrvoLock::ThrowIfOwnedByThisThread), 10U);
}

TEST(LockImpl, KeepsTheOrderOfItsVirtualOperations) {
  using orvo::LockImpl_;
  EXPECT_EQ(VirtualSlot(&LockImpl_::lock), 2U);
  EXPECT_EQ(VirtualSlot(&LockImpl_::unlock), 3U);
  EXPECT_EQ(VirtualSlot(&LockImpl_::try_lock), 4U);
  EXPECT_EQ(VirtualSlot(&LockImpl_::TimedLock), 5U);
  EXPECT_EQ(VirtualSlot(&LockImpl_::SetOwner), 6U);
  EXPECT_EQ(VirtualSlot(&LockImpl_::count), 7U);
  EXPECT_EQ(VirtualSlot(&LockImpl_::SetWaitWillUnlock), 8U);
  EXPECT_EQ(VirtualSlot(&LockImpl_::LockWithFilenameAndLineNumber), 9U);
  EXPECT_EQ(VirtualSlot(&LockImpl_::SetPendingLockingCodeReference), 10U);
  EXPECT_EQ(VirtualSlot(&LockImpl_::ThrowIfOwnedByThisThread), 11U);
}

TEST(Lock, LeavesPollingToItsImplementation) {
  EXPECT_TRUE(IsVirtual(&orvo::LockImpl_::TimedLock));
  EXPECT_FALSE(IsVirtual(&orvo::Lock::TimedLock));
}
#endif

TEST(RLock, IsReleasedAfterAsManyUnlocksAsLocks) {
  orvo::RLock lock("name");
  lock.lock();
  lock.lock();
  lock.unlock();
  EXPECT_FALSE(IsFree(lock));
  lock.unlock();
  EXPECT_TRUE(IsFree(lock));
}

TEST(RLock, IsTakenAgainByTryLockOfItsHolder) {
  orvo::RLock lock("name");
  EXPECT_TRUE(lock.try_lock());
  EXPECT_TRUE(lock.try_lock());
  EXPECT_TRUE(lock.TimedLock(0.0));
  for (int i = 0; i < 3; ++i) lock.unlock();
  EXPECT_TRUE(IsFree(lock));
}

TEST(RLock, CountsNothing) {
  orvo::RLock lock("name");
  lock.lock();
  lock.lock();
  EXPECT_EQ(lock.count(), 0);
  lock.unlock();
  lock.unlock();
}

TEST(RLock, AsksItsImplementationForTheCount) {
  std::vector<std::string> calls;
  EXPECT_EQ(orvo::RLock(std::make_unique<RecordingImpl>(&calls)).count(), 7);
}

TEST(LockImpl, LocksThroughTheVirtualOperationWhenGivenAPlace) {
  std::vector<std::string> calls;
  RecordingImpl impl(&calls);
  impl.LockImpl_::LockWithFilenameAndLineNumber("f", "file", 1);
  EXPECT_THAT(calls, testing::ElementsAre("lock"));
}

TEST(LockImpl, IgnoresWhatOnlyDebugLocksRecord) {
  orvo::LockImpl_ impl("name");
  impl.SetOwner(std::this_thread::get_id());
  impl.SetWaitWillUnlock(false, "file", 1);
  impl.SetWaitWillUnlock(true, "file", 1);
  impl.SetWaitWillUnlock(true, "file", 1);
  impl.SetPendingLockingCodeReference("f", "file", 1);
  impl.ThrowIfOwnedByThisThread();
  EXPECT_EQ(impl.count(), 0);
}

TEST(LockImpl, LeavesItsMutexToDerivedClassesThatAsk) {
  int initialised = 0;
  class Derived : public orvo::LockImpl_ {
   public:
    explicit Derived(bool flag) : LockImpl_("name", flag) {
      InitializeRecursiveMutex();
    }
  };
  const ScopedHook hook(
      orvo_test::pthread_mutex_init_calls,
      [&](pthread_mutex_t* mutex, const pthread_mutexattr_t* attributes) {
        ++initialised;
        return orvo_test::pthread_mutex_init_calls.Real(mutex, attributes);
      });
  const Derived first(true);
  const Derived second(false);
  EXPECT_EQ(initialised, 2);
}

// Notes what becomes of the mutexes of the locks that are made meanwhile.
class MutexCalls {
 public:
  // In order; forgets them.
  std::vector<std::string> Take() { return std::move(calls_); }

 private:
  template <typename... Arguments>
  using Hook = ScopedHook<int(Arguments...)>;

  std::vector<std::string> calls_;
  const pthread_mutexattr_t* attributes_ = nullptr;
  Hook<pthread_mutex_t*, const pthread_mutexattr_t*> init_{
      orvo_test::pthread_mutex_init_calls,
      [this](pthread_mutex_t* mutex, const pthread_mutexattr_t* attributes) {
        calls_.emplace_back(attributes == nullptr       ? "init"
                            : attributes == attributes_ ? "init like that"
                                                        : "init otherwise");
        return orvo_test::pthread_mutex_init_calls.Real(mutex, attributes);
      }};
  Hook<pthread_mutex_t*> destroy_{
      orvo_test::pthread_mutex_destroy_calls, [this](pthread_mutex_t* mutex) {
        calls_.emplace_back("destroy");
        return orvo_test::pthread_mutex_destroy_calls.Real(mutex);
      }};
  Hook<pthread_mutexattr_t*> attribute_init_{
      orvo_test::pthread_mutexattr_init_calls,
      [this](pthread_mutexattr_t* attributes) {
        attributes_ = attributes;
        calls_.emplace_back("attribute init");
        return orvo_test::pthread_mutexattr_init_calls.Real(attributes);
      }};
  Hook<pthread_mutexattr_t*, int> attribute_type_{
      orvo_test::pthread_mutexattr_settype_calls,
      [this](pthread_mutexattr_t* attributes, int type) {
        calls_.emplace_back(type == PTHREAD_MUTEX_RECURSIVE ? "recursive"
                                                            : "another type");
        return orvo_test::pthread_mutexattr_settype_calls.Real(attributes,
                                                               type);
      }};
  Hook<pthread_mutexattr_t*> attribute_destroy_{
      orvo_test::pthread_mutexattr_destroy_calls,
      [this](pthread_mutexattr_t* attributes) {
        calls_.emplace_back("attribute destroy");
        return orvo_test::pthread_mutexattr_destroy_calls.Real(attributes);
      }};
};

TEST(LockImpl, MakesAPlainMutexAndDestroysItOnce) {
  MutexCalls calls;
  {
    const orvo::LockImpl_ impl("name");
    EXPECT_THAT(calls.Take(), testing::ElementsAre("init"));
  }
  EXPECT_THAT(calls.Take(), testing::ElementsAre("destroy"));
}

TEST(RLockImpl, MakesARecursiveMutexAndDestroysItOnce) {
  MutexCalls calls;
  {
    const orvo::RLockImpl_ impl("name");
    EXPECT_THAT(calls.Take(),
                testing::ElementsAre("attribute init", "recursive",
                                     "init like that", "attribute destroy"));
  }
  EXPECT_THAT(calls.Take(), testing::ElementsAre("destroy"));
}

TEST(LockImpl, ThrowsOnAnyOtherResult) {
  const ScopedFailure failure("pthread_mutex_trylock", EINVAL);
  const auto error = ThrowsMessage<orvo::LockError>(
      "pthread_mutex_trylock failed with error 22");
  orvo::LockImpl_ impl("name");
  EXPECT_THAT([&] { impl.try_lock(); }, error);
  EXPECT_THAT([&] { impl.TimedLock(0.0); }, error);
  orvo::RLock lock("name");
  EXPECT_THAT([&] { lock.try_lock(); }, error);
  EXPECT_THAT([&] { lock.TimedLock(0.0); }, error);
}

TEST(TryLock, ThrowsOnAnyOtherResult) {
  const ScopedFailure failure("pthread_mutex_trylock", EINVAL);
  orvo::Lock lock("name");
  const auto try_lock = [&] { lock.try_lock(); };
  EXPECT_THAT(try_lock, ThrowsMessage<orvo::LockError>(
                            "pthread_mutex_trylock failed with error 22"));
}

// Answers each attempt with "held" and each sleep at once, and counts both.
class PollCounter {
 public:
  long attempts() const { return attempts_; }
  long sleeps() const { return sleeps_; }

 private:
  long attempts_ = 0;
  long sleeps_ = 0;
  ScopedHook<int(pthread_mutex_t*)> attempt_{
      orvo_test::pthread_mutex_trylock_calls, [this](pthread_mutex_t*) {
        ++attempts_;
        return EBUSY;
      }};
  ScopedHook<int(const timespec*, timespec*)> sleep_{
      orvo_test::nanosleep_calls, [this](const timespec* request, timespec*) {
        EXPECT_EQ(request->tv_sec, 0);
        EXPECT_EQ(request->tv_nsec, 2000);
        ++sleeps_;
        return 0;
      }};
};

TEST(TimedLock, PollsUntilItsBudgetOf32BitsIsSpent) {
  const struct {
    double seconds;
    long polls;
  } cases[] = {
      {0.0, 1},          {1e-9, 1},        {2e-6, 1},
      {2.5e-6, 2},       {4e-6, 2},        {0.001, 500},
      {5.0, 352517},     {4.294967296, 1},  // exactly 2^32 ns: nothing is left
      {4.295, 17},                          // 32,704 ns
      {-4.294, 484},                        // 967,296 ns
      {-4294.967296, 1},                    // a multiple of 2^32 ns
      {0.0000029, 2},    {0.0000019, 1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.seconds);
    orvo::Lock lock("name");
    const PollCounter counter;
    EXPECT_FALSE(lock.TimedLock(c.seconds));
    EXPECT_EQ(counter.attempts(), c.polls);
    EXPECT_EQ(counter.sleeps(), c.polls);
  }
}

TEST(TimedLock, CutsTheBudgetTowardZeroBeforeItDropsBits) {
  // -0.9 ns is 0 ns, not 2^32 - 1.
  orvo::Lock lock("name");
  const PollCounter counter;
  EXPECT_FALSE(lock.TimedLock(-0.9e-9));
  EXPECT_EQ(counter.attempts(), 1);
}

TEST(TimedLock, TakesNotANumberForZero) {
  orvo::Lock lock("name");
  const PollCounter counter;
  EXPECT_FALSE(lock.TimedLock(std::numeric_limits<double>::quiet_NaN()));
  EXPECT_EQ(counter.attempts(), 1);
}

TEST(TimedLock, TakesTimesBeyond64BitsForZero) {
  const double infinity = std::numeric_limits<double>::infinity();
  for (const double seconds : {infinity, -infinity, 1e300, -1e300, 1e10, -1e10,
                               9223372036.854775808}) {
    SCOPED_TRACE(seconds);
    orvo::Lock lock("name");
    const PollCounter counter;
    EXPECT_FALSE(lock.TimedLock(seconds));
    EXPECT_EQ(counter.attempts(), 1);
  }
}

TEST(TimedLock, TakesAFreeLockWithoutSleeping) {
  orvo::Lock lock("name");
  const ScopedHook sleep(orvo_test::nanosleep_calls,
                         [](const timespec*, timespec*) {
                           ADD_FAILURE() << "slept";
                           return 0;
                         });
  EXPECT_TRUE(lock.TimedLock(0.0));
  EXPECT_FALSE(IsFree(lock));
  lock.unlock();
}

TEST(TimedLock, SleepsAgainForTheRemainderAndKeepsIt) {
  // A signal after 500 ns of the first sleep: its remainder is slept, and all
  // later polls ask for that remainder only.
  std::vector<long> requests;
  const ScopedHook attempt(orvo_test::pthread_mutex_trylock_calls,
                           [](pthread_mutex_t*) { return EBUSY; });
  const ScopedHook sleep(orvo_test::nanosleep_calls,
                         [&](const timespec* request, timespec* remainder) {
                           requests.push_back(request->tv_nsec);
                           if (requests.size() > 1) return 0;
                           *remainder = {0, 1500};
                           errno = EINTR;
                           return -1;
                         });
  orvo::Lock lock("name");
  EXPECT_FALSE(lock.TimedLock(6e-6));
  EXPECT_THAT(requests, testing::ElementsAre(2000, 1500, 1500, 1500));
}

TEST(TimedLock, GoesOnWhenASleepFailsOtherwise) {
  int sleeps = 0;
  const ScopedHook attempt(orvo_test::pthread_mutex_trylock_calls,
                           [](pthread_mutex_t*) { return EBUSY; });
  const ScopedHook sleep(orvo_test::nanosleep_calls,
                         [&](const timespec*, timespec*) {
                           ++sleeps;
                           errno = EINVAL;
                           return -1;
                         });
  orvo::Lock lock("name");
  EXPECT_FALSE(lock.TimedLock(4e-6));
  EXPECT_EQ(sleeps, 2);
}

TEST(TimedLock, TakesAStaleErrnoForNothing) {
  int sleeps = 0;
  const ScopedHook attempt(orvo_test::pthread_mutex_trylock_calls,
                           [](pthread_mutex_t*) { return EBUSY; });
  const ScopedHook sleep(orvo_test::nanosleep_calls,
                         [&](const timespec*, timespec*) {
                           ++sleeps;
                           errno = EINTR;
                           return 0;
                         });
  orvo::Lock lock("name");
  EXPECT_FALSE(lock.TimedLock(0.0));
  EXPECT_EQ(sleeps, 1);
}

TEST(TimedLock, ThrowsOnAnyOtherResult) {
  orvo::Lock lock("name");
  const ScopedHook sleep(orvo_test::nanosleep_calls,
                         [](const timespec*, timespec*) { return 0; });
  int attempts = 0;
  const ScopedHook attempt(
      orvo_test::pthread_mutex_trylock_calls,
      [&](pthread_mutex_t*) { return ++attempts < 3 ? EBUSY : EAGAIN; });
  EXPECT_THAT([&] { lock.TimedLock(1.0); },
              ThrowsMessage<orvo::LockError>(
                  "pthread_mutex_trylock failed with error 11"));
  EXPECT_EQ(attempts, 3);
}

TEST(TimedLock, ReturnsOnceTheHolderReleases) {
  orvo::Lock lock("name");
  Holder<orvo::Lock> holder(lock);
  int sleeps = 0;
  const ScopedHook sleep(orvo_test::nanosleep_calls,
                         [&](const timespec*, timespec*) {
                           ++sleeps;
                           holder.Release();
                           return 0;
                         });
  ASSERT_TRUE(lock.TimedLock(1));
  EXPECT_EQ(sleeps, 1);
  EXPECT_FALSE(IsFree(lock));
  lock.unlock();
}

}  // namespace

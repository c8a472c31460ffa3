// Threads take turns at one debug lock, each with a step drawn by lot, and
// after each step all that the books say, and all that was printed, is compared
// to a model.
//
//   debug_books_torture [--steps=N] [--limit=SECONDS]
//                       [--twin=forgets_its_owner]
//
// --twin=forgets_its_owner takes a broken lock, which is a fault to be found.
#include <semaphore.h>

#include <chrono>
#include <exception>
#include <iostream>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>

#include "orvo/condition.h"
#include "orvo/debug_locks.h"
#include "orvo/errors.h"
#include "orvo/orvo_lock_debug.h"
#include "orvo/thread_names.h"
#include "tests/support/interpose/calls.h"
#include "torture/support.h"

namespace {

using orvo_torture::Faults;
using orvo_torture::Options;

constexpr unsigned kSeed = 20261121;
constexpr int kActors = 4;
constexpr int kNobody = -1;
constexpr char kStars[] = " \n\n\n********\n\n\n";

// A permission to act. No mutex, for whose order with the lock under test a
// sanitizer would fear.
class Turn {
 public:
  Turn() { sem_init(&semaphore_, 0, 0); }
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;
  ~Turn() { sem_destroy(&semaphore_); }

  void Give() { sem_post(&semaphore_); }
  void Take() {
    while (sem_wait(&semaphore_) != 0) {
    }
  }

 private:
  sem_t semaphore_;
};

// What the books have to say about one actor.
struct Account {
  std::string name;
  std::string place;
  int depth = 0;
  bool will_wait = false;
};

struct Books {
  Account accounts[kActors];
  int owner = kNobody;
};

template <typename Impl>
class Play {
 public:
  static constexpr bool kRecursive =
      std::is_base_of_v<orvo::DebugRLockImpl_, Impl>;
  using Handle =
      std::conditional_t<kRecursive, orvo::DebugRLock, orvo::DebugLock>;

  explicit Play(long steps) : Play(steps, std::make_unique<Impl>("stage")) {}

  void Perform() {
    std::streambuf* const saved = std::cout.rdbuf(printed_.rdbuf());
    turns_[0].Give();
    orvo_torture::InThreads(kActors, [this](int actor) { Act(actor); });
    std::cout.rdbuf(saved);
  }

  Faults& faults() { return faults_; }
  long comparisons() const { return comparisons_; }

 private:
  Play(long steps, std::unique_ptr<Impl> impl)
      : impl_(*impl), lock_(std::move(impl)), steps_(steps) {}

  void Act(int actor) {
    turns_[actor].Take();
    EnterStage(actor);
    turns_[Next(actor)].Give();
    for (;;) {
      turns_[actor].Take();
      if (steps_ <= 0) break;
      for (auto left = 1 + random_() % 16; left > 0; --left) {
        TakeStep(actor);
        Compare();
        --steps_;
      }
      turns_[random_() % kActors].Give();
    }
    while (books_.owner == actor) Unlock(actor);
    turns_[Next(actor)].Give();
  }

  static int Next(int actor) { return (actor + 1) % kActors; }

  void EnterStage(int actor) {
    ids_[actor] = std::this_thread::get_id();
    AccountOf(actor).name = "actor " + std::to_string(actor);
    orvo::threadNames.SetNameOfCurrentThread(AccountOf(actor).name);
  }

  void TakeStep(int actor) {
    try {
      switch (random_() % 16) {
        case 0:
          return Announce(actor);
        case 1:
        case 2:
          return TryLock(actor);
        case 3:
          return TimedLock(actor);
        case 4:
          return Wait(actor);
        case 5:
          return AnnounceWait(actor);
        case 6:
          return HandOver(actor);
        case 7:
        case 8:
          return LockFromPlace(actor);
        case 9:
        case 10:
        case 11:
          return Lock(actor);
        default:
          return Unlock(actor);
      }
    } catch (const std::exception& error) {
      faults_.Add(error.what());
    }
  }

  bool IsAvailableTo(int actor) const {
    return books_.owner == kNobody || (kRecursive && books_.owner == actor);
  }

  Account& AccountOf(int actor) { return books_.accounts[actor]; }

  void Note(int actor) {
    books_.owner = actor;
    ++AccountOf(actor).depth;
  }

  void Lock(int actor) {
    if (!IsAvailableTo(actor)) return LockInVain(actor);
    lock_.lock();
    Note(actor);
  }

  // Only the holder can try that without a wait.
  void LockInVain(int actor) {
    if (books_.owner != actor || random_() % 64 != 0) return TryLock(actor);
    try {
      lock_.lock();
      faults_.Add("a holder cannot take the lock again");
    } catch (const std::runtime_error& error) {
      faults_.Check(
          error.what() == std::string("This lock is already owned by this "
                                      "thread."),
          "the error names its reason");
    }
    // The stack trace.
    faults_.Check(!printed_.str().empty(), "an accident shows its stack");
    printed_.str("");
  }

  void LockFromPlace(int actor) {
    if (!IsAvailableTo(actor)) return TimedLock(actor);
    const int line = static_cast<int>(random_() % 1000);
    lock_.LockWithFilenameAndLineNumber("Take", "play.cpp", line);
    AccountOf(actor).place = "Take --> play.cpp:" + std::to_string(line);
    Note(actor);
  }

  void TryLock(int actor) {
    const bool available = IsAvailableTo(actor);
    faults_.Check(lock_.try_lock() == available, "try_lock() tells the truth");
    if (available) return Note(actor);
    const std::string banner =
        kStars + AccountOf(actor).name + " cannot acquire lock stage because ";
    if (!kRecursive) return ExpectPrinted(banner + " is not sharing.\n");
    ExpectPrinted(banner + " has acquired it " +
                  std::to_string(AccountOf(books_.owner).depth) +
                  " times.\nNo other threads have acquired this lock.\n\n");
  }

  void TimedLock(int actor) {
    const bool available = IsAvailableTo(actor);
    faults_.Check(lock_.TimedLock(1e-6) == available,
                  "TimedLock() tells the truth");
    if (available) Note(actor);
  }

  void Unlock(int actor) {
    if (books_.owner != actor) return UnlockInVain(actor);
    lock_.unlock();
    if (--AccountOf(actor).depth == 0) books_.owner = kNobody;
  }

  void UnlockInVain(int actor) {
    const std::string text = AccountOf(actor).name +
                             " tried to release lock stage" +
                             (kRecursive ? " more times than it was acquired."
                                         : " without first acquiring it.");
    try {
      lock_.unlock();
      faults_.Add("who does not hold the lock cannot release it");
    } catch (const orvo::LockError& error) {
      faults_.Check(error.what() == text, "the error names its reason");
    }
  }

  void Announce(int actor) {
    const int line = static_cast<int>(random_() % 1000);
    lock_.SetPendingLockingCodeReference("Plan", "play.cpp", line);
    AccountOf(actor).place = "Plan --> play.cpp:" + std::to_string(line);
  }

  void Wait(int actor) {
    if (books_.owner != actor || AccountOf(actor).depth != 1) return;
    if (random_() % 2 == 0) {
      faults_.Check(!condition_.TimedWaitWhileLocked(lock_, 0),
                    "nobody wakes the wait");
    } else {
      faults_.Check(!condition_.WaitFor(lock_, std::chrono::nanoseconds(0)),
                    "nobody wakes the wait");
    }
  }

  // What a wait announces, step by step.
  void AnnounceWait(int actor) {
    Account& account = AccountOf(actor);
    if (books_.owner != actor || account.depth != 1) return;
    lock_.SetWaitWillUnlock(true, "play.cpp", 1);
    account.will_wait = true;
    if (kRecursive) account.depth = 0;
    Compare();
    impl_.DebugLockImpl_::SetOwner(std::thread::id());
    books_.owner = kNobody;
    account.depth = 0;
    Compare();
    lock_.SetWaitWillUnlock(false, "play.cpp", 2);
    account.will_wait = false;
    account.depth = 1;
    books_.owner = actor;
  }

  // To another actor and back, in the books alone.
  void HandOver(int actor) {
    if (books_.owner != actor) return;
    const int heir = static_cast<int>(random_() % kActors);
    lock_.SetOwner(ids_[heir]);
    std::swap(AccountOf(actor).depth, AccountOf(heir).depth);
    books_.owner = heir;
    Compare();
    lock_.SetOwner(ids_[actor]);
    std::swap(AccountOf(actor).depth, AccountOf(heir).depth);
    books_.owner = actor;
  }

  void ExpectPrinted(const std::string& text) {
    faults_.Check(printed_.str() == text, "the banner is right");
    printed_.str("");
  }

  void Compare() {
    ++comparisons_;
    const int owner = books_.owner;
    const bool held = owner != kNobody;
    faults_.Check(lock_.GetOwner() == (held ? ids_[owner] : std::thread::id()),
                  "the books name the holder");
    faults_.Check(lock_.GetOwnerName() == (held ? AccountOf(owner).name : ""),
                  "the books know the holder's name");
    faults_.Check(lock_.GetDepth() == (held ? AccountOf(owner).depth : 0),
                  "the books count the depth");
    faults_.Check(lock_.Describe() == Description(),
                  "the description is right");
    for (int actor = 0; actor < kActors; ++actor) CompareAccount(actor);
    faults_.Check(printed_.str().empty(), "nothing else is printed");
  }

  void CompareAccount(int actor) {
    const Account& account = AccountOf(actor);
    faults_.Check(
        lock_.GetPendingReference(ids_[actor]).GetAsString() == account.place,
        "the books name the place");
    faults_.Check(impl_.GetWaitWillUnlock(ids_[actor]) == account.will_wait,
                  "the books know who will wait");
    if constexpr (kRecursive) {
      faults_.Check(impl_.GetCount(ids_[actor]) == account.depth,
                    "the books count for each thread");
    }
  }

  std::string Description() {
    if (books_.owner == kNobody) return "Lock stage is free.";
    const Account& account = AccountOf(books_.owner);
    return "Lock stage is held by " + account.name + ", depth " +
           std::to_string(account.depth) +
           (account.place.empty()
                ? "."
                : ", last announced from " + account.place + ".");
  }

  Impl& impl_;
  Handle lock_;
  orvo::Condition condition_;
  Faults faults_;

  Turn turns_[kActors];
  // All below belongs to the actor whose turn it is.
  std::minstd_rand random_{kSeed};
  std::ostringstream printed_;
  std::thread::id ids_[kActors];
  Books books_;
  long steps_;
  long comparisons_ = 0;
};

template <typename Impl>
void Torture(const std::string& name, long steps) {
  const orvo_torture::Stopwatch watch;
  Play<Impl> play(steps);
  play.Perform();
  orvo_torture::Report(
      "debug books, " + name,
      std::to_string(play.comparisons()) + " comparisons to the model",
      play.faults(), watch);
}

// Loses its owner at every thousandth acquisition.
class ForgetsItsOwner : public orvo::DebugLockImpl_ {
 public:
  using DebugLockImpl_::DebugLockImpl_;
  void lock() override {
    DebugLockImpl_::lock();
    if (++count_ % 1000 == 0) SetOwner(std::thread::id());
  }

 private:
  int count_ = 0;
};

}  // namespace

int main(int argc, char** argv) {
  const Options options(argc, argv);
  const orvo_torture::TimeLimit limit(options.Number("limit", 600),
                                      "the steps at the debug locks");
  const orvo_test::ScopedHook hook(
      orvo_test::nanosleep_calls, [](const timespec*, timespec*) { return 0; });
  const long steps = options.Number("steps", 50000);
  if (options.Text("twin") == "forgets_its_owner") {
    Torture<ForgetsItsOwner>("forgets_its_owner", steps);
  } else {
    Torture<orvo::DebugLockImpl_>("DebugLock", steps);
    Torture<orvo::DebugRLockImpl_>("DebugRLock", steps);
  }
  return orvo_torture::ExitStatus();
}

// Many threads over the debug locks, with every step checked.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <random>
#include <thread>
#include <vector>

#include "orvo/condition.h"
#include "orvo/debug_locks.h"
#include "orvo/orvo_lock_debug.h"
#include "orvo/scope_lock.h"
#include "tests/support/debug_locks.h"
#include "tests/support/interpose/calls.h"
#include "tests/support/latch.h"
#include "tests/support/silence.h"

namespace {

using orvo_test::Latch;
using orvo_test::OpenBooks;
using orvo_test::ScopedHook;
using orvo_test::Silence;

constexpr int kThreads = 8;
constexpr int kSteps = 2000;
constexpr unsigned kSeed = 20261121;

// What the threads of one test share.
template <typename Impl>
struct Arena {
  OpenBooks<Impl> lock{"arena"};
  std::atomic<int> inside{0};
  std::atomic<int> faults{0};
  long steps = 0;  // guarded by lock
  Latch start{kThreads};

  void Check(bool good) {
    if (!good) ++faults;
  }
};

int CountOf(orvo::DebugLockImpl_&, int depth) {
  return depth;
}
int CountOf(orvo::DebugRLockImpl_& lock, int) {
  return lock.GetCount(std::this_thread::get_id());
}

// The calling thread holds the lock `depth` times.
template <typename Impl>
void CheckHeld(Arena<Impl>& arena, int depth) {
  arena.Check(arena.inside == 1);
  arena.Check(arena.lock.owner() == std::this_thread::get_id());
  arena.Check(CountOf(arena.lock, depth) == depth);
  ++arena.steps;
}

template <typename Impl>
void CheckReleased(Arena<Impl>& arena) {
  arena.Check(arena.lock.owner() != std::this_thread::get_id());
  arena.Check(CountOf(arena.lock, 0) == 0);
}

template <typename Impl>
bool Acquire(Arena<Impl>& arena, bool wait) {
  if (wait) {
    arena.lock.lock();
    return true;
  }
  return arena.lock.try_lock();
}

// Takes the lock up to `depth` times, then releases it as often.
template <typename Impl>
void Play(Arena<Impl>& arena, bool wait, int depth) {
  if (!Acquire(arena, wait)) return;
  arena.Check(++arena.inside == 1);
  CheckHeld(arena, 1);
  for (int held = 2; held <= depth; ++held) {
    arena.Check(Acquire(arena, held % 2 == 0));
    CheckHeld(arena, held);
  }
  std::this_thread::yield();
  for (int held = depth; held > 1; --held) {
    arena.lock.unlock();
    CheckHeld(arena, held - 1);
  }
  --arena.inside;
  arena.lock.unlock();
  CheckReleased(arena);
}

template <typename Impl>
void Torture(int max_depth) {
  const ScopedHook hook(orvo_test::nanosleep_calls,
                        [](const timespec*, timespec*) {
                          std::this_thread::yield();
                          return 0;
                        });
  const Silence silence;
  Arena<Impl> arena;
  std::vector<std::thread> threads;
  for (unsigned i = 0; i < kThreads; ++i) {
    threads.emplace_back([&arena, max_depth, i] {
      std::minstd_rand random(kSeed + i);
      arena.start.Arrive();
      for (int step = 0; step < kSteps; ++step) {
        const bool wait = random() % 4 != 0;
        const int depth =
            1 + static_cast<int>(random() % static_cast<unsigned>(max_depth));
        Play(arena, wait, depth);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(arena.faults, 0) << "seed " << kSeed;
  EXPECT_GT(arena.steps, kSteps);
  EXPECT_EQ(arena.lock.owner(), std::thread::id());
  EXPECT_TRUE(arena.lock.BooksAreFree());
}

// ORVO_HANDOVERS in the environment asks for another number.
int HandOvers() {
  const char* const number = std::getenv("ORVO_HANDOVERS");
  return number == nullptr ? 100000 : std::atoi(number);
}

// Three threads take turns, each waiting for its own.
template <typename Handle>
struct Relay {
  static constexpr int kRunners = 3;

  Handle lock{"relay"};
  orvo::Condition changed;
  int turn = 0;    // guarded by lock
  int faults = 0;  // guarded by lock
  const int turns = HandOvers();

  void Run(int runner) {
    for (int mine = runner; mine < turns; mine += kRunners) {
      orvo::DebugScopeLock scope(lock, "Run", "relay.cpp", mine % 1000);
      Wait(scope, mine);
      if (turn != mine) ++faults;
      if (lock.GetOwner() != std::this_thread::get_id()) ++faults;
      if (lock.GetDepth() != 1) ++faults;
      turn = mine + 1;
      if (mine % 2 == 0) {
        changed.BroadcastWhileLocked();
        continue;
      }
      scope.unlock();
      changed.Broadcast(lock);
    }
  }

  // In one of the ways there are.
  void Wait(orvo::OrvoLock& scope, int mine) {
    const auto is_mine = [&] { return turn == mine; };
    switch (mine % 4) {
      case 0:
        while (!is_mine()) changed.WaitWhileLocked(lock);
        break;
      case 1:
        while (!is_mine()) changed.TimedWaitWhileLocked(scope, 1000);
        break;
      case 2:
        changed.WaitUntilTrue(scope, is_mine);
        break;
      default:
        changed.WaitFor(lock, std::chrono::hours(1), is_mine);
    }
  }
};

template <typename Handle>
void HandOver() {
  const ScopedHook hook(orvo_test::nanosleep_calls,
                        [](const timespec*, timespec*) {
                          std::this_thread::yield();
                          return 0;
                        });
  const Silence silence;
  Relay<Handle> relay;
  ASSERT_GE(relay.turns, 1) << "ORVO_HANDOVERS is no number of turns";
  std::vector<std::thread> runners;
  for (int i = 0; i < Relay<Handle>::kRunners; ++i) {
    runners.emplace_back([&relay, i] { relay.Run(i); });
  }
  for (std::thread& runner : runners) runner.join();
  EXPECT_EQ(relay.turn, relay.turns);
  EXPECT_EQ(relay.faults, 0);
  EXPECT_EQ(relay.lock.Describe(), "Lock relay is free.");
}

TEST(DebugLockTorture, HandsOverThroughConditions) {
  HandOver<orvo::DebugLock>();
}

TEST(DebugRLockTorture, HandsOverThroughConditions) {
  HandOver<orvo::DebugRLock>();
}

TEST(DebugLockTorture, KeepsThreadsApartAndItsBooksInOrder) {
  Torture<orvo::DebugLockImpl_>(1);
}

TEST(DebugRLockTorture, KeepsThreadsApartAndItsBooksInOrder) {
  Torture<orvo::DebugRLockImpl_>(4);
}

}  // namespace

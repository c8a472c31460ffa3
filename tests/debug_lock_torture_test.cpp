// Many threads over the debug locks, with every step checked.
#include <gtest/gtest.h>

#include <atomic>
#include <iostream>
#include <random>
#include <streambuf>
#include <thread>
#include <vector>

#include "orvo/orvo_lock_debug.h"
#include "tests/support/debug_locks.h"
#include "tests/support/interpose/calls.h"
#include "tests/support/latch.h"

namespace {

using orvo_test::Latch;
using orvo_test::OpenBooks;
using orvo_test::ScopedHook;

constexpr int kThreads = 8;
constexpr int kSteps = 2000;
constexpr unsigned kSeed = 20261121;

// Swallows banners, which are many.
class Silence : public std::streambuf {
 public:
  Silence() : saved_(std::cout.rdbuf(this)) {}
  Silence(const Silence&) = delete;
  Silence& operator=(const Silence&) = delete;
  ~Silence() override { std::cout.rdbuf(saved_); }

 protected:
  int_type overflow(int_type character) override {
    return traits_type::not_eof(character);
  }
  std::streamsize xsputn(const char*, std::streamsize size) override {
    return size;
  }

 private:
  std::streambuf* saved_;
};

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

TEST(DebugLockTorture, KeepsThreadsApartAndItsBooksInOrder) {
  Torture<orvo::DebugLockImpl_>(1);
}

TEST(DebugRLockTorture, KeepsThreadsApartAndItsBooksInOrder) {
  Torture<orvo::DebugRLockImpl_>(4);
}

}  // namespace

// A program to look at from a debugger: "values" stops in Look() with one of
// each value in sight, "hang" never ends.
#include <chrono>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <utility>

#include "orvo/condition.h"
#include "orvo/debug_locks.h"
#include "orvo/lock.h"
#include "orvo/midi.h"
#include "orvo/numeric_string.h"
#include "orvo/orvo_lock_debug.h"
#include "orvo/scope_lock.h"
#include "orvo/thread_names.h"
#include "orvo/time_value.h"
#include "orvo/uuid.h"
#include "tests/support/latch.h"

namespace {

class CountingLock : public orvo::DebugLockImpl_ {
 public:
  using DebugLockImpl_::DebugLockImpl_;
  int count() override { return 1; }
};

std::thread Start(const std::string& name, const std::function<void()>& work) {
  return std::thread([name, work] {
    if (!name.empty()) orvo::threadNames.SetNameOfCurrentThread(name);
    work();
  });
}

struct Values {
  orvo::TimeValue instant = std::chrono::nanoseconds(1795285587547708870);
  orvo::TimeValue before_1970 = -1.5;
  orvo::TimeValue earliest = std::chrono::nanoseconds::min();
  orvo::UUID uuid{"12345678-9ABC-DEF0-0123-456789ABCDEF"};
  orvo::NumericString file{"file10\n.\"x\""};
  orvo::NumericString nothing{""};
  orvo::NumericString latin{"na\xc3\xafve caf\xe9"};
  orvo::midi::Note middle_c{60};
  orvo::midi::Note highest{255};
  orvo::LockingCodeReference nowhere;

  orvo::Lock plain{"plain"};
  orvo::RLock recursive{"recursive"};
  orvo::OrvoLock& any = recursive;
  orvo::Lock moved{"moved"};
  orvo::Lock target = std::move(moved);

  orvo::DebugLock free{"free"};
  orvo::DebugLock held{"held"};
  orvo::DebugRLock tree{"tree"};
  orvo::Lock watched{std::make_unique<CountingLock>("watched")};
  orvo::Lock unrecorded{std::make_unique<orvo::DebugLockImpl_>("unrecorded")};
};

}  // namespace

// Where the debugger stops.
__attribute__((noinline)) void Look(Values& values) {
  asm volatile("" : : "r"(&values) : "memory");
}

namespace {

void ShowValues() {
  Values values;
  values.recursive.lock();
  values.recursive.lock();
  values.held.LockWithFilenameAndLineNumber("Inspect", "kitchen.cpp", 11);
  values.tree.LockWithFilenameAndLineNumber(
      "Climb", "/no-such-directory/deep/down/in/it/tree.cpp", 12);
  values.tree.lock();
  values.watched.lock();
  // Takes the mutex without an entry in the books.
  values.unrecorded.TimedLock(0);
  Look(values);
  std::exit(0);
}

// Two threads want what the other one has. Around them stand others that have
// to do with locks, each in its own way.
void Hang() {
  orvo::DebugLock stove("stove");
  orvo::DebugLock counter("counter");
  orvo::DebugLock door("door");
  orvo::DebugLock cellar("cellar");
  orvo::DebugRLock recipe("recipe");
  orvo::Lock cell(std::make_unique<orvo::DebugLockImpl_>("cell"));
  orvo::Condition door_opened;
  orvo_test::Latch guest_has_door;
  orvo_test::Latch both_have_one(2);

  const orvo::DebugScopeLock reading(recipe, "Read", "kitchen.cpp", 21);
  recipe.lock();
  Start("butler", [&] { cellar.lock(); }).join();
  std::thread guest = Start("guest", [&] {
    const orvo::DebugScopeLock scope(door, "Knock", "kitchen.cpp", 31);
    guest_has_door.CountDown();
    door_opened.WaitWhileLocked(door);  // guest
  });
  // The guest lets go of the door when the wait has begun.
  guest_has_door.Wait();
  door.TryLockFor(std::chrono::hours(1));
  door.unlock();

  std::thread cook = Start("cook", [&] {
    const orvo::DebugScopeLock cooking(stove, "Cook", "kitchen.cpp", 41);
    both_have_one.Arrive();
    counter.LockWithFilenameAndLineNumber("Cook", "kitchen.cpp", 42);  // cook
    counter.unlock();
  });
  std::thread waiter = Start("", [&] {
    const orvo::DebugScopeLock serving(counter, "Serve", "kitchen.cpp", 51);
    both_have_one.Arrive();
    stove.lock();  // waiter
    stove.unlock();
  });
  std::thread hermit = Start("hermit", [&] {
    cell.lock();
    cell.lock();  // hermit
    cell.unlock();
  });
  std::thread apprentice = Start("apprentice", [&] {
    recipe.TryLockFor(std::chrono::hours(1));  // apprentice
    recipe.unlock();
  });
  for (std::thread* thread : {&guest, &cook, &waiter, &hermit, &apprentice}) {
    thread->join();
  }
}

}  // namespace

int main(int, char** argv) {
  orvo::threadNames.SetNameOfCurrentThread("main");
  argv[1] == std::string("hang") ? Hang() : ShowValues();
}

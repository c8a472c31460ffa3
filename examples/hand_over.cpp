// Waits for another thread, but not for ever, and in real time.
#include <chrono>
#include <iostream>
#include <string>
#include <thread>

#include "orvo/condition.h"
#include "orvo/debug_locks.h"
#include "orvo/scope_lock.h"

int main() {
  orvo::DebugLock lock("dish");
  orvo::Condition ready;
  std::string dish;  // guarded by lock

  orvo::ScopeLock scope(lock);
  const auto is_ready = [&] { return !dish.empty(); };
  if (!ready.WaitFor(lock, std::chrono::milliseconds(20), is_ready)) {
    std::cout << "no dish within 20 ms\n";
  }

  std::thread cook([&] {
    {
      const orvo::ScopeLock cooking(lock);
      dish = "soup";
    }
    ready.Signal(lock);  // takes the lock itself
  });
  ready.WaitUntilTrue(lock, is_ready);  // the lock is free meanwhile
  std::cout << dish << " is ready, " << lock.GetDepth() << " holder\n";
  scope.unlock();
  cook.join();
}

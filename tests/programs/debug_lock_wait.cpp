// Waits on a condition with a debug implementation behind a plain handle.
#include <future>
#include <memory>
#include <thread>

#include "orvo/condition.h"
#include "orvo/lock.h"
#include "orvo/orvo_lock_debug.h"
#include "orvo/scope_lock.h"
#include "orvo/thread_names.h"

int main() {
  orvo::Lock lock(std::make_unique<orvo::DebugLockImpl_>("orders"));
  orvo::Condition changed;
  bool ready = false;  // guarded by lock
  std::promise<void> about_to_wait;
  std::thread waiter([&] {
    orvo::threadNames.SetNameOfCurrentThread("waiter");
    const orvo::ScopeLock scope(lock);
    about_to_wait.set_value();
    while (!ready) changed.WaitWhileLocked(lock);
  });
  about_to_wait.get_future().wait();
  {
    const orvo::ScopeLock scope(lock);
    ready = true;
  }
  changed.Signal(lock);
  waiter.join();
}

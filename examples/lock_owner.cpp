// Asks a debug lock who holds it, how deep, and from where.
#include <iostream>

#include "orvo/debug_locks.h"
#include "orvo/scope_lock.h"
#include "orvo/thread_names.h"

int main() {
  orvo::threadNames.SetNameOfCurrentThread("cook");
  orvo::DebugRLock orders("orders");
  std::cout << orders.Describe() << "\n";
  {
    const orvo::DebugScopeLock outer(orders, "Serve", __FILE__, __LINE__);
    const orvo::DebugScopeLock inner(orders, "AddOrder", __FILE__, __LINE__);
    std::cout << orders.Describe() << "\n";
  }
  std::cout << orders.Describe() << "\n";

  orders.lock();
  orders.unlock();
  try {
    orders.unlock();
  } catch (const orvo::LockError& error) {
    std::cout << error.what() << "\n";
  }
}

// A thread releases a lock that another one holds.
#include <thread>

#include "orvo/orvo.h"

int main() {
  orvo::threadNames.SetNameOfCurrentThread("main");
  orvo::DebugLock settings("settings");
  const orvo::DebugScopeLock scope(settings, "main", __FILE__, __LINE__);

  std::thread worker([&] {
    orvo::threadNames.SetNameOfCurrentThread("worker");
    try {
      settings.unlock();
    } catch (const orvo::LockError& error) {
      orvo::CoutBuffer() << error.what() << orvo::endl
                         << settings.Describe() << orvo::endl;
    }
  });
  worker.join();
}

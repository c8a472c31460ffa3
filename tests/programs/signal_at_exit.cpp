// signal_at_exit: signals from main() and again when only the libraries are
// left, and writes the places that the lock hears of.
#include <cstdio>
#include <string>
#include <thread>

#include "orvo/condition.h"

namespace {

class PlacePrinter : public orvo::OrvoLock {
  void lock() override {}
  void unlock() override {}
  bool try_lock() override { return true; }
  pthread_mutex_t* get_mutex() override { return nullptr; }
  void SetOwner(const std::thread::id&) override {}
  void LockWithFilenameAndLineNumber(const std::string& function,
                                     const std::string& file, int) override {
    std::printf("%s %s\n", function.c_str(), file.c_str());
    std::fflush(stdout);
  }
  void SetPendingLockingCodeReference(const std::string&, const std::string&,
                                      int) override {}
  void SetWaitWillUnlock(bool, const std::string&, int) override {}
};

// Also runs after the destructors of objects that functions keep.
__attribute__((destructor)) void Signal() {
  PlacePrinter lock;
  orvo::Condition().Signal(lock);
}

}  // namespace

int main() {
  Signal();
}

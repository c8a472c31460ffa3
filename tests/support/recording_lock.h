#ifndef ORVO_TESTS_SUPPORT_RECORDING_LOCK_H_
#define ORVO_TESTS_SUPPORT_RECORDING_LOCK_H_

#include <pthread.h>

#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "orvo/errors.h"
#include "orvo/lock.h"

namespace orvo_test {

/// A lock over a real mutex that writes down how it is called.
class RecordingLock : public orvo::OrvoLock {
 public:
  RecordingLock() = default;
  RecordingLock(const RecordingLock&) = delete;
  RecordingLock& operator=(const RecordingLock&) = delete;
  ~RecordingLock() override { pthread_mutex_destroy(&mutex_); }

  void lock() override {
    Record("lock");
    pthread_mutex_lock(&mutex_);
  }
  void unlock() override {
    Record("unlock");
    pthread_mutex_unlock(&mutex_);
  }
  bool try_lock() override {
    Record("try_lock");
    return pthread_mutex_trylock(&mutex_) == 0;
  }
  pthread_mutex_t* get_mutex() override {
    Record("get_mutex");
    return &mutex_;
  }
  void SetOwner(const std::thread::id& owner) override {
    Record("SetOwner");
    owner_ = owner;
  }
  void LockWithFilenameAndLineNumber(const std::string& function,
                                     const std::string& file,
                                     int line) override {
    function_ = function;
    file_ = file;
    line_ = line;
    Record("LockWithFilenameAndLineNumber");
    pthread_mutex_lock(&mutex_);
  }
  void SetPendingLockingCodeReference(const std::string&, const std::string&,
                                      int) override {
    Record("SetPendingLockingCodeReference");
  }
  void SetWaitWillUnlock(bool waitWillUnlock, const std::string& file,
                         int line) override {
    file_ = file;
    line_ = line;
    Record(waitWillUnlock ? "SetWaitWillUnlock(true)"
                          : "SetWaitWillUnlock(false)");
  }
  void ThrowIfOwnedByThisThread() override {
    Record("ThrowIfOwnedByThisThread");
  }

  /// Lets every later call of this name throw LockError "no " + name.
  void Forbid(const std::string& call) { forbidden_ = call; }

  /// The calls so far, in order; forgets them.
  std::vector<std::string> TakeCalls() { return std::move(calls_); }

  /// What the latest call that has such parameters was given.
  const std::thread::id& owner() const { return owner_; }
  const std::string& function() const { return function_; }
  const std::string& file() const { return file_; }
  int line() const { return line_; }

 private:
  void Record(const std::string& call) {
    calls_.push_back(call);
    if (call == forbidden_) throw orvo::LockError("no " + call);
  }

  pthread_mutex_t mutex_ = PTHREAD_MUTEX_INITIALIZER;
  std::vector<std::string> calls_;
  std::string forbidden_;
  std::thread::id owner_;
  std::string function_;
  std::string file_;
  int line_ = 0;
};

}  // namespace orvo_test

#endif  // ORVO_TESTS_SUPPORT_RECORDING_LOCK_H_

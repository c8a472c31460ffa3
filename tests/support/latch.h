#ifndef ORVO_TESTS_SUPPORT_LATCH_H_
#define ORVO_TESTS_SUPPORT_LATCH_H_

#include <condition_variable>
#include <mutex>

namespace orvo_test {

/// Where threads meet: Wait() returns when CountDown() was called `count`
/// times.
class Latch {
 public:
  explicit Latch(int count = 1) : count_(count) {}

  void CountDown() {
    const std::lock_guard<std::mutex> guard(mutex_);
    if (--count_ <= 0) changed_.notify_all();
  }

  void Wait() {
    std::unique_lock<std::mutex> guard(mutex_);
    changed_.wait(guard, [this] { return count_ <= 0; });
  }

  /// Counts down and waits for all the others.
  void Arrive() {
    CountDown();
    Wait();
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  int count_;  // guarded by mutex_
};

}  // namespace orvo_test

#endif  // ORVO_TESTS_SUPPORT_LATCH_H_

#ifndef ORVO_TESTS_SUPPORT_HOLDER_H_
#define ORVO_TESTS_SUPPORT_HOLDER_H_

#include <thread>

#include "orvo/thread_names.h"
#include "tests/support/latch.h"

namespace orvo_test {

/// A named thread that holds a lock until it is told otherwise.
template <typename Lock>
class Holder {
 public:
  /// @param times  How often it takes the lock.
  explicit Holder(Lock& lock, int times = 1)
      : thread_([this, &lock, times] {
          orvo::threadNames.SetNameOfCurrentThread("holder");
          for (int i = 0; i < times; ++i) lock.lock();
          held_.CountDown();
          release_.Wait();
          for (int i = 0; i < times; ++i) lock.unlock();
          released_.CountDown();
        }) {
    held_.Wait();
  }
  Holder(const Holder&) = delete;
  Holder& operator=(const Holder&) = delete;
  ~Holder() {
    release_.CountDown();
    thread_.join();
  }

  std::thread::id id() const { return thread_.get_id(); }

  /// Returns when the lock is free.
  void Release() {
    release_.CountDown();
    released_.Wait();
  }

 private:
  Latch held_;
  Latch release_;
  Latch released_;
  std::thread thread_;
};

}  // namespace orvo_test

#endif  // ORVO_TESTS_SUPPORT_HOLDER_H_

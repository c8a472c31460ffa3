#ifndef ORVO_DEADLINE_H_
#define ORVO_DEADLINE_H_

/// @file
/// The end of a wait on the monotonic clock, for waits in real time.
///
/// Setting the system's clock neither shortens nor lengthens such a wait, and
/// no length of time is too large for it:
///
/// @code
/// lock.TryLockFor(std::chrono::milliseconds(1500));
/// changed.WaitUntil(lock, std::chrono::steady_clock::now() + length);
/// @endcode
///
/// A Deadline is a plain value; every function may be called from any thread.

#include <chrono>
#include <cmath>
#include <cstdint>
#include <ctime>
#include <limits>
#include <ratio>

#include "orvo/export.h"

namespace orvo {

/// A moment on the monotonic clock. Whatever lies before its start or beyond
/// its 292 years is moved to that limit.
///
/// @code
/// const auto deadline = orvo::Deadline::After(std::chrono::seconds(2));
/// @endcode
class ORVO_EXPORT Deadline {
 public:
  /// A length of time from now; fractions of a nanosecond are rounded up. 0,
  /// less and NaN are over already.
  template <typename Rep, typename Period>
  static Deadline After(const std::chrono::duration<Rep, Period>& length) {
    return AfterNanoseconds(Nanoseconds(length));
  }

  /// A time point of the steady clock.
  template <typename Duration>
  static Deadline
  At(const std::chrono::time_point<std::chrono::steady_clock, Duration>& time) {
    return Deadline(Nanoseconds(time.time_since_epoch()));
  }

  /// As the system takes it, with CLOCK_MONOTONIC.
  timespec GetAsTimespec() const;

 private:
  explicit Deadline(std::int64_t nanoseconds);

  static Deadline AfterNanoseconds(std::int64_t nanoseconds);

  template <typename Rep, typename Period>
  static std::int64_t Nanoseconds(
      const std::chrono::duration<Rep, Period>& length) {
    using Limits = std::numeric_limits<std::int64_t>;
    // Wide enough for all integers, and beyond them, where they would overflow.
    const long double count = std::ceil(
        std::chrono::duration<long double, std::nano>(length).count());
    if (count >= static_cast<long double>(Limits::max())) return Limits::max();
    return count > 0 ? static_cast<std::int64_t>(count) : 0;
  }

  std::int64_t nanoseconds_;  // since the start of the clock, never negative
};

}  // namespace orvo

#endif  // ORVO_DEADLINE_H_

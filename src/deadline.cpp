#include "orvo/deadline.h"

#include <algorithm>

namespace orvo {

Deadline::Deadline(std::int64_t nanoseconds) : nanoseconds_(nanoseconds) {}

Deadline Deadline::AfterNanoseconds(std::int64_t nanoseconds) {
  const Deadline now = At(std::chrono::steady_clock::now());
  const std::int64_t most =
      std::numeric_limits<std::int64_t>::max() - now.nanoseconds_;
  return Deadline(now.nanoseconds_ + std::min(nanoseconds, most));
}

timespec Deadline::GetAsTimespec() const {
  constexpr std::int64_t kSecond = 1000000000;
  timespec time{};
  time.tv_sec = nanoseconds_ / kSecond;
  time.tv_nsec = nanoseconds_ % kSecond;
  return time;
}

}  // namespace orvo

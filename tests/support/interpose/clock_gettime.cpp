#include "tests/support/interpose/calls.h"

namespace orvo_test {

Interposed<int(clockid_t, timespec*)> clock_gettime_calls("clock_gettime",
                                                          FailWithErrno);
const Registration registration_of_clock_gettime(clock_gettime_calls);

}  // namespace orvo_test

extern "C" int clock_gettime(clockid_t clock, timespec* time) noexcept {
  return orvo_test::clock_gettime_calls(clock, time);
}

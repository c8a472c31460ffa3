#include "tests/support/interpose/calls.h"

namespace orvo_test {

Interposed<std::tm*(const std::time_t*, std::tm*)> gmtime_r_calls(
    "gmtime_r", FailWithNull<std::tm*>);
const Registration registration_of_gmtime_r(gmtime_r_calls);

}  // namespace orvo_test

extern "C" std::tm* gmtime_r(const std::time_t* seconds,
                             std::tm* fields) noexcept {
  return orvo_test::gmtime_r_calls(seconds, fields);
}

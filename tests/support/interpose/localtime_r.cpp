#include "tests/support/interpose/calls.h"

namespace orvo_test {

Interposed<std::tm*(const std::time_t*, std::tm*)> localtime_r_calls(
    "localtime_r", FailWithNull<std::tm*>);
const Registration registration_of_localtime_r(localtime_r_calls);

}  // namespace orvo_test

extern "C" std::tm* localtime_r(const std::time_t* seconds,
                                std::tm* fields) noexcept {
  return orvo_test::localtime_r_calls(seconds, fields);
}

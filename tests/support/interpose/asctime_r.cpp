#include "tests/support/interpose/calls.h"

namespace orvo_test {

Interposed<char*(const std::tm*, char*)> asctime_r_calls("asctime_r",
                                                         FailWithNull<char*>);
const Registration registration_of_asctime_r(asctime_r_calls);

}  // namespace orvo_test

extern "C" char* asctime_r(const std::tm* fields, char* text) noexcept {
  return orvo_test::asctime_r_calls(fields, text);
}

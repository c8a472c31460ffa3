#include "tests/support/interpose/calls.h"

namespace orvo_test {

Interposed<std::time_t(std::time_t*)> time_calls("time", [](int error) {
  errno = error;
  return std::time_t{-1};
});
const Registration registration_of_time(time_calls);

}  // namespace orvo_test

extern "C" std::time_t time(std::time_t* seconds) noexcept {
  return orvo_test::time_calls(seconds);
}

#include "tests/support/interpose/calls.h"

namespace orvo_test {

Interposed<int(const timespec*, timespec*)> nanosleep_calls("nanosleep",
                                                            FailWithErrno);
const Registration registration_of_nanosleep(nanosleep_calls);

}  // namespace orvo_test

extern "C" int nanosleep(const timespec* request, timespec* remainder) {
  return orvo_test::nanosleep_calls(request, remainder);
}

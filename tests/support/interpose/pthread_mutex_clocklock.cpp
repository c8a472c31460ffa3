#include "tests/support/interpose/calls.h"

namespace orvo_test {

Interposed<int(pthread_mutex_t*, clockid_t, const timespec*)>
    pthread_mutex_clocklock_calls("pthread_mutex_clocklock", FailWithResult);
const Registration registration_of_pthread_mutex_clocklock(
    pthread_mutex_clocklock_calls);

}  // namespace orvo_test

extern "C" int pthread_mutex_clocklock(pthread_mutex_t* mutex, clockid_t clock,
                                       const timespec* deadline) noexcept {
  return orvo_test::pthread_mutex_clocklock_calls(mutex, clock, deadline);
}

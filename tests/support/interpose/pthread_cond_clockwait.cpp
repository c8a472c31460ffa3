#include "tests/support/interpose/calls.h"

namespace orvo_test {

Interposed<int(pthread_cond_t*, pthread_mutex_t*, clockid_t, const timespec*)>
    pthread_cond_clockwait_calls("pthread_cond_clockwait", FailWithResult);
const Registration registration_of_pthread_cond_clockwait(
    pthread_cond_clockwait_calls);

}  // namespace orvo_test

extern "C" int pthread_cond_clockwait(pthread_cond_t* condition,
                                      pthread_mutex_t* mutex, clockid_t clock,
                                      const timespec* deadline) {
  return orvo_test::pthread_cond_clockwait_calls(condition, mutex, clock,
                                                 deadline);
}

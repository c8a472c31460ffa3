#include "tests/support/interpose/calls.h"

namespace orvo_test {

Interposed<int(pthread_cond_t*, pthread_mutex_t*, const timespec*)>
    pthread_cond_timedwait_calls("pthread_cond_timedwait", FailWithResult);
const Registration registration_of_pthread_cond_timedwait(
    pthread_cond_timedwait_calls);

}  // namespace orvo_test

extern "C" int pthread_cond_timedwait(pthread_cond_t* condition,
                                      pthread_mutex_t* mutex,
                                      const timespec* deadline) {
  return orvo_test::pthread_cond_timedwait_calls(condition, mutex, deadline);
}

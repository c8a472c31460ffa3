#include "tests/support/interpose/calls.h"

namespace orvo_test {

Interposed<int(pthread_cond_t*, pthread_mutex_t*)> pthread_cond_wait_calls(
    "pthread_cond_wait", FailWithResult);
const Registration registration_of_pthread_cond_wait(pthread_cond_wait_calls);

}  // namespace orvo_test

extern "C" int pthread_cond_wait(pthread_cond_t* condition,
                                 pthread_mutex_t* mutex) {
  return orvo_test::pthread_cond_wait_calls(condition, mutex);
}

#include "tests/support/interpose/calls.h"

namespace orvo_test {

Interposed<int(pthread_mutex_t*, const pthread_mutexattr_t*)>
    pthread_mutex_init_calls("pthread_mutex_init", FailWithResult);
const Registration registration_of_pthread_mutex_init(pthread_mutex_init_calls);

}  // namespace orvo_test

extern "C" int pthread_mutex_init(
    pthread_mutex_t* mutex, const pthread_mutexattr_t* attributes) noexcept {
  return orvo_test::pthread_mutex_init_calls(mutex, attributes);
}

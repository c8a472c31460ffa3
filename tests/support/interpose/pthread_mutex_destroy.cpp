#include "tests/support/interpose/calls.h"

namespace orvo_test {

Interposed<int(pthread_mutex_t*)> pthread_mutex_destroy_calls(
    "pthread_mutex_destroy", FailWithResult);
const Registration registration_of_pthread_mutex_destroy(
    pthread_mutex_destroy_calls);

}  // namespace orvo_test

extern "C" int pthread_mutex_destroy(pthread_mutex_t* mutex) noexcept {
  return orvo_test::pthread_mutex_destroy_calls(mutex);
}

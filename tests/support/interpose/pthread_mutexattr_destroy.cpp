#include "tests/support/interpose/calls.h"

namespace orvo_test {

Interposed<int(pthread_mutexattr_t*)> pthread_mutexattr_destroy_calls(
    "pthread_mutexattr_destroy", FailWithResult);
const Registration registration_of_pthread_mutexattr_destroy(
    pthread_mutexattr_destroy_calls);

}  // namespace orvo_test

extern "C" int pthread_mutexattr_destroy(
    pthread_mutexattr_t* attributes) noexcept {
  return orvo_test::pthread_mutexattr_destroy_calls(attributes);
}

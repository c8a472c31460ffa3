#include "tests/support/interpose/calls.h"

namespace orvo_test {

Interposed<int(pthread_mutexattr_t*)> pthread_mutexattr_init_calls(
    "pthread_mutexattr_init", FailWithResult);
const Registration registration_of_pthread_mutexattr_init(
    pthread_mutexattr_init_calls);

}  // namespace orvo_test

extern "C" int pthread_mutexattr_init(
    pthread_mutexattr_t* attributes) noexcept {
  return orvo_test::pthread_mutexattr_init_calls(attributes);
}

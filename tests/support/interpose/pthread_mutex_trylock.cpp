#include "tests/support/interpose/calls.h"

namespace orvo_test {

Interposed<int(pthread_mutex_t*)> pthread_mutex_trylock_calls(
    "pthread_mutex_trylock", FailWithResult);
const Registration registration_of_pthread_mutex_trylock(
    pthread_mutex_trylock_calls);

}  // namespace orvo_test

extern "C" int pthread_mutex_trylock(pthread_mutex_t* mutex) noexcept {
  return orvo_test::pthread_mutex_trylock_calls(mutex);
}

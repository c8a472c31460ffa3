#include "tests/support/interpose/calls.h"

namespace orvo_test {

Interposed<int(pthread_mutex_t*)> pthread_mutex_lock_calls("pthread_mutex_lock",
                                                           FailWithResult);
const Registration registration_of_pthread_mutex_lock(pthread_mutex_lock_calls);

}  // namespace orvo_test

extern "C" int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
  return orvo_test::pthread_mutex_lock_calls(mutex);
}

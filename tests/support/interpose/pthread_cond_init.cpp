#include "tests/support/interpose/calls.h"

namespace orvo_test {

Interposed<int(pthread_cond_t*, const pthread_condattr_t*)>
    pthread_cond_init_calls("pthread_cond_init", FailWithResult);
const Registration registration_of_pthread_cond_init(pthread_cond_init_calls);

}  // namespace orvo_test

extern "C" int pthread_cond_init(
    pthread_cond_t* condition, const pthread_condattr_t* attributes) noexcept {
  return orvo_test::pthread_cond_init_calls(condition, attributes);
}

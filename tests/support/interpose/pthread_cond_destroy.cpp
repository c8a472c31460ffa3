#include "tests/support/interpose/calls.h"

namespace orvo_test {

Interposed<int(pthread_cond_t*)> pthread_cond_destroy_calls(
    "pthread_cond_destroy", FailWithResult);
const Registration registration_of_pthread_cond_destroy(
    pthread_cond_destroy_calls);

}  // namespace orvo_test

extern "C" int pthread_cond_destroy(pthread_cond_t* condition) noexcept {
  return orvo_test::pthread_cond_destroy_calls(condition);
}

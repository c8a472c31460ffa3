#include "tests/support/interpose/calls.h"

namespace orvo_test {

Interposed<int(pthread_cond_t*)> pthread_cond_broadcast_calls(
    "pthread_cond_broadcast", FailWithResult);
const Registration registration_of_pthread_cond_broadcast(
    pthread_cond_broadcast_calls);

}  // namespace orvo_test

extern "C" int pthread_cond_broadcast(pthread_cond_t* condition) noexcept {
  return orvo_test::pthread_cond_broadcast_calls(condition);
}

#include "tests/support/interpose/calls.h"

namespace orvo_test {

Interposed<int(pthread_mutexattr_t*, int)> pthread_mutexattr_settype_calls(
    "pthread_mutexattr_settype", FailWithResult);
const Registration registration_of_pthread_mutexattr_settype(
    pthread_mutexattr_settype_calls);

}  // namespace orvo_test

extern "C" int pthread_mutexattr_settype(pthread_mutexattr_t* attributes,
                                         int type) noexcept {
  return orvo_test::pthread_mutexattr_settype_calls(attributes, type);
}

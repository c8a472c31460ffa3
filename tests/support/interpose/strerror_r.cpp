#include "tests/support/interpose/calls.h"

namespace orvo_test {

Interposed<int(int, char*, std::size_t)> strerror_r_calls("__xpg_strerror_r",
                                                          FailWithResult);
const Registration registration_of_strerror_r(strerror_r_calls);

}  // namespace orvo_test

// glibc's name of the XSI variant.
extern "C" int __xpg_strerror_r(int errnum, char* buffer, std::size_t size) {
  return orvo_test::strerror_r_calls(errnum, buffer, size);
}

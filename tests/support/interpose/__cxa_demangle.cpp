#include "tests/support/interpose/calls.h"

namespace orvo_test {

Interposed<char*(const char*, char*, std::size_t*, int*)> cxa_demangle_calls(
    "__cxa_demangle", FailWithNull<char*>);
const Registration registration_of_cxa_demangle(cxa_demangle_calls);

}  // namespace orvo_test

// The runtime's name for it.
extern "C" char* __cxa_demangle(const char* name, char* buffer,
                                std::size_t* length, int* status) {
  return orvo_test::cxa_demangle_calls(name, buffer, length, status);
}

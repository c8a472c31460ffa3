#include "tests/support/interpose/calls.h"

namespace orvo_test {

Interposed<void*(std::size_t)> cxa_allocate_exception_calls(
    "__cxa_allocate_exception", FailWithNull<void*>);
const Registration registration_of_cxa_allocate_exception(
    cxa_allocate_exception_calls);

}  // namespace orvo_test

// The runtime's name for it.
extern "C" void* __cxa_allocate_exception(std::size_t size) noexcept {
  return orvo_test::cxa_allocate_exception_calls(size);
}

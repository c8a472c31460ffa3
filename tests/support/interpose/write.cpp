#include "tests/support/interpose/calls.h"

namespace orvo_test {
namespace {

ssize_t FailToWrite(int error) {
  errno = error;
  return -1;
}

}  // namespace

Interposed<ssize_t(int, const void*, std::size_t)> write_calls("write",
                                                               FailToWrite);
const Registration registration_of_write(write_calls);

}  // namespace orvo_test

extern "C" ssize_t write(int descriptor, const void* data, std::size_t size) {
  return orvo_test::write_calls(descriptor, data, size);
}

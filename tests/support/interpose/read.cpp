#include "tests/support/interpose/calls.h"

namespace orvo_test {
namespace {

ssize_t FailToRead(int error) {
  errno = error;
  return -1;
}

}  // namespace

Interposed<ssize_t(int, void*, std::size_t)> read_calls("read", FailToRead);
const Registration registration_of_read(read_calls);

}  // namespace orvo_test

extern "C" ssize_t read(int descriptor, void* data, std::size_t size) {
  return orvo_test::read_calls(descriptor, data, size);
}

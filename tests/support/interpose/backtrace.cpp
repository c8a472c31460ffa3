#include "tests/support/interpose/calls.h"

namespace orvo_test {
namespace {

// It has no errors; without a frame it returns 0.
int FindNoFrame(int) {
  return 0;
}

}  // namespace

Interposed<int(void**, int)> backtrace_calls("backtrace", FindNoFrame);
const Registration registration_of_backtrace(backtrace_calls);

}  // namespace orvo_test

extern "C" int backtrace(void** buffer, int size) {
  return orvo_test::backtrace_calls(buffer, size);
}

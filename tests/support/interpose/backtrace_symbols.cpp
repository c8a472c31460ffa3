
#include "tests/support/interpose/calls.h"

namespace orvo_test {

Interposed<char**(void* const*, int)> backtrace_symbols_calls(
    "backtrace_symbols", FailWithNull<char**>);
const Registration registration_of_backtrace_symbols(backtrace_symbols_calls);

}  // namespace orvo_test

extern "C" char** backtrace_symbols(void* const* buffer, int size) noexcept {
  return orvo_test::backtrace_symbols_calls(buffer, size);
}

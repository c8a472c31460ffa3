#include <cstdio>

#include "tests/support/interpose/calls.h"

namespace orvo_test {

Interposed<int(char*, std::size_t, const char*, va_list)> vsnprintf_calls(
    "vsnprintf", FailWithErrno);
const Registration registration_of_vsnprintf(vsnprintf_calls);

}  // namespace orvo_test

extern "C" int vsnprintf(char* buffer, std::size_t size, const char* format,
                         va_list arguments) noexcept {
  return orvo_test::vsnprintf_calls(buffer, size, format, arguments);
}

// What the library calls where its own build is fortified.
extern "C" int __vsnprintf_chk(char* buffer, std::size_t size, int, std::size_t,
                               const char* format, va_list arguments) noexcept {
  return orvo_test::vsnprintf_calls(buffer, size, format, arguments);
}

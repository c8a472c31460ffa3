#include <fcntl.h>

#include "tests/support/interpose/calls.h"

namespace orvo_test {

Interposed<int(const char*, int, mode_t)> open_calls("open", FailWithErrno);
const Registration registration_of_open(open_calls);

}  // namespace orvo_test

extern "C" int open(const char* path, int flags, ...) {
  mode_t mode = 0;
  if ((flags & (O_CREAT | __O_TMPFILE)) != 0) {
    va_list arguments;
    va_start(arguments, flags);
    mode = va_arg(arguments, mode_t);
    va_end(arguments);
  }
  return orvo_test::open_calls(path, flags, mode);
}

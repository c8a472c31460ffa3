#include "tests/support/interpose/calls.h"

namespace orvo_test {

Interposed<int(const char*, int, mode_t)> open_calls("open", FailWithErrno);
const Registration registration_of_open(open_calls);

}  // namespace orvo_test

// The system declares the mode as a variable argument, which only counts where
// the file may be created.
extern "C" int open(const char* path, int flags, mode_t mode) {
  return orvo_test::open_calls(path, flags, mode);
}

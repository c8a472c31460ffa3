#include "tests/support/interpose/calls.h"

namespace orvo_test {

Interposed<int(const char*, mode_t)> mkdir_calls("mkdir", FailWithErrno);
const Registration registration_of_mkdir(mkdir_calls);

}  // namespace orvo_test

extern "C" int mkdir(const char* path, mode_t mode) noexcept {
  return orvo_test::mkdir_calls(path, mode);
}

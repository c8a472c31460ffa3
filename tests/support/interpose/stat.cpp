#include "tests/support/interpose/calls.h"

namespace orvo_test {

Interposed<int(const char*, struct stat*)> stat_calls("stat", FailWithErrno);
const Registration registration_of_stat(stat_calls);

}  // namespace orvo_test

extern "C" int stat(const char* path, struct stat* status) noexcept {
  return orvo_test::stat_calls(path, status);
}

#include "tests/support/interpose/calls.h"

namespace orvo_test {

Interposed<int(DIR*)> closedir_calls("closedir", FailWithErrno);
const Registration registration_of_closedir(closedir_calls);

}  // namespace orvo_test

extern "C" int closedir(DIR* directory) {
  return orvo_test::closedir_calls(directory);
}

#include "tests/support/interpose/calls.h"

namespace orvo_test {

Interposed<int(DIR*)> closedir_calls("closedir", FailWithErrno);
const Registration registration_of_closedir(closedir_calls);

}  // namespace orvo_test

// A handle is gone even where its end is reported as a failure.
extern "C" int closedir(DIR* directory) {
  const int result = orvo_test::closedir_calls(directory);
  if (result != 0) {
    const int error = errno;
    orvo_test::closedir_calls.Real(directory);
    errno = error;
  }
  return result;
}

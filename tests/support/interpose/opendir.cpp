#include "tests/support/interpose/calls.h"

namespace orvo_test {

Interposed<DIR*(const char*)> opendir_calls("opendir", FailWithNull<DIR*>);
const Registration registration_of_opendir(opendir_calls);

}  // namespace orvo_test

extern "C" DIR* opendir(const char* path) {
  return orvo_test::opendir_calls(path);
}

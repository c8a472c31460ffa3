#include "tests/support/interpose/calls.h"

namespace orvo_test {

Interposed<dirent*(DIR*)> readdir_calls("readdir", FailWithNull<dirent*>);
const Registration registration_of_readdir(readdir_calls);

}  // namespace orvo_test

extern "C" dirent* readdir(DIR* directory) {
  return orvo_test::readdir_calls(directory);
}

#ifndef ORVO_TESTS_SUPPORT_EVERY_FAMILY_H_
#define ORVO_TESTS_SUPPORT_EVERY_FAMILY_H_

#include <string>

namespace orvo_test {

/// Uses every family of the library, in any thread and at any time of the
/// process.
///
/// Only listdir() is left out, because each call of it keeps a descriptor.
///
/// @param folder  Exists and can be written to.
/// @return        The first wrong answer, or "".
std::string UseEveryFamily(const std::string& folder);

}  // namespace orvo_test

#endif  // ORVO_TESTS_SUPPORT_EVERY_FAMILY_H_

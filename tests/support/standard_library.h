#ifndef ORVO_TESTS_SUPPORT_STANDARD_LIBRARY_H_
#define ORVO_TESTS_SUPPORT_STANDARD_LIBRARY_H_

#include <gtest/gtest.h>

/// Stands first in a test whose expectations are those of libstdc++: how its
/// streams read, how often its strings allocate.
#ifdef __GLIBCXX__
#define ORVO_NEEDS_LIBSTDCXX() static_cast<void>(0)
#else
#define ORVO_NEEDS_LIBSTDCXX() \
  GTEST_SKIP() << "The expectations are those of libstdc++."
#endif

#endif  // ORVO_TESTS_SUPPORT_STANDARD_LIBRARY_H_

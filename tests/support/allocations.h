#ifndef ORVO_TESTS_SUPPORT_ALLOCATIONS_H_
#define ORVO_TESTS_SUPPORT_ALLOCATIONS_H_

namespace orvo_test {

/// How often this thread has called operator new so far. Programs that ask
/// contain tests/support/allocations.cpp, which replaces operator new.
long CountAllocations();

}  // namespace orvo_test

#endif  // ORVO_TESTS_SUPPORT_ALLOCATIONS_H_

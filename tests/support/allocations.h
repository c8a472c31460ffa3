#ifndef ORVO_TESTS_SUPPORT_ALLOCATIONS_H_
#define ORVO_TESTS_SUPPORT_ALLOCATIONS_H_

namespace orvo_test {

/// How often this thread has called operator new so far. Programs that ask
/// contain tests/support/allocations.cpp, which replaces operator new.
long CountAllocations();

/// Makes operator new throw std::bad_alloc in this thread while the object
/// lives.
class ScopedAllocationFailure {
 public:
  /// @param after  How many allocations still succeed.
  explicit ScopedAllocationFailure(long after = 0);
  ScopedAllocationFailure(const ScopedAllocationFailure&) = delete;
  ScopedAllocationFailure& operator=(const ScopedAllocationFailure&) = delete;
  ~ScopedAllocationFailure();
};

}  // namespace orvo_test

#endif  // ORVO_TESTS_SUPPORT_ALLOCATIONS_H_

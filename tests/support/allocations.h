#ifndef ORVO_TESTS_SUPPORT_ALLOCATIONS_H_
#define ORVO_TESTS_SUPPORT_ALLOCATIONS_H_

/// @file
/// Memory that is counted and that runs out when a test says so. Programs that
/// ask contain tests/support/allocations.cpp, which replaces operator new.

namespace orvo_test {

/// How often this thread has called operator new so far.
long CountAllocations();

/// How many objects of operator new the whole process holds.
long CountLiveAllocations();

/// Makes operator new throw std::bad_alloc in this thread while the object
/// lives. A program that asks ten thousand times without avail exits with 1.
class ScopedAllocationFailure {
 public:
  /// @param after  How many allocations still succeed.
  /// @param times  How many fail then; -1 for all that follow.
  explicit ScopedAllocationFailure(long after = 0, long times = -1);
  ScopedAllocationFailure(const ScopedAllocationFailure&) = delete;
  ScopedAllocationFailure& operator=(const ScopedAllocationFailure&) = delete;
  ~ScopedAllocationFailure();

  /// How many allocations have failed so far.
  long count() const;
};

}  // namespace orvo_test

#endif  // ORVO_TESTS_SUPPORT_ALLOCATIONS_H_

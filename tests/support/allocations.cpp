#include "tests/support/allocations.h"

#include <cstdlib>
#include <limits>
#include <new>

namespace {

constexpr long kNever = std::numeric_limits<long>::max();

thread_local long allocations = 0;
thread_local long last_allocation = kNever;

}  // namespace

namespace orvo_test {

long CountAllocations() {
  return allocations;
}

ScopedAllocationFailure::ScopedAllocationFailure(long after) {
  last_allocation = allocations + after;
}

ScopedAllocationFailure::~ScopedAllocationFailure() {
  last_allocation = kNever;
}

}  // namespace orvo_test

void* operator new(std::size_t size) {
  if (allocations >= last_allocation) throw std::bad_alloc();
  ++allocations;
  if (void* const memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}

void* operator new[](std::size_t size) {
  return operator new(size);
}

void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete[](void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
  std::free(memory);
}

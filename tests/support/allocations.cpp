#include "tests/support/allocations.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <new>

namespace {

constexpr long kNever = std::numeric_limits<long>::max();
constexpr long kMostFailures = 10000;

std::atomic<long> live{0};
thread_local long allocations = 0;
thread_local long first_failure = kNever;  // counted like the allocations
thread_local long failures_left = 0;       // negative: without an end
thread_local long failures = 0;

bool FailsNow() {
  if (allocations < first_failure || failures_left == 0) return false;
  --failures_left;
  if (++failures > kMostFailures) {
    std::fputs("A call without memory tries for ever.\n", stderr);
    std::_Exit(EXIT_FAILURE);
  }
  return true;
}

void* Allocate(std::size_t size) {
  if (FailsNow()) return nullptr;
  ++allocations;
  void* const memory = std::malloc(size);
  if (memory != nullptr) ++live;
  return memory;
}

void Release(void* memory) {
  if (memory != nullptr) --live;
  std::free(memory);
}

}  // namespace

namespace orvo_test {

long CountAllocations() {
  return allocations;
}

long CountLiveAllocations() {
  return live;
}

ScopedAllocationFailure::ScopedAllocationFailure(long after, long times) {
  failures = 0;
  failures_left = times;
  first_failure = allocations + after;
}

ScopedAllocationFailure::~ScopedAllocationFailure() {
  first_failure = kNever;
}

long ScopedAllocationFailure::count() const {
  return failures;
}

}  // namespace orvo_test

void* operator new(std::size_t size) {
  if (void* const memory = Allocate(size)) return memory;
  throw std::bad_alloc();
}
void* operator new[](std::size_t size) {
  return operator new(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return Allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return Allocate(size);
}

void operator delete(void* memory) noexcept {
  Release(memory);
}
void operator delete[](void* memory) noexcept {
  Release(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  Release(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
  Release(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
  Release(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept {
  Release(memory);
}

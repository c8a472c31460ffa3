#include "tests/support/allocations.h"

#include <cstdlib>
#include <new>

namespace {

thread_local long allocations = 0;

}  // namespace

namespace orvo_test {

long CountAllocations() {
  return allocations;
}

}  // namespace orvo_test

void* operator new(std::size_t size) {
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

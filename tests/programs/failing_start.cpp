// ORVO_TEST_ALLOCATIONS=COUNT failing_start: has memory for only so many
// allocations until main() begins, and then uses what was made in between.
#include <cstdlib>
#include <new>

#include "orvo/orvo.h"

namespace {

long AllocationsBeforeMain() {
  const char* const count = std::getenv("ORVO_TEST_ALLOCATIONS");
  return count == nullptr ? 0 : std::atol(count);
}

bool started = false;

bool IsThereMemory() {
  static long left = AllocationsBeforeMain();
  return started || left-- > 0;
}

}  // namespace

void* operator new(std::size_t size) {
  void* const memory = IsThereMemory() ? std::malloc(size) : nullptr;
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}

int main() {
  started = true;
  orvo::CoutBuffer() << orvo::threadNames.GetNameOfCurrentThread() << " "
                     << orvo::path::mkdirErrorsByErrno.size() << " "
                     << orvo::StrGen::ascii_chars().size() << orvo::endl;
}

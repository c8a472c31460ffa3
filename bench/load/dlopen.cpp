// Prints the nanoseconds of processor time that dlopen() takes for the library
// of the first argument. A process of its own for each, because some libraries
// never leave a process again.
#include <dlfcn.h>

#include <ctime>
#include <iostream>

namespace {

long long ProcessorTime() {
  timespec now;
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return now.tv_sec * 1000000000LL + now.tv_nsec;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 1;
  const long long start = ProcessorTime();
  const void* const library = dlopen(argv[1], RTLD_NOW);
  const long long time = ProcessorTime() - start;
  if (library == nullptr) {
    std::cerr << dlerror() << '\n';
    return 1;
  }
  std::cout << time << '\n';
}

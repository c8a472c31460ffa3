// output_after_exit FILE: redirects the standard output and writes to std::cout
// once more when the library is already gone.
#include <cstdlib>
#include <iostream>

#include "orvo/thread_safe_ostream.h"

namespace {

void WriteLast(int, void*) {
  std::cout << "after the library" << std::endl;
}

void RegisterLastHandler() {
  on_exit(WriteLast, nullptr);
}

// Runs before the initialisers of the shared libraries, so that its handler
// runs after all of theirs. (One of atexit() would run with the program's own.)
__attribute__((section(".preinit_array"),
               used)) void (*const first)() = RegisterLastHandler;

}  // namespace

int main(int, char** argv) {
  orvo::RedirectCout(argv[1]);
  orvo::CoutBuffer() << "redirected" << orvo::endl;
}

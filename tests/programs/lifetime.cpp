// lifetime FOLDER: uses every family from the first initialiser to the last
// exit handler, and says on the standard error stream when.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "tests/support/every_family.h"

namespace {

const char* folder = nullptr;

void UseEverything(const char* when) {
  const std::string wrong = orvo_test::UseEveryFamily(folder);
  std::fprintf(stderr, "%s %s\n", when, wrong.empty() ? "ok" : wrong.c_str());
}

struct Caller {
  Caller() { UseEverything("constructor"); }
  Caller(const Caller&) = delete;
  Caller& operator=(const Caller&) = delete;
  ~Caller() { UseEverything("destructor"); }
};

// The system hands the arguments of main() to these functions, too.
__attribute__((constructor(200))) void CallFirst(int, char** argv, char**) {
  folder = argv[1];
  UseEverything("first");
}

__attribute__((destructor(200))) void CallLast() {
  UseEverything("last");
}

const Caller caller;

}  // namespace

int main() {
  std::atexit([] { UseEverything("handler"); });
  UseEverything("main");
}

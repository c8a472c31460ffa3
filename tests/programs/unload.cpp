// unload LIBRARY: loads the library twice, and succeeds if it goes each time,
// leaving the standard output as it was.
#include <dlfcn.h>

#include <cstdio>
#include <iostream>
#include <string>

namespace {

bool Fail(const char* what) {
  std::fprintf(stderr, "%s\n", what);
  return false;
}

bool LoadAndUnload(const char* path) {
  std::streambuf* const buffer = std::cout.rdbuf();
  void* const library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) return Fail(dlerror());
  void* const redirect = dlsym(
      library,
      "_ZN4orvo12RedirectCoutERKNSt7__cxx1112basic_stringIcSt11char_traitsIcES"
      "aIcEEE");
  if (redirect == nullptr) return Fail(dlerror());
  reinterpret_cast<void (*)(const std::string&)>(redirect)("/dev/null");
  if (std::cout.rdbuf() == buffer) return Fail("Nothing is redirected.");

  dlclose(library);
  if (std::cout.rdbuf() != buffer) return Fail("The redirection stays.");
  return dlopen(path, RTLD_NOW | RTLD_NOLOAD) == nullptr ||
         Fail("The library stays.");
}

}  // namespace

int main(int, char** argv) {
  for (int times = 0; times < 2; ++times) {
    if (!LoadAndUnload(argv[1])) return 1;
  }
}

// Loads the library, uses it and unloads it, again and again: it has to be gone
// each time, and to give all its memory and the standard output back.
//
//   load_torture LIBRARY [--cycles=N] [--twin=keeps_library]
//
// --twin=keeps_library does not unload it, which is a fault to be found.
#include <dlfcn.h>

#include <fstream>
#include <iostream>
#include <string>

#include "torture/support.h"

namespace {

using orvo_torture::Faults;
using orvo_torture::Options;

constexpr long kMebibyte = 1024 * 1024;

// Finds orvo::NAME by its name in the library.
template <typename Signature>
Signature* Find(void* library, const char* symbol, Faults& faults) {
  void* const found = dlsym(library, symbol);
  faults.Check(found != nullptr, symbol);
  return reinterpret_cast<Signature*>(found);
}

void Use(void* library, const std::string& output, Faults& faults) {
  auto* const redirect = Find<void(const std::string&)>(
      library,
      "_ZN4orvo12RedirectCoutERKNSt7__cxx1112basic_stringIcSt11char_traitsIcES"
      "aIcEEE",
      faults);
  auto* const now =
      Find<std::string()>(library, "_ZN4orvo13GetNowIso8601B5cxx11Ev", faults);
  auto* const print =
      Find<void(int)>(library, "_ZN4orvo15PrintStackTraceEi", faults);
  if (redirect == nullptr || now == nullptr || print == nullptr) return;
  redirect(output);
  print(3);
  faults.Check(now().size() == 20, "the library is of use");
}

bool IsLoaded() {
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);) {
    if (line.find("/liborvo") != std::string::npos) return true;
  }
  return false;
}

void RunCycle(const std::string& path, const std::string& output, bool keep,
              Faults& faults) {
  std::streambuf* const buffer = std::cout.rdbuf();
  void* const library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) return faults.Add(dlerror());
  Use(library, output, faults);
  if (!keep) dlclose(library);
  faults.Check(!IsLoaded(), "the library is unloaded");
  faults.Check(std::cout.rdbuf() == buffer,
               "the standard output is given back");
}

}  // namespace

int main(int argc, char** argv) {
  const Options options(argc, argv);
  if (argc < 2) return 2;
  const orvo_torture::Stopwatch watch;
  const orvo_torture::Folder folder;
  const long cycles = options.Number("cycles", 100);
  const bool keep = options.Text("twin") == "keeps_library";
  const long descriptors = orvo_torture::OpenDescriptors();
  Faults faults;
  long warm = 0;
  for (long cycle = 0; cycle < cycles; ++cycle) {
    RunCycle(argv[1], folder / "output", keep, faults);
    if (cycle == cycles / 5) warm = orvo_torture::ResidentBytes();
  }
  const long growth = orvo_torture::ResidentBytes() - warm;
  faults.Check(growth <= kMebibyte, "the memory stays flat");
  faults.Check(orvo_torture::OpenDescriptors() == descriptors,
               "no file stays open");
  orvo_torture::Report("load",
                       std::to_string(cycles) +
                           " loads and unloads, memory grew by " +
                           std::to_string(growth / 1024) + " KiB",
                       faults, watch);
  return orvo_torture::ExitStatus();
}

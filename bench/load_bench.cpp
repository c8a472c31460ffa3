// The time that the library takes to load, beside libraries that do some of its
// work and beside an empty one or none: by dlopen(), and at the start of a
// program.
#include <benchmark/benchmark.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <string>

namespace {

double Seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) +
         static_cast<double>(time.tv_usec) * 1e-6;
}

// Runs a program to its successful end; returns its seconds of processor time,
// on which other processes hardly tell.
double Run(const char* program, const std::string& argument, int output,
           char* const* environment) {
  char* const arguments[] = {const_cast<char*>(program),
                             const_cast<char*>(argument.c_str()), nullptr};
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
  pid_t child = 0;
  int status = 0;
  rusage usage;
  if (posix_spawn(&child, program, &actions, nullptr, arguments, environment) !=
          0 ||
      wait4(child, &status, 0, &usage) != child || status != 0) {
    std::cerr << program << " " << argument << " failed\n";
    std::exit(1);
  }
  posix_spawn_file_actions_destroy(&actions);
  return Seconds(usage.ru_utime) + Seconds(usage.ru_stime);
}

// Asks a process of its own how many seconds the library takes.
double LoadingTime(const std::string& library) {
  int ends[2];
  if (pipe(ends) != 0) std::abort();
  Run(ORVO_BENCH_DLOPEN, library, ends[1], environ);
  close(ends[1]);
  char answer[32] = {};
  const ssize_t size = read(ends[0], answer, sizeof answer - 1);
  close(ends[0]);
  if (size <= 0) std::abort();
  return std::atof(answer) * 1e-9;
}

void RegisterDlopen(const std::string& who, const std::string& library) {
  const std::string name = "load/dlopen/" + who + "/1";
  benchmark::RegisterBenchmark(name.c_str(), [library](
                                                 benchmark::State& state) {
    for (auto _ : state) state.SetIterationTime(LoadingTime(library));
  })->UseManualTime();
}

// A library of the build tree would be searched for in many folders, one that
// is installed is found at once: as by its path here.
void RegisterProcess(const std::string& who, const std::string& library) {
  const std::string name = "load/process/" + who + "/1";
  benchmark::RegisterBenchmark(
      name.c_str(),
      [preload = "LD_PRELOAD=" + library](benchmark::State& state) {
        char* const environment[] = {const_cast<char*>(preload.c_str()),
                                     nullptr};
        for (auto _ : state) {
          state.SetIterationTime(
              Run(ORVO_BENCH_PROCESS, "", STDOUT_FILENO, environment));
        }
      })
      ->UseManualTime()
      ->MinTime(0.04)
      ->Repetitions(21);
}

[[maybe_unused]] const bool registered = [] {
  const struct {
    const char* who;
    const char* library;
  } contenders[] = {
      {"orvo", ORVO_BENCH_LIBRARY},        {"absl", "libabsl_strings.so"},
      {"boost", "libboost_filesystem.so"}, {"fmt", "libfmt.so"},
      {"glib", "libglib-2.0.so"},          {"poco", "libPocoFoundation.so"},
      {"spdlog", "libspdlog.so"}};
  for (const auto& c : contenders) {
    RegisterDlopen(c.who, c.library);
    RegisterProcess(c.who, c.library);
  }
  RegisterDlopen("limit", ORVO_BENCH_EMPTY);
  RegisterProcess("limit", "");
  return true;
}();

}  // namespace

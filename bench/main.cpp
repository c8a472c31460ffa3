#include <benchmark/benchmark.h>

#include <iostream>
#include <memory>
#include <thread>

// Runs the benchmarks that the other sources of the program have registered.
int main(int argc, char** argv) {
  // The C library takes a mutex more cheaply until a process has had a second
  // thread; programs that use locks have had one.
  std::thread([] {}).join();

  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  // Some benchmarks own the standard output.
  const std::unique_ptr<benchmark::BenchmarkReporter> reporter(
      benchmark::CreateDefaultDisplayReporter());
  reporter->SetOutputStream(&std::cerr);
  reporter->SetErrorStream(&std::cerr);
  benchmark::RunSpecifiedBenchmarks(reporter.get());
}

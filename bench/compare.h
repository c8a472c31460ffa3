#ifndef ORVO_BENCH_COMPARE_H_
#define ORVO_BENCH_COMPARE_H_

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdlib>
#include <iostream>
#include <string>

namespace orvo_bench {

/// One way to do an operation: who does it, and a callable that returns its
/// result.
template <typename Run>
struct Contender {
  const char* who;
  Run run;
};
template <typename Run>
Contender(const char*, Run) -> Contender<Run>;

/// Registers contenders as "operation/who/size", after checking that all have
/// the same result.
template <typename First, typename... Others>
void Compare(const std::string& operation, std::size_t size,
             const Contender<First>& first,
             const Contender<Others>&... others) {
  const auto add = [&](const char* who, auto run) {
    if (!(run() == first.run())) {
      std::cerr << operation << ": " << who << " has another result\n";
      std::exit(1);
    }
    const std::string name = operation + "/" + who + "/" + std::to_string(size);
    benchmark::RegisterBenchmark(name.c_str(), [run](benchmark::State& state) {
      for (auto _ : state) benchmark::DoNotOptimize(run());
    });
  };
  add(first.who, first.run);
  (add(others.who, others.run), ...);
}

}  // namespace orvo_bench

#endif  // ORVO_BENCH_COMPARE_H_

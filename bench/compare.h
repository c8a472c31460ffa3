#ifndef ORVO_BENCH_COMPARE_H_
#define ORVO_BENCH_COMPARE_H_

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdlib>
#include <deque>
#include <iostream>
#include <string>
#include <utility>

namespace orvo_bench {

/// One way to do an operation: who does it, and a callable that returns its
/// result. Whoever cannot be beaten with the same result is called "limit".
template <typename Run>
struct Contender {
  const char* who;
  Run run;
};
template <typename Run>
Contender(const char*, Run) -> Contender<Run>;

/// Registers one contender as "operation/who/size".
template <typename Run>
benchmark::internal::Benchmark* Register(const std::string& operation,
                                         std::size_t size,
                                         const Contender<Run>& contender) {
  const std::string name =
      operation + "/" + contender.who + "/" + std::to_string(size);
  return benchmark::RegisterBenchmark(
      name.c_str(), [run = contender.run](benchmark::State& state) {
        for (auto _ : state) {
          // The input might have changed, for all that the compiler knows.
          benchmark::ClobberMemory();
          benchmark::DoNotOptimize(run());
        }
      });
}

/// Keeps a value for the life of the process, and the compiler from knowing it.
template <typename Value>
Value* Keep(Value value) {
  static std::deque<Value> kept;
  kept.push_back(std::move(value));
  benchmark::DoNotOptimize(kept);
  return &kept.back();
}

/// By the clock on the wall, because a thread that waits takes no other time.
inline void OnTwoThreads(benchmark::internal::Benchmark* registered) {
  registered->UseRealTime()->Threads(2);
}

/// Ends the program unless a contender has the expected result.
template <typename Result, typename Expected>
void RequireSame(const std::string& operation, const std::string& who,
                 const Result& result, const Expected& expected) {
  if (result == expected) return;
  std::cerr << operation << ": " << who << " has another result\n";
  std::exit(1);
}

/// Registers contenders after checking that all have the same result.
template <typename First, typename... Others>
void Compare(const std::string& operation, std::size_t size,
             const Contender<First>& first,
             const Contender<Others>&... others) {
  // A copy, because all may return the same object.
  const auto expected = first.run();
  const auto add = [&](const auto& contender) {
    RequireSame(operation, contender.who, contender.run(), expected);
    Register(operation, size, contender);
  };
  add(first);
  (add(others), ...);
}

}  // namespace orvo_bench

#endif  // ORVO_BENCH_COMPARE_H_

// Debug locks and scope locks beside the bare POSIX mutex and the standard
// library's.
#include <absl/strings/str_cat.h>
#include <absl/strings/str_join.h>
#include <absl/strings/str_split.h>
#include <absl/strings/string_view.h>
#include <benchmark/benchmark.h>
#include <pthread.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <mutex>
#include <sstream>
#include <string>
#include <vector>

#include "bench/locks.h"
#include "orvo/lock.h"
#include "orvo/orvo_lock_debug.h"
#include "orvo/scope_lock.h"

namespace {

using orvo_bench::LockPair;
using orvo_bench::NamedLock;
using orvo_bench::PlainMutex;
using orvo_bench::RecursiveMutex;
using orvo_bench::Shared;

struct DebugLock : orvo::DebugLockImpl_ {
  DebugLock() : DebugLockImpl_("bench") {}
};
struct DebugRLock : orvo::DebugRLockImpl_ {
  DebugRLock() : DebugRLockImpl_("bench") {}
};
BENCHMARK_TEMPLATE(LockPair, DebugLock)->Name("lock/debug/orvo/1");
BENCHMARK_TEMPLATE(LockPair, std::mutex)->Name("lock/debug/std/1");
BENCHMARK_TEMPLATE(LockPair, PlainMutex)->Name("lock/debug/limit/1");
BENCHMARK_TEMPLATE(LockPair, DebugLock)
    ->Name("lock/debug_contended/orvo/1")
    ->UseRealTime()
    ->Threads(2);
BENCHMARK_TEMPLATE(LockPair, std::mutex)
    ->Name("lock/debug_contended/std/1")
    ->UseRealTime()
    ->Threads(2);
BENCHMARK_TEMPLATE(LockPair, PlainMutex)
    ->Name("lock/debug_contended/limit/1")
    ->UseRealTime()
    ->Threads(2);

template <typename Lock>
void LockDeep(benchmark::State& state) {
  Lock& lock = Shared<Lock>();
  const auto depth = state.range(0);
  for (auto _ : state) {
    for (auto i = depth; i > 0; --i) lock.lock();
    benchmark::ClobberMemory();
    for (auto i = depth; i > 0; --i) lock.unlock();
  }
}
BENCHMARK_TEMPLATE(LockDeep, DebugRLock)
    ->Name("lock/debug_recursive/orvo")
    ->Arg(1)
    ->Arg(3);
BENCHMARK_TEMPLATE(LockDeep, std::recursive_mutex)
    ->Name("lock/debug_recursive/std")
    ->Arg(1)
    ->Arg(3);
BENCHMARK_TEMPLATE(LockDeep, RecursiveMutex)
    ->Name("lock/debug_recursive/limit")
    ->Arg(1)
    ->Arg(3);

void Scope(benchmark::State& state) {
  orvo::Lock& lock = Shared<NamedLock>();
  for (auto _ : state) {
    const orvo::ScopeLock scope(lock);
    benchmark::ClobberMemory();
  }
}
BENCHMARK(Scope)->Name("lock/scope/orvo/1");

template <typename Lock>
void ScopeStd(benchmark::State& state) {
  Lock& lock = Shared<Lock>();
  for (auto _ : state) {
    const std::unique_lock<Lock> scope(lock);
    benchmark::ClobberMemory();
  }
}
BENCHMARK_TEMPLATE(ScopeStd, std::mutex)->Name("lock/scope/std/1");
BENCHMARK_TEMPLATE(ScopeStd, PlainMutex)->Name("lock/scope/limit/1");

const std::string kFunction = "AddOrder";
const std::string kRoot = ORVO_BENCH_DEVELOPMENT_ROOT;
const std::string kFile = kRoot + "/src/shop/order_queue.cpp";

void ScopeWithReference(benchmark::State& state) {
  orvo::Lock& lock = Shared<NamedLock>();
  for (auto _ : state) {
    const orvo::DebugScopeLock scope(lock, kFunction, kFile, 62);
    benchmark::ClobberMemory();
  }
}
BENCHMARK(ScopeWithReference)->Name("lock/scope_with_reference/orvo/1");

// What a debug scope lock keeps, over the standard library's lock.
struct ReferencedScope {
  ReferencedScope(std::mutex& mutex, const std::string& function_name,
                  const std::string& file_name, int line_number)
      : function(function_name),
        file(file_name),
        line(line_number),
        scope(mutex) {}
  std::string function;
  std::string file;
  int line;
  std::unique_lock<std::mutex> scope;
};

void ScopeWithReferenceStd(benchmark::State& state) {
  std::mutex& mutex = Shared<std::mutex>();
  for (auto _ : state) {
    const ReferencedScope scope(mutex, kFunction, kFile, 62);
    benchmark::ClobberMemory();
  }
}
BENCHMARK(ScopeWithReferenceStd)->Name("lock/scope_with_reference/std/1");

std::string ReferenceText() {
  return orvo::LockingCodeReference(kFunction, kFile, 62).GetAsString();
}

std::string ReferenceTextStd() {
  std::ostringstream text;
  text << kFunction << " --> "
       << std::filesystem::path(kFile).lexically_relative(kRoot).native() << ":"
       << 62;
  return text.str();
}

std::string ReferenceTextAbsl() {
  const std::vector<absl::string_view> path = absl::StrSplit(kFile, '/');
  const std::vector<absl::string_view> root = absl::StrSplit(kRoot, '/');
  const auto differing =
      std::mismatch(path.begin(), path.end(), root.begin(), root.end()).first;
  return absl::StrCat(kFunction, " --> ",
                      absl::StrJoin(differing, path.end(), "/"), ":", 62);
}

template <std::string (*Text)()>
void Reference(benchmark::State& state) {
  if (Text() != "AddOrder --> src/shop/order_queue.cpp:62") {
    std::cerr << "Another text: " << Text() << "\n";
    std::abort();
  }
  for (auto _ : state) benchmark::DoNotOptimize(Text());
}
BENCHMARK_TEMPLATE(Reference, ReferenceText)
    ->Name("lock/reference_text/orvo/1");
BENCHMARK_TEMPLATE(Reference, ReferenceTextStd)
    ->Name("lock/reference_text/std/1");
BENCHMARK_TEMPLATE(Reference, ReferenceTextAbsl)
    ->Name("lock/reference_text/absl/1");

}  // namespace

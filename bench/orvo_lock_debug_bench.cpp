// Debug locks and scope locks beside the bare POSIX mutex and those of abseil,
// GLib and the standard library.
#include <absl/strings/str_cat.h>
#include <absl/strings/str_join.h>
#include <absl/strings/str_split.h>
#include <absl/strings/string_view.h>
#include <benchmark/benchmark.h>
#include <pthread.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <mutex>
#include <sstream>
#include <string>
#include <vector>

#include "bench/compare.h"
#include "bench/locks.h"
#include "orvo/lock.h"
#include "orvo/orvo_lock_debug.h"
#include "orvo/scope_lock.h"

namespace {

using orvo_bench::Compare;
using orvo_bench::Contender;
using orvo_bench::Keep;
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
BENCHMARK_TEMPLATE(ScopeStd, orvo_bench::AbslMutex)->Name("lock/scope/absl/1");
BENCHMARK_TEMPLATE(ScopeStd, orvo_bench::GlibMutex)->Name("lock/scope/glib/1");
BENCHMARK_TEMPLATE(ScopeStd, PlainMutex)->Name("lock/scope/limit/1");

constexpr int kDepths[] = {1, 4, 16};

void Depths(benchmark::internal::Benchmark* registered) {
  for (const int depth : kDepths) registered->Arg(depth);
}

const std::string kFunction = "AddOrder";
const std::string kRoot = ORVO_BENCH_DEVELOPMENT_ROOT;

// A source file this many folders below the development root.
std::string File(std::int64_t depth) {
  std::string file = kRoot;
  for (std::int64_t i = 0; i < depth; ++i) file += "/component";
  return file + "/order_queue.cpp";
}

void ScopeWithReference(benchmark::State& state) {
  orvo::Lock& lock = Shared<NamedLock>();
  const std::string file = File(state.range());
  for (auto _ : state) {
    const orvo::DebugScopeLock scope(lock, kFunction, file, 62);
    benchmark::ClobberMemory();
  }
}
BENCHMARK(ScopeWithReference)
    ->Name("lock/scope_with_reference/orvo")
    ->Apply(Depths);

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
  const std::string file = File(state.range());
  for (auto _ : state) {
    const ReferencedScope scope(mutex, kFunction, file, 62);
    benchmark::ClobberMemory();
  }
}
BENCHMARK(ScopeWithReferenceStd)
    ->Name("lock/scope_with_reference/std")
    ->Apply(Depths);

std::string ReferenceTextStd(const std::string& file) {
  std::ostringstream text;
  text << kFunction << " --> "
       << std::filesystem::path(file).lexically_relative(kRoot).native() << ":"
       << 62;
  return text.str();
}

std::string ReferenceTextAbsl(const std::string& file) {
  const std::vector<absl::string_view> path = absl::StrSplit(file, '/');
  const std::vector<absl::string_view> root = absl::StrSplit(kRoot, '/');
  const auto differing =
      std::mismatch(path.begin(), path.end(), root.begin(), root.end()).first;
  return absl::StrCat(kFunction, " --> ",
                      absl::StrJoin(differing, path.end(), "/"), ":", 62);
}

[[maybe_unused]] const bool registered = [] {
  for (const int depth : kDepths) {
    const auto* file = Keep(File(depth));
    Compare("lock/reference_text", static_cast<std::size_t>(depth),
            Contender{"orvo",
                      [=] {
                        return orvo::LockingCodeReference(kFunction, *file, 62)
                            .GetAsString();
                      }},
            Contender{"std", [=] { return ReferenceTextStd(*file); }},
            Contender{"absl", [=] { return ReferenceTextAbsl(*file); }});
  }
  return true;
}();

}  // namespace

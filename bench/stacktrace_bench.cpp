// Stack traces beside the system's own calls in a plain loop, their parser
// beside a composition of abseil's functions, and the runtime's demangler.
#include <absl/strings/numbers.h>
#include <absl/strings/str_cat.h>
#include <absl/strings/str_join.h>
#include <absl/strings/str_split.h>
#include <benchmark/benchmark.h>
#include <cxxabi.h>
#include <dlfcn.h>
#include <execinfo.h>

#include <algorithm>
#include <boost/core/demangle.hpp>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <iterator>
#include <list>
#include <memory>
#include <string>
#include <vector>

#include "orvo/stacktrace.h"

namespace bench_frames {

// Puts `levels` frames with names between its caller and the function.
__attribute__((noinline)) void CallFrom(int levels,
                                        const std::function<void()>& function) {
  if (levels > 0) {
    CallFrom(levels - 1, function);
  } else {
    function();
  }
  benchmark::ClobberMemory();
}

}  // namespace bench_frames

namespace {

struct Free {
  void operator()(void* memory) const { std::free(memory); }
};
using CText = std::unique_ptr<char, Free>;

void Check(bool agree, const std::string& name) {
  if (agree) return;
  std::fprintf(stderr, "%s has another result\n", name.c_str());
  std::abort();
}

std::string DemangleByRuntime(const char* symbol) {
  int status = 0;
  const CText text(abi::__cxa_demangle(symbol, nullptr, nullptr, &status));
  return status == 0 ? text.get() : symbol;
}

const char* BaseName(const char* path) {
  const char* const slash = std::strrchr(path, '/');
  return slash == nullptr ? path : slash + 1;
}

// The same texts without columns.
std::list<std::string> TraceInAPlainLoop(int depth) {
  std::vector<void*> addresses(static_cast<std::size_t>(depth) + 1);
  const int count = backtrace(addresses.data(), depth + 1);
  std::list<std::string> lines;
  for (int i = 1; i < count; ++i) {
    const char* const address =
        static_cast<char*>(addresses[static_cast<std::size_t>(i)]);
    Dl_info info;
    if (dladdr(address, &info) == 0) continue;
    const bool named = info.dli_sname != nullptr;
    const void* const start = named ? info.dli_saddr : info.dli_fbase;
    lines.push_back(
        absl::StrCat(i - 1, " ", BaseName(info.dli_fname), " 0x",
                     absl::Hex(reinterpret_cast<std::uintptr_t>(address)), " ",
                     named ? DemangleByRuntime(info.dli_sname) : "??", " + ",
                     address - static_cast<const char*>(start)));
  }
  return lines;
}

struct Parts {
  std::string number;
  std::string image;
  std::string address;
  std::string symbol;
  std::string offset;
};

Parts ParseWithAbseil(const std::string& line) {
  const std::vector<std::string> tokens =
      absl::StrSplit(line, ' ', absl::SkipEmpty());
  int number = 0;
  if ((tokens.size() != 6 && tokens.size() != 7) ||
      !absl::SimpleAtoi(tokens[0], &number)) {
    return {};
  }
  const bool one_name = tokens.size() == 6;
  return {absl::StrCat(number - 1), tokens[1], tokens[2],
          one_name ? DemangleByRuntime(tokens[3].c_str())
                   : absl::StrCat(tokens[3], " ", tokens[4]),
          tokens.back()};
}

bool Agree(const orvo::FrameParts& parts, const Parts& peer) {
  return parts.GetSuccess() && parts.GetFrameNumber() == peer.number &&
         parts.GetImage() == peer.image && parts.GetAddress() == peer.address &&
         parts.GetSymbol() == peer.symbol && parts.GetOffset() == peer.offset;
}

bool SameWithoutColumns(const std::string& line, const std::string& peer) {
  const std::vector<std::string> words =
      absl::StrSplit(line, ' ', absl::SkipEmpty());
  return absl::StrJoin(words, " ") == peer;
}

void RegisterTrace() {
  for (const int depth : {5, 20}) {
    const std::string tail = "/" + std::to_string(depth);
    bench_frames::CallFrom(depth + 2, [depth] {
      const std::list<std::string> lines = orvo::GetStackTrace(depth);
      const std::list<std::string> peers = TraceInAPlainLoop(depth);
      Check(lines.size() == peers.size(), "stacktrace/get");
      // The innermost frame is not at the same place in the two calls.
      Check(std::equal(std::next(lines.begin()), lines.end(),
                       std::next(peers.begin()), SameWithoutColumns),
            "stacktrace/get");
    });
    benchmark::RegisterBenchmark(
        ("stacktrace/get/orvo" + tail).c_str(),
        [depth](benchmark::State& state) {
          bench_frames::CallFrom(depth + 2, [&state, depth] {
            for (auto _ : state) {
              benchmark::DoNotOptimize(orvo::GetStackTrace(depth));
            }
          });
        });
    benchmark::RegisterBenchmark(
        ("stacktrace/get/system" + tail).c_str(),
        [depth](benchmark::State& state) {
          bench_frames::CallFrom(depth + 2, [&state, depth] {
            for (auto _ : state) {
              benchmark::DoNotOptimize(TraceInAPlainLoop(depth));
            }
          });
        });
  }
}

void RegisterFrameParts() {
  for (const char* const text :
       {"4   shop                 0x000000010f1a2b3c   main + 41",
        "4   shop                 0x000000010f1a2b3c   Accept clone + 41",
        "4   shop                 0x000000010f1a2b3c   _ZN4shop6AcceptEi + "
        "41"}) {
    const std::string line = text;
    const std::string tail = "/" + std::to_string(line.size());
    Check(Agree(orvo::FrameParts(line), ParseWithAbseil(line)), line);
    benchmark::RegisterBenchmark(
        ("stacktrace/frame_parts/orvo" + tail).c_str(),
        [line](benchmark::State& state) {
          for (auto _ : state) {
            benchmark::DoNotOptimize(orvo::FrameParts(line));
          }
        });
    benchmark::RegisterBenchmark(
        ("stacktrace/frame_parts/absl" + tail).c_str(),
        [line](benchmark::State& state) {
          for (auto _ : state) benchmark::DoNotOptimize(ParseWithAbseil(line));
        });
  }
}

template <typename Way>
void RegisterDemangler(const std::string& name, const std::string& symbol,
                       Way way) {
  Check(way(symbol) == DemangleByRuntime(symbol.c_str()), name);
  benchmark::RegisterBenchmark(
      (name + "/" + std::to_string(symbol.size())).c_str(),
      [symbol, way](benchmark::State& state) {
        for (auto _ : state) benchmark::DoNotOptimize(way(symbol));
      });
}

void RegisterDemanglers() {
  const struct {
    const char* operation;
    const char* symbol;
  } cases[] = {
      {"stacktrace/demangle/", "_ZN4shop6AcceptEi"},
      {"stacktrace/demangle/",
       "_ZNSt6vectorINSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEESaIS5_"
       "EE9push_backERKS5_"},
      {"stacktrace/demangle/",
       "_ZNSt8_Rb_treeINSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEESt4p"
       "airIKS5_St6vectorIS5_SaIS5_EEESt10_Select1stISA_ESt4lessIS5_ESaISA_EE29"
       "_M_get_insert_hint_unique_posESt23_Rb_tree_const_iteratorISA_ERS7_"},
      {"stacktrace/demangle_plain/", "main"},
      {"stacktrace/demangle_plain/", "pthread_mutex_lock"},
  };
  for (const auto& c : cases) {
    const std::string operation = c.operation;
    RegisterDemangler(operation + "orvo", c.symbol, orvo::Demangle);
    RegisterDemangler(operation + "boost", c.symbol,
                      [](const std::string& symbol) {
                        return boost::core::demangle(symbol.c_str());
                      });
    RegisterDemangler(operation + "limit", c.symbol,
                      [](const std::string& symbol) {
                        return DemangleByRuntime(symbol.c_str());
                      });
  }
}

[[maybe_unused]] const bool registered = [] {
  RegisterTrace();
  RegisterFrameParts();
  RegisterDemanglers();
  return true;
}();

}  // namespace

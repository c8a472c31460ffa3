// printf-style text and pieces of text beside fmt, abseil and the bare system
// formatter.
#include <absl/strings/str_cat.h>
#include <absl/strings/str_format.h>
#include <benchmark/benchmark.h>
#include <fmt/format.h>
#include <fmt/printf.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "orvo/format.h"

namespace {

// What the system's formatter needs for a text that fits on the stack. The
// formats come from the benchmarks below.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
template <typename... Arguments>
std::string Vsnprintf(const char* format, Arguments... arguments) {
  char buffer[4096];
  const int size = std::snprintf(buffer, sizeof buffer, format, arguments...);
  return std::string(buffer, static_cast<std::size_t>(size));
}
#pragma GCC diagnostic pop

// Times each way of making one text, once all are known to agree.
template <typename Way>
void Register(const std::string& name, const std::string& expected, Way way) {
  if (way() != expected) {
    std::fprintf(stderr, "%s makes another text\n", name.c_str());
    std::abort();
  }
  benchmark::RegisterBenchmark(name.c_str(), [way](benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(way());
  });
}

void RegisterFastFormatter() {
  static long fraction = 123456789;
  benchmark::DoNotOptimize(fraction);
  const std::string text = "123456789";
  const std::string name = "format/fast_formatter/";
  Register(name + "orvo", text,
           [] { return FastFormatter<10>("%09ld", fraction); });
  Register(name + "absl", text,
           [] { return absl::StrFormat("%09ld", fraction); });
  Register(name + "fmt_printf", text,
           [] { return fmt::sprintf("%09ld", fraction); });
  Register(name + "limit", text, [] { return Vsnprintf("%09ld", fraction); });
}

void RegisterConcatenate() {
  static const std::string seconds = "2026-11-15T21-19-56";
  static std::string fraction = "123456789";
  benchmark::DoNotOptimize(fraction);
  const std::string text = "2026-11-15T21-19-56.123456789Z";
  const std::string name = "format/concatenate/";
  // One target throughout, which grows in the check alone.
  static std::string target;
  Register(name + "orvo", text, []() -> const std::string& {
    return *Concatenate(&(target = seconds), ".", fraction, "Z");
  });
  Register(name + "absl", text, []() -> const std::string& {
    absl::StrAppend(&(target = seconds), ".", fraction, "Z");
    return target;
  });
  Register(name + "std", text, []() -> const std::string& {
    return (target = seconds).append(".").append(fraction).append("Z");
  });
}

const bool registered = [] {
  RegisterFastFormatter();
  RegisterConcatenate();
  return true;
}();

}  // namespace

// printf-style text beside fmt, abseil and the bare system formatter.
#include <absl/strings/str_cat.h>
#include <absl/strings/str_format.h>
#include <benchmark/benchmark.h>
#include <fmt/format.h>
#include <fmt/printf.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <system_error>

#include "orvo/format.h"
#include "orvo/operation_log.h"

namespace {

// What the system's formatter needs with a first buffer of 256 characters. The
// formats come from the benchmarks below.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
template <typename... Arguments>
std::string Vsnprintf(const char* format, Arguments... arguments) {
  char buffer[256];
  const int length = std::snprintf(buffer, sizeof buffer, format, arguments...);
  const auto size = static_cast<std::size_t>(length);
  if (size < sizeof buffer) return std::string(buffer, size);
  std::string text(size, '\0');
  std::snprintf(text.data(), size + 1, format, arguments...);
  return text;
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

void RegisterInts() {
  static int a = 12345;
  static int b = -678;
  benchmark::DoNotOptimize(a);
  const std::string text = "12345--678";
  const std::string name = "format/two_ints/";
  Register(name + "orvo", text, [] { return orvo::format("%d-%d", a, b); });
  Register(name + "absl", text, [] { return absl::StrFormat("%d-%d", a, b); });
  Register(name + "fmt_printf", text,
           [] { return fmt::sprintf("%d-%d", a, b); });
  Register(name + "limit", text, [] { return Vsnprintf("%d-%d", a, b); });

  const std::string dynamic = "format/two_ints_string_format/";
  static const std::string format = "%d-%d";
  Register(dynamic + "orvo", text, [] { return orvo::format(format, a, b); });
  Register(dynamic + "fmt_printf", text,
           [] { return fmt::sprintf(format, a, b); });
  Register(dynamic + "limit", text,
           [] { return Vsnprintf(format.c_str(), a, b); });
}

void RegisterStrings() {
  for (const std::size_t size : {8U, 64U, 255U, 256U, 1000U}) {
    const auto* text = new std::string(size, 'x');
    const std::string tail = "/" + std::to_string(size);
    Register("format/string/orvo" + tail, *text,
             [text] { return orvo::format("%s", text->c_str()); });
    Register("format/string/absl" + tail, *text,
             [text] { return absl::StrFormat("%s", text->c_str()); });
    Register("format/string/limit" + tail, *text,
             [text] { return Vsnprintf("%s", text->c_str()); });
  }
}

void RegisterLogLines() {
  static const char* const file = "src/server/connection.cpp";
  static int line = 1234;
  benchmark::DoNotOptimize(line);
  for (const std::size_t size : {40U, 400U}) {
    const auto* what = new std::string(size, 'x');
    const std::string tail = "/" + std::to_string(size);
    const std::string text = "src/server/connection.cpp line 1234: " + *what;
    Register("format/log_line/orvo" + tail, text, [what] {
      return orvo::format("%s line %d: %s", file, line, what->c_str());
    });
    Register("format/log_line/absl" + tail, text, [what] {
      return absl::StrFormat("%s line %d: %s", file, line, what->c_str());
    });
    Register("format/log_line/fmt_printf" + tail, text, [what] {
      return fmt::sprintf("%s line %d: %s", file, line, what->c_str());
    });
    Register("format/log_line/limit" + tail, text, [what] {
      return Vsnprintf("%s line %d: %s", file, line, what->c_str());
    });
  }
}

void RegisterFailureMessages() {
  static const std::string what = "reading the header of the tag";
  static const std::string details = "the file ends after 5 bytes";
  const std::string text =
      "src/reader.cpp line 77: Error reading the header of the tag.\n"
      "        the file ends after 5 bytes";
  const std::string name = "format/failure_message/";
  Register(name + "orvo", text, [] {
    return orvo::CreateFailureMessage("src/reader.cpp", 77, what, details);
  });
  Register(name + "absl", text, [] {
    std::string message = absl::StrFormat("%s line %d: Error %s.",
                                          "src/reader.cpp", 77, what.c_str());
    absl::StrAppend(&message, "\n        ", details);
    return message;
  });
  Register(name + "limit", text, [] {
    return Vsnprintf("%s line %d: Error %s.", "src/reader.cpp", 77,
                     what.c_str()) +
           ("\n        " + details);
  });
}

void RegisterDoubles() {
  static double value = 3.14159265358979;
  benchmark::DoNotOptimize(value);
  Register("format/double/orvo", "3.141593",
           [] { return orvo::format("%f", value); });
  Register("format/double/limit", "3.141593",
           [] { return Vsnprintf("%f", value); });
}

void RegisterErrorTexts() {
  const std::string text("No such file or directory");
  Register("format/errmsg/orvo", text + std::string(256 - text.size(), '\0'),
           [] { return orvo::errmsg(ENOENT); });
  Register("format/errmsg/std", text,
           [] { return std::system_category().message(ENOENT); });
  Register("format/errmsg/limit", text + std::string(256 - text.size(), '\0'),
           [] {
             char buffer[256] = {};
             const char* const found = strerror_r(ENOENT, buffer, 256);
             if (found != buffer) std::strcpy(buffer, found);
             return std::string(buffer, sizeof buffer);
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
  RegisterInts();
  RegisterStrings();
  RegisterLogLines();
  RegisterFailureMessages();
  RegisterDoubles();
  RegisterErrorTexts();
  RegisterFastFormatter();
  RegisterConcatenate();
  return true;
}();

}  // namespace

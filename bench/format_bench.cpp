// printf-style text beside fmt, abseil and the bare system formatter.
#include <absl/strings/str_cat.h>
#include <absl/strings/str_format.h>
#include <benchmark/benchmark.h>
#include <fmt/format.h>
#include <fmt/printf.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <system_error>
#include <utility>

#include "bench/compare.h"
#include "orvo/format.h"
#include "orvo/operation_log.h"

namespace {

using orvo_bench::Compare;
using orvo_bench::Contender;
using orvo_bench::Keep;

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

void AddInts() {
  for (const auto& [first, second] : {std::pair(1, 2), std::pair(12345, -678),
                                      std::pair(-2147483647 - 1, 2147483647)}) {
    const int* a = Keep(first);
    const int* b = Keep(second);
    const std::size_t size = Vsnprintf("%d-%d", *a, *b).size();
    Compare("format/two_ints", size,
            Contender{"orvo", [=] { return orvo::format("%d-%d", *a, *b); }},
            Contender{"absl", [=] { return absl::StrFormat("%d-%d", *a, *b); }},
            Contender{"fmt", [=] { return fmt::sprintf("%d-%d", *a, *b); }},
            Contender{"limit", [=] { return Vsnprintf("%d-%d", *a, *b); }});

    const auto* format = Keep<std::string>("%d-%d");
    Compare(
        "format/two_ints_string_format", size,
        Contender{"orvo", [=] { return orvo::format(*format, *a, *b); }},
        Contender{"fmt", [=] { return fmt::sprintf(*format, *a, *b); }},
        Contender{"limit", [=] { return Vsnprintf(format->c_str(), *a, *b); }});
  }
}

void AddStrings() {
  for (const std::size_t size : {8U, 64U, 255U, 256U, 1000U}) {
    const char* text = Keep(std::string(size, 'x'))->c_str();
    Compare("format/string", size,
            Contender{"orvo", [=] { return orvo::format("%s", text); }},
            Contender{"absl", [=] { return absl::StrFormat("%s", text); }},
            Contender{"fmt", [=] { return fmt::sprintf("%s", text); }},
            Contender{"limit", [=] { return Vsnprintf("%s", text); }});
  }
}

void AddLogLines() {
  static constexpr char kFile[] = "src/server/connection.cpp";
  const int* line = Keep(1234);
  for (const std::size_t size : {8U, 40U, 400U, 4000U}) {
    const char* what = Keep(std::string(size, 'x'))->c_str();
    Compare(
        "format/log_line", size,
        Contender{
            "orvo",
            [=] { return orvo::format("%s line %d: %s", kFile, *line, what); }},
        Contender{"absl",
                  [=] {
                    return absl::StrFormat("%s line %d: %s", kFile, *line,
                                           what);
                  }},
        Contender{
            "fmt",
            [=] { return fmt::sprintf("%s line %d: %s", kFile, *line, what); }},
        Contender{"limit", [=] {
                    return Vsnprintf("%s line %d: %s",
                                     static_cast<const char*>(kFile), *line,
                                     what);
                  }});
  }
}

void AddFailureMessages() {
  static constexpr char kFile[] = "src/reader.cpp";
  const int* line = Keep(77);
  const auto* what = Keep<std::string>("reading the header of the tag");
  for (const std::size_t size : {27U, 200U, 2000U}) {
    const auto* details = Keep(std::string(size, 'x'));
    Compare(
        "format/failure_message", size,
        Contender{"orvo",
                  [=] {
                    return orvo::CreateFailureMessage(
                        kFile, static_cast<unsigned>(*line), *what, *details);
                  }},
        Contender{"absl",
                  [=] {
                    return absl::StrFormat("%s line %d: Error %s.\n        %s",
                                           kFile, *line, *what, *details);
                  }},
        Contender{"fmt",
                  [=] {
                    return fmt::sprintf("%s line %d: Error %s.\n        %s",
                                        kFile, *line, *what, *details);
                  }},
        Contender{"limit", [=] {
                    return Vsnprintf("%s line %d: Error %s.",
                                     static_cast<const char*>(kFile), *line,
                                     what->c_str()) +
                           ("\n        " + *details);
                  }});
  }
}

void AddDoubles() {
  for (const double number : {3.14159265358979, 1234567890.5, -1.5e100}) {
    const double* value = Keep(number);
    Compare("format/double", Vsnprintf("%f", number).size(),
            Contender{"orvo", [=] { return orvo::format("%f", *value); }},
            Contender{"absl", [=] { return absl::StrFormat("%f", *value); }},
            Contender{"fmt", [=] { return fmt::sprintf("%f", *value); }},
            Contender{"limit", [=] { return Vsnprintf("%f", *value); }});
  }
}

// The result is 256 characters long, the rest of them NUL.
void AddErrorTexts() {
  for (const int number : {EPERM, ENOENT, EILSEQ}) {
    const int* error = Keep(number);
    const std::size_t size = std::system_category().message(number).size();
    Compare("format/errmsg", size,
            Contender{"orvo", [=] { return orvo::errmsg(*error); }},
            Contender{"std",
                      [=] {
                        std::string text =
                            std::system_category().message(*error);
                        text.resize(256);
                        return text;
                      }},
            Contender{"limit", [=] {
                        char buffer[256] = {};
                        const char* const found =
                            strerror_r(*error, buffer, sizeof buffer);
                        if (found != buffer) std::strcpy(buffer, found);
                        return std::string(buffer, sizeof buffer);
                      }});
  }
}

void AddFastFormatter() {
  for (const long number : {7L, 123456789L, 123456789012345678L}) {
    const long* value = Keep(number);
    Compare(
        "format/fast_formatter", std::to_string(number).size(),
        Contender{"orvo", [=] { return FastFormatter<20>("%09ld", *value); }},
        Contender{"absl", [=] { return absl::StrFormat("%09ld", *value); }},
        Contender{"fmt", [=] { return fmt::sprintf("%09ld", *value); }},
        Contender{"limit", [=] { return Vsnprintf("%09ld", *value); }});
  }
}

void AddConcatenate() {
  const auto* seconds = Keep<std::string>("2026-11-15T21-19-56");
  for (const std::size_t size : {9U, 100U, 1000U}) {
    const auto* fraction = Keep(std::string(size, '7'));
    // One target throughout, which grows in the check alone.
    auto* const target = Keep<std::string>("");
    Compare("format/concatenate", size,
            Contender{"orvo",
                      [=]() -> const std::string& {
                        return *Concatenate(&(*target = *seconds), ".",
                                            *fraction, "Z");
                      }},
            Contender{"absl",
                      [=]() -> const std::string& {
                        absl::StrAppend(&(*target = *seconds), ".", *fraction,
                                        "Z");
                        return *target;
                      }},
            Contender{"std", [=]() -> const std::string& {
                        return (*target = *seconds)
                            .append(".")
                            .append(*fraction)
                            .append("Z");
                      }});
  }
}

const bool registered = [] {
  AddInts();
  AddStrings();
  AddLogLines();
  AddFailureMessages();
  AddDoubles();
  AddErrorTexts();
  AddFastFormatter();
  AddConcatenate();
  return true;
}();

}  // namespace

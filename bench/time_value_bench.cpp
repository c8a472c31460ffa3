// Clock readings, conversions and calendar texts beside abseil, fmt, POCO, the
// standard library and the bare system calls.
#include <Poco/DateTimeFormatter.h>
#include <Poco/Timestamp.h>
#include <absl/time/clock.h>
#include <absl/time/time.h>
#include <benchmark/benchmark.h>
#include <fmt/chrono.h>

#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <iomanip>
#include <sstream>
#include <string>
#include <thread>
#include <utility>

#include "bench/compare.h"
#include "orvo/time_value.h"

namespace {

using orvo::TimeValue;
using std::chrono::nanoseconds;

// 2026-11-15T21:19:56.123456789; rounding and cutting agree on its seconds.
constexpr long long kCount = 1794777596123456789;
constexpr std::time_t kSeconds = 1794777596;

// Registers a call of which each result is another one.
template <typename Way>
benchmark::internal::Benchmark* RegisterCall(const std::string& name, Way way) {
  return benchmark::RegisterBenchmark(name.c_str(),
                                      [way](benchmark::State& state) {
                                        for (auto _ : state)
                                          benchmark::DoNotOptimize(way());
                                      });
}

// Times each way of making one result of one input, once all are known to
// agree.
template <typename Input, typename Result, typename Way>
void Register(const std::string& name, Input input, const Result& expected,
              Way way) {
  if (way(input) != expected) {
    std::fprintf(stderr, "%s makes another result\n", name.c_str());
    std::abort();
  }
  benchmark::RegisterBenchmark(name.c_str(),
                               [input, way](benchmark::State& state) {
                                 // Read anew each time; hiding the value itself
                                 // would send a double through a slow register.
                                 const Input* given = &input;
                                 for (auto _ : state) {
                                   benchmark::DoNotOptimize(given);
                                   benchmark::DoNotOptimize(way(*given));
                                 }
                               });
}

// What a program without the library writes.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
std::string Strftime(std::time_t seconds, const char* layout) {
  std::tm fields{};
  gmtime_r(&seconds, &fields);
  char text[32];
  return std::string(text, strftime(text, sizeof text, layout, &fields));
}
#pragma GCC diagnostic pop

void RegisterClock() {
  for (const int threads : {1, 2}) {
    const auto add = [&](const std::string& who, auto way) {
      auto* const made = RegisterCall("time/now/" + who, way);
      if (threads == 2) orvo_bench::OnTwoThreads(made);
    };
    add("orvo", [] { return TimeValue::GetNow(); });
    add("absl", [] { return absl::Now(); });
    add("poco", [] { return Poco::Timestamp(); });
    add("limit", [] { return std::chrono::steady_clock::now(); });
  }
  RegisterCall("time/now_double/orvo",
               [] { return TimeValue::GetNowDouble(); });
  RegisterCall("time/now_double/limit", [] {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double>(now).count();
  });

  RegisterCall("time/now_iso/orvo", [] { return orvo::GetNowIso8601(); });
  RegisterCall("time/now_iso/strftime", [] {
    return Strftime(
        std::chrono::system_clock::to_time_t(std::chrono::system_clock::now()),
        "%Y-%m-%dT%H-%M-%SZ");
  });
  RegisterCall("time/now_iso/absl", [] {
    return absl::FormatTime("%Y-%m-%dT%H-%M-%SZ", absl::Now(),
                            absl::UTCTimeZone());
  });
}

void RegisterReading() {
  const TimeValue time = nanoseconds(kCount);
  const absl::Duration duration = absl::Nanoseconds(kCount);

  Register("time/as_seconds/orvo", time, 1794777596LL,
           [](const TimeValue& t) { return t.GetAsSeconds(); });
  Register(
      "time/as_seconds/absl", duration, 1794777596LL,
      [](absl::Duration t) { return std::llround(absl::ToDoubleSeconds(t)); });
  Register("time/as_seconds/limit", kCount, 1794777596LL, [](long long count) {
    return std::llround(static_cast<double>(count) / 1e9);
  });

  Register("time/as_microseconds/orvo", time, 1794777596123457LL,
           [](const TimeValue& t) { return t.GetAsMicroseconds(); });
  Register("time/as_microseconds/absl", duration, 1794777596123457LL,
           [](absl::Duration t) {
             return std::llround(absl::ToDoubleMicroseconds(t));
           });
  Register("time/as_microseconds/limit", kCount, 1794777596123457LL,
           [](long long count) {
             return std::llround(static_cast<double>(count) / 1000.0);
           });

  const double seconds = 1794777596.123456789;
  Register("time/as_double/orvo", time, seconds,
           [](const TimeValue& t) { return t.GetAsDouble(); });
  Register("time/as_double/absl", duration, seconds,
           [](absl::Duration t) { return absl::ToDoubleSeconds(t); });
  Register(
      "time/as_double/limit", nanoseconds(kCount), seconds,
      [](nanoseconds t) { return std::chrono::duration<double>(t).count(); });

  using Parts = std::pair<long, long>;
  const Parts timespec_parts(kSeconds, 123456789);
  const auto parts_of_timespec = [](const timespec& t) {
    return Parts(t.tv_sec, t.tv_nsec);
  };
  Register(
      "time/as_timespec/orvo", time, timespec_parts,
      [=](const TimeValue& t) { return parts_of_timespec(t.GetAsTimespec()); });
  Register(
      "time/as_timespec/absl", duration, timespec_parts,
      [=](absl::Duration t) { return parts_of_timespec(absl::ToTimespec(t)); });
  Register("time/as_timespec/limit", nanoseconds(kCount), timespec_parts,
           [](nanoseconds t) {
             const auto whole =
                 std::chrono::duration_cast<std::chrono::seconds>(t);
             return Parts(whole.count(), (t - whole).count());
           });

  const Parts timeval_parts(kSeconds, 123457);
  Register("time/as_timeval/orvo", time, timeval_parts, [](const TimeValue& t) {
    const timeval parts = t.GetAsTimeval();
    return Parts(parts.tv_sec, parts.tv_usec);
  });
  Register("time/as_timeval/absl", duration, timeval_parts,
           [](absl::Duration t) {
             // It cuts; half a microsecond more makes it round.
             const timeval parts = absl::ToTimeval(t + absl::Nanoseconds(500));
             return Parts(parts.tv_sec, parts.tv_usec);
           });
  Register("time/as_timeval/std", kCount, timeval_parts, [](long long count) {
    const long whole = count / 1000000000;
    const auto rest = static_cast<double>(count - whole * 1000000000);
    return Parts(whole, std::lround(rest / 1000.0));
  });
}

void RegisterArithmetic() {
  Register("time/from_double/orvo", 1.7, TimeValue(nanoseconds(1700000000)),
           [](double seconds) { return TimeValue(seconds); });
  Register("time/from_double/absl", 1.7, absl::Nanoseconds(1700000000),
           [](double seconds) { return absl::Seconds(seconds); });
  Register(
      "time/from_double/std", 1.7, nanoseconds(1700000000),
      [](double seconds) { return nanoseconds(std::llround(seconds * 1e9)); });

  using Pair = std::pair<long long, long long>;
  const Pair pair(kCount, 1794777590000000000);
  const auto subtract = [](const auto& p) { return p.first - p.second; };
  const nanoseconds difference(6123456789);
  Register("time/subtract/orvo",
           std::pair<TimeValue, TimeValue>(nanoseconds(pair.first),
                                           nanoseconds(pair.second)),
           TimeValue(difference), subtract);
  Register(
      "time/subtract/absl",
      std::pair(absl::Nanoseconds(pair.first), absl::Nanoseconds(pair.second)),
      absl::FromChrono(difference), subtract);
  Register("time/subtract/limit",
           std::pair(nanoseconds(pair.first), nanoseconds(pair.second)),
           difference, subtract);
}

void RegisterTexts() {
  const TimeValue time = nanoseconds(kCount);
  const absl::Time absl_time = absl::FromUnixNanos(kCount);

  const std::string iso = "2026-11-15T21-19-56Z";
  Register("time/iso/orvo", time, iso,
           [](const TimeValue& t) { return t.GetAsIso8601(); });
  Register("time/iso/strftime", kSeconds, iso,
           [](std::time_t t) { return Strftime(t, "%Y-%m-%dT%H-%M-%SZ"); });
  Register("time/iso/absl", absl_time, iso, [](absl::Time t) {
    return absl::FormatTime("%Y-%m-%dT%H-%M-%SZ", t, absl::UTCTimeZone());
  });
  Register("time/iso/fmt", kSeconds, iso, [](std::time_t t) {
    return fmt::format("{:%Y-%m-%dT%H-%M-%SZ}", fmt::gmtime(t));
  });

  const std::string colons = "2026-11-15T21:19:56Z";
  Register("time/iso_colon/orvo", time, colons, [](const TimeValue& t) {
    return t.GetAsIso8601WithColonTimeSeparator();
  });
  Register("time/iso_colon/strftime", kSeconds, colons,
           [](std::time_t t) { return Strftime(t, "%Y-%m-%dT%H:%M:%SZ"); });
  Register("time/iso_colon/absl", absl_time, colons, [](absl::Time t) {
    return absl::FormatTime("%Y-%m-%dT%H:%M:%SZ", t, absl::UTCTimeZone());
  });
  Register("time/iso_colon/fmt", kSeconds, colons, [](std::time_t t) {
    return fmt::format("{:%Y-%m-%dT%H:%M:%SZ}", fmt::gmtime(t));
  });
  Register("time/iso_colon/poco", Poco::Timestamp(kCount / 1000), colons,
           [](const Poco::Timestamp& t) {
             return Poco::DateTimeFormatter::format(t, "%Y-%m-%dT%H:%M:%SZ");
           });

  const std::string precise = "2026-11-15T21-19-56.123456789Z";
  Register("time/iso_precise/orvo", time, precise,
           [](const TimeValue& t) { return t.GetAsIso8601Precise(9); });
  Register("time/iso_precise/strftime", kCount, precise, [](long long count) {
    char fraction[16];
    std::snprintf(fraction, sizeof fraction, ".%09lldZ", count % 1000000000);
    return Strftime(count / 1000000000, "%Y-%m-%dT%H-%M-%S") + fraction;
  });
  Register("time/iso_precise/absl", absl_time, precise, [](absl::Time t) {
    return absl::FormatTime("%Y-%m-%dT%H-%M-%E9SZ", t, absl::UTCTimeZone());
  });
  Register("time/iso_precise/fmt", kCount, precise, [](long long count) {
    return fmt::format("{:%Y-%m-%dT%H-%M-%S}.{:09}Z",
                       fmt::gmtime(count / 1000000000), count % 1000000000);
  });
}

void RegisterCalendar() {
  const auto read_utc = [](const long& seconds) {
    std::tm fields{};
    gmtime_r(&seconds, &fields);
    return fields.tm_sec;
  };
  for (const int threads : {1, 2}) {
    const auto add = [&](const std::string& who, auto way) {
      auto* const made = RegisterCall("time/gmtime/" + who, way);
      if (threads == 2) orvo_bench::OnTwoThreads(made);
    };
    add("orvo", [] {
      std::tm fields{};
      orvo::GmtimeSafe(kSeconds, &fields);
      return fields;
    });
    add("gmtime_r", [] {
      std::tm fields{};
      return gmtime_r(&kSeconds, &fields) != nullptr ? fields : std::tm();
    });
  }

  Register("time/localtime/orvo", kSeconds, read_utc(kSeconds),
           [](const long& seconds) {
             std::tm fields{};
             orvo::LocaltimeSafe(seconds, &fields);
             return fields.tm_sec;
           });
  Register("time/localtime/limit", kSeconds, read_utc(kSeconds),
           [](const long& seconds) {
             std::tm fields{};
             localtime_r(&seconds, &fields);
             return fields.tm_sec;
           });

  RegisterCall("time/current_time/orvo", [] { return orvo::current_time(); });
  RegisterCall("time/current_time/asctime_r", [] {
    const std::time_t now = std::time(nullptr);
    std::tm fields{};
    localtime_r(&now, &fields);
    char text[32];
    return std::string(asctime_r(&fields, text));
  });
}

// Times writing to a stream that is made once and emptied each time.
template <typename Write>
void RegisterStream(const std::string& name, Write write) {
  std::ostringstream os;
  write(os, nanoseconds(kCount));
  if (os.str() != "1794777596.123457") std::abort();
  benchmark::RegisterBenchmark(name.c_str(), [write](benchmark::State& state) {
    std::ostringstream stream;
    const TimeValue time = nanoseconds(kCount);
    for (auto _ : state) {
      stream.seekp(0);
      write(stream, time);
    }
  });
}

void RegisterStreams() {
  RegisterStream("time/stream/orvo",
                 [](std::ostream& os, const TimeValue& t) { os << t; });
  RegisterStream("time/stream/std", [](std::ostream& os, const TimeValue& t) {
    const timeval parts = t.GetAsTimeval();
    os << parts.tv_sec << "." << std::setfill('0') << std::setw(6)
       << parts.tv_usec;
  });
  RegisterStream("time/stream/fmt", [](std::ostream& os, const TimeValue& t) {
    const timeval parts = t.GetAsTimeval();
    os << fmt::format("{}.{:06}", parts.tv_sec, parts.tv_usec);
  });
  RegisterStream("time/stream/limit", [](std::ostream& os, const TimeValue& t) {
    const timeval parts = t.GetAsTimeval();
    char text[32];
    char* end = std::to_chars(text, text + 12, parts.tv_sec).ptr;
    *end = '.';
    // A digit in front keeps the leading zeros, and the point replaces it.
    std::to_chars(end, end + 8, 1000000 + parts.tv_usec);
    *end = '.';
    os.fill('0');
    os.write(text, end + 7 - text);
  });
}

void RegisterSleeps() {
  for (const unsigned int milliseconds : {0U, 1U}) {
    const std::string tail = "/" + std::to_string(milliseconds);
    RegisterCall("time/sleep/orvo" + tail, [milliseconds] {
      orvo::Sleep(milliseconds);
      return 0;
    })->UseRealTime();
    RegisterCall("time/sleep/std" + tail, [milliseconds] {
      std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
      return 0;
    })->UseRealTime();
    RegisterCall("time/sleep/limit" + tail, [milliseconds] {
      timespec request{0, milliseconds * 1000000L};
      return nanosleep(&request, &request);
    })->UseRealTime();
  }
}

const bool registered = [] {
  RegisterClock();
  RegisterReading();
  RegisterArithmetic();
  RegisterTexts();
  RegisterCalendar();
  RegisterStreams();
  RegisterSleeps();
  return true;
}();

}  // namespace

// Calendar fields and texts of times, with the system's own strftime().
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <ctime>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "orvo/errors.h"
#include "orvo/time_value.h"
#include "tests/support/interpose/calls.h"
#include "tests/support/time_zone.h"

namespace {

using orvo::TimeValue;
using orvo_test::ScopedHook;
using orvo_test::ScopedTimeZone;
using std::chrono::nanoseconds;
using testing::MatchesRegex;
using testing::ThrowsMessage;

constexpr char kCentralEurope[] = "CET-1CEST,M3.5.0,M10.5.0/3";

TEST(GetAsIso8601, WritesUtcForFileNames) {
  EXPECT_EQ(TimeValue(0).GetAsIso8601(), "1970-01-01T00-00-00Z");
  EXPECT_EQ(TimeValue(1794777596).GetAsIso8601(), "2026-11-15T21-19-56Z");
}

TEST(GetAsIso8601, WritesColonsWhereAskedTo) {
  EXPECT_EQ(TimeValue(0).GetAsIso8601WithColonTimeSeparator(),
            "1970-01-01T00:00:00Z");
  EXPECT_EQ(TimeValue(1794777596).GetAsIso8601WithColonTimeSeparator(),
            "2026-11-15T21:19:56Z");
}

TEST(GetAsIso8601, RoundsToTheNearestSecond) {
  const struct {
    double seconds;
    const char* text;
  } cases[] = {
      {1.6, "1970-01-01T00-00-02Z"},
      {1.5, "1970-01-01T00-00-02Z"},
      {1.4, "1970-01-01T00-00-01Z"},
      {-0.4, "1970-01-01T00-00-00Z"},
      {-0.5, "1969-12-31T23-59-59Z"},
      {-1.5, "1969-12-31T23-59-58Z"},
      {946684799.5, "2000-01-01T00-00-00Z"},
      {951782399.4, "2000-02-28T23-59-59Z"},
      {951782399.5, "2000-02-29T00-00-00Z"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.seconds);
    EXPECT_EQ(TimeValue(c.seconds).GetAsIso8601(), c.text);
  }
}

TEST(GetAsIso8601, ReachesBothEndsOfTheRange) {
  const TimeValue min = nanoseconds::min();
  const TimeValue max = nanoseconds::max();
  EXPECT_EQ(min.GetAsIso8601(), "1677-09-21T00-12-43Z");
  EXPECT_EQ(max.GetAsIso8601(), "2262-04-11T23-47-17Z");
  EXPECT_EQ(min.GetAsIso8601Precise(9), "1677-09-21T00-12-44.-854775808Z");
  EXPECT_EQ(max.GetAsIso8601Precise(9), "2262-04-11T23-47-16.854775807Z");
}

TEST(GetAsIso8601, TakesALayoutOfItsOwn) {
  const TimeValue time(1794777596);
  EXPECT_EQ(time.GetAsIso8601_("%d.%m."), "15.11.Z");
  EXPECT_EQ(time.GetAsIso8601_("123456789012345678901234567890"),
            "123456789012345678901234567890Z");
}

TEST(GetAsIso8601, ThrowsForALayoutWithoutRoom) {
  EXPECT_THAT(
      [] { TimeValue(0).GetAsIso8601_("1234567890123456789012345678901"); },
      ThrowsMessage<orvo::TimeValueError>("Time to string conversion failed."));
  EXPECT_THAT(
      [] { TimeValue(0).GetAsIso8601_(""); },
      ThrowsMessage<orvo::TimeValueError>("Time to string conversion failed."));
}

TEST(GetAsIso8601, DoesNotDependOnTheTimeZone) {
  const ScopedTimeZone zone(kCentralEurope);
  EXPECT_EQ(TimeValue(0).GetAsIso8601(), "1970-01-01T00-00-00Z");
  EXPECT_EQ(TimeValue(1783000000).GetAsIso8601Precise(1),
            "2026-07-02T13-46-40.0Z");
}

TEST(GetAsIso8601Precise, CutsTheFractionInsteadOfRoundingIt) {
  const TimeValue time = nanoseconds(1987654321);
  const struct {
    unsigned long digits;
    const char* text;
  } cases[] = {
      {0, "1970-01-01T00-00-01.Z"},
      {1, "1970-01-01T00-00-01.9Z"},
      {2, "1970-01-01T00-00-01.98Z"},
      {3, "1970-01-01T00-00-01.987Z"},
      {8, "1970-01-01T00-00-01.98765432Z"},
      {9, "1970-01-01T00-00-01.987654321Z"},
      {10, "1970-01-01T00-00-01.987654321Z"},
      {20, "1970-01-01T00-00-01.987654321Z"},
      {std::numeric_limits<unsigned long>::max(),
       "1970-01-01T00-00-01.987654321Z"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.digits);
    EXPECT_EQ(time.GetAsIso8601Precise(c.digits), c.text);
  }
}

TEST(GetAsIso8601Precise, KeepsLeadingZeros) {
  EXPECT_EQ(TimeValue(0).GetAsIso8601Precise(9),
            "1970-01-01T00-00-00.000000000Z");
  EXPECT_EQ(TimeValue(nanoseconds(1000000007)).GetAsIso8601Precise(9),
            "1970-01-01T00-00-01.000000007Z");
  EXPECT_EQ(TimeValue(1.6).GetAsIso8601Precise(1), "1970-01-01T00-00-01.6Z");
}

TEST(GetAsIso8601Precise, GivesTheFractionItsSignBefore1970) {
  const struct {
    long long count;
    unsigned long digits;
    const char* text;
  } cases[] = {
      {-1500000000, 9, "1969-12-31T23-59-59.-500000000Z"},
      {-1500000000, 20, "1969-12-31T23-59-59.-500000000Z"},
      {-1500000000, 8, "1969-12-31T23-59-59.-5000000Z"},
      {-1500000000, 3, "1969-12-31T23-59-59.-50Z"},
      {-1500000000, 1, "1969-12-31T23-59-59.-Z"},
      {-1500000000, 0, "1969-12-31T23-59-59.Z"},
      {-5, 9, "1970-01-01T00-00-00.-00000005Z"},
      {-1000000000, 9, "1969-12-31T23-59-59.000000000Z"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.count << ", " << c.digits);
    EXPECT_EQ(TimeValue(nanoseconds(c.count)).GetAsIso8601Precise(c.digits),
              c.text);
  }
}

// The texts by the system's own functions.
std::string Model(std::time_t seconds, const char* layout) {
  std::tm fields{};
  gmtime_r(&seconds, &fields);
  char text[32];
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  return std::string(text, strftime(text, sizeof text, layout, &fields));
#pragma GCC diagnostic pop
}

TEST(Iso8601, IsWhatTheSystemWrites) {
  constexpr unsigned int seed = 20261115;
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  std::mt19937_64 random(seed);  // NOLINT(cert-msc*): the same in every run
  for (int i = 0; i < 20000; ++i) {
    const TimeValue time = nanoseconds(static_cast<long>(random()));
    SCOPED_TRACE(time.GetAsDuration().count());
    const timespec parts = time.GetAsTimespec();
    char fraction[16];
    std::snprintf(fraction, sizeof fraction, ".%09ldZ", parts.tv_nsec);
    EXPECT_EQ(time.GetAsIso8601(),
              Model(time.GetAsSeconds(), "%Y-%m-%dT%H-%M-%SZ"));
    EXPECT_EQ(time.GetAsIso8601WithColonTimeSeparator(),
              Model(time.GetAsSeconds(), "%Y-%m-%dT%H:%M:%SZ"));
    EXPECT_EQ(time.GetAsIso8601Precise(9),
              Model(parts.tv_sec, "%Y-%m-%dT%H-%M-%S") + fraction);
  }
}

TEST(Iso8601, IsWhatTheSystemWritesForAnyFields) {
  const struct {
    const char* what;
    int std::tm::*field;
    std::vector<int> values;
  } cases[] = {
      {"year",
       &std::tm::tm_year,
       {-99999, -1905, -1900, -1893, -902, -901, -900, 8099, 8100, 99999}},
      {"month", &std::tm::tm_mon, {-1, 0, 11, 12, 99}},
      {"day", &std::tm::tm_mday, {-1, 0, 1, 31, 32, 100}},
      {"hour", &std::tm::tm_hour, {-1, 0, 23, 24, 100}},
      {"minute", &std::tm::tm_min, {-1, 0, 59, 60, 100}},
      {"second", &std::tm::tm_sec, {-1, 0, 59, 60, 61, 100}},
  };
  for (const auto& c : cases) {
    for (const int value : c.values) {
      SCOPED_TRACE(testing::Message() << c.what << " " << value);
      std::tm given{};
      given.tm_year = 126;
      given.tm_mon = 10;
      given.tm_mday = 15;
      given.*c.field = value;
      const ScopedHook hook(orvo_test::gmtime_r_calls,
                            [&](const std::time_t*, std::tm* fields) {
                              *fields = given;
                              return fields;
                            });
      EXPECT_EQ(TimeValue(0).GetAsIso8601(), Model(0, "%Y-%m-%dT%H-%M-%SZ"));
      EXPECT_EQ(TimeValue(0).GetAsIso8601WithColonTimeSeparator(),
                Model(0, "%Y-%m-%dT%H:%M:%SZ"));
      EXPECT_EQ(TimeValue(0).GetAsIso8601Precise(0),
                Model(0, "%Y-%m-%dT%H-%M-%S.Z"));
    }
  }
}

TEST(GetNowIso8601, IsTheCurrentTime) {
  const std::string before = TimeValue::GetNow().GetAsIso8601();
  const std::string now = orvo::GetNowIso8601();
  EXPECT_THAT(now, MatchesRegex("[0-9]{4}-[0-9]{2}-[0-9]{2}T"
                                "[0-9]{2}-[0-9]{2}-[0-9]{2}Z"));
  EXPECT_LE(before, now);
  EXPECT_LE(now, TimeValue::GetNow().GetAsIso8601());
}

// The day of the week as a number, for names follow the locale.
std::string Shown(const std::tm& fields) {
  char text[64];
  strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S %w %j", &fields);
  return text;
}

TEST(GmtimeSafe, BreaksTimesDown) {
  std::tm fields{};
  orvo::GmtimeSafe(0, &fields);
  EXPECT_EQ(Shown(fields), "1970-01-01 00:00:00 4 001");
  orvo::GmtimeSafe(1794777596, &fields);
  EXPECT_EQ(Shown(fields), "2026-11-15 21:19:56 0 319");
  EXPECT_EQ(fields.tm_isdst, 0);
  orvo::GmtimeSafe(-1, &fields);
  EXPECT_EQ(Shown(fields), "1969-12-31 23:59:59 3 365");
}

TEST(GmtimeSafe, ThrowsBeyondTheCalendar) {
  std::tm fields{};
  EXPECT_THAT(
      [&] { orvo::GmtimeSafe(std::numeric_limits<long>::max(), &fields); },
      ThrowsMessage<orvo::TimeError>("gmtime_r failed."));
}

TEST(LocaltimeSafe, KnowsDaylightSavingTime) {
  const ScopedTimeZone zone(kCentralEurope);
  std::tm fields{};
  orvo::LocaltimeSafe(1794777596, &fields);
  EXPECT_EQ(Shown(fields), "2026-11-15 22:19:56 0 319");
  EXPECT_EQ(fields.tm_isdst, 0);
  orvo::LocaltimeSafe(1783000000, &fields);
  EXPECT_EQ(Shown(fields), "2026-07-02 15:46:40 4 183");
  EXPECT_EQ(fields.tm_isdst, 1);
}

TEST(LocaltimeSafe, SkipsTheHourThatSummerTakes) {
  const ScopedTimeZone zone(kCentralEurope);
  std::tm fields{};
  orvo::LocaltimeSafe(1774745999, &fields);
  EXPECT_EQ(Shown(fields), "2026-03-29 01:59:59 0 088");
  orvo::LocaltimeSafe(1774746000, &fields);
  EXPECT_EQ(Shown(fields), "2026-03-29 03:00:00 0 088");
}

TEST(LocaltimeSafe, ThrowsBeyondTheCalendar) {
  std::tm fields{};
  EXPECT_THAT(
      [&] { orvo::LocaltimeSafe(std::numeric_limits<long>::min(), &fields); },
      ThrowsMessage<orvo::TimeError>("localtime_r failed"));
}

TEST(CurrentTime, IsOneLineOf25Characters) {
  EXPECT_THAT(orvo::current_time(),
              MatchesRegex("[A-Z][a-z]{2} [A-Z][a-z]{2} [ 1-3][0-9] "
                           "[0-9]{2}:[0-9]{2}:[0-9]{2} [0-9]{4}\n"));
}

}  // namespace

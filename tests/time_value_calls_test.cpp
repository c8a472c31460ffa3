// What the times ask of the system, and what becomes of its failures.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/time.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <ctime>
#include <initializer_list>
#include <limits>
#include <string>
#include <vector>

#include "orvo/errors.h"
#include "orvo/time_value.h"
#include "tests/support/interpose/calls.h"
#include "tests/support/time_zone.h"

namespace {

using orvo::TimeValue;
using orvo_test::ScopedFailure;
using orvo_test::ScopedHook;
using std::chrono::nanoseconds;
using testing::ElementsAre;
using testing::SizeIs;
using testing::ThrowsMessage;

// Clocks that a test sets, and the order in which they are read.
class Clocks {
 public:
  timespec system{1000, 123456789};
  timespec steady{5, 700};

  const std::vector<clockid_t>& readings() const { return readings_; }

 private:
  std::vector<clockid_t> readings_;
  ScopedHook<int(clockid_t, timespec*)> hook_{
      orvo_test::clock_gettime_calls, [this](clockid_t clock, timespec* time) {
        readings_.push_back(clock);
        *time = clock == CLOCK_REALTIME ? system : steady;
        return 0;
      }};
};

TEST(MonotonicSystemClock, AddsTheSteadyTimeToItsFirstSystemTime) {
  Clocks clocks;
  const orvo::MonotonicSystemClock_ clock;
  EXPECT_EQ(clock.GetNow(), TimeValue(nanoseconds(1000123456000)));
  clocks.steady = {7, 1000};
  EXPECT_EQ(clock.GetNow(), TimeValue(nanoseconds(1002123456300)));
}

TEST(MonotonicSystemClock, ReadsTheSystemClockFirst) {
  const Clocks clocks;
  const orvo::MonotonicSystemClock_ clock;
  EXPECT_THAT(clocks.readings(), ElementsAre(CLOCK_REALTIME, CLOCK_MONOTONIC));
}

TEST(MonotonicSystemClock, DoesNotSeeTheSystemClockAgain) {
  Clocks clocks;
  const orvo::MonotonicSystemClock_ clock;
  const TimeValue before = clock.GetNow();
  clocks.system = {0, 0};
  EXPECT_EQ(clock.GetNow(), before);
  clocks.system = {2000000000, 0};
  EXPECT_EQ(clock.GetNow(), before);
}

TEST(MonotonicSystemClock, IsOneWord) {
  EXPECT_EQ(sizeof(orvo::MonotonicSystemClock_), 8U);
  EXPECT_TRUE(std::is_trivially_destructible_v<orvo::MonotonicSystemClock_>);
}

TEST(GetNow, IsOneReadingOfTheSteadyClock) {
  const Clocks clocks;
  const TimeValue now = TimeValue::GetNow();
  EXPECT_THAT(clocks.readings(), ElementsAre(CLOCK_MONOTONIC));
  EXPECT_EQ(orvo::monotonicSystemClock_.GetNow(), now);
  EXPECT_EQ(TimeValue::GetNowDouble(), now.GetAsDouble());
  EXPECT_EQ(TimeValue().SetToNow(), now);
  EXPECT_THAT(clocks.readings(), SizeIs(4));
}

TEST(GetNow, CountsFromTheSystemTimeAtLoading) {
  Clocks clocks;
  const TimeValue now = TimeValue::GetNow();
  clocks.steady.tv_sec += 3;
  EXPECT_EQ(TimeValue::GetNow(), now + 3);
}

TEST(GetNow, AgreesWithTheSystemClock) {
  const auto system = std::chrono::duration_cast<nanoseconds>(
      std::chrono::system_clock::now().time_since_epoch());
  const TimeValue difference = TimeValue::GetNow() - system;
  EXPECT_LT(difference, 3600);
  EXPECT_GT(difference, -3600);
}

// The requests that the sleeps of a test made, none of which really sleeps.
class SleepRecorder {
 public:
  // Each request is answered by the next of these: an error number and what
  // remains, or 0 for success.
  struct Answer {
    int error;
    timespec remaining;
  };

  SleepRecorder(std::initializer_list<Answer> answers) : answers_(answers) {}

  // "seconds.nanoseconds" of each request.
  const std::vector<std::string>& requests() const { return requests_; }

 private:
  std::vector<Answer> answers_;
  std::vector<std::string> requests_;
  orvo_test::ScopedHook<int(const timespec*, timespec*)> hook_{
      orvo_test::nanosleep_calls,
      [this](const timespec* request, timespec* remaining) {
        const std::size_t call = requests_.size();
        requests_.push_back(std::to_string(request->tv_sec) + "." +
                            std::to_string(request->tv_nsec));
        if (call >= answers_.size() || answers_[call].error == 0) return 0;
        *remaining = answers_[call].remaining;
        return orvo_test::FailWithErrno(answers_[call].error);
      }};
};

TEST(Sleep, AsksForSecondsAndNanoseconds) {
  const struct {
    unsigned int milliseconds;
    const char* request;
  } cases[] = {
      {0, "0.0"},    {1, "0.1000000"},      {999, "0.999000000"},
      {1000, "1.0"}, {1500, "1.500000000"}, {4294967295U, "4294967.295000000"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.milliseconds);
    const SleepRecorder recorder{};
    orvo::Sleep(c.milliseconds);
    EXPECT_THAT(recorder.requests(), ElementsAre(c.request));
  }
}

TEST(Sleep, SleepsTheRestAfterEachSignal) {
  const SleepRecorder recorder{{EINTR, {1, 200000000}}, {EINTR, {0, 7}}};
  orvo::Sleep(1500);
  EXPECT_THAT(recorder.requests(),
              ElementsAre("1.500000000", "1.200000000", "0.7"));
}

TEST(Sleep, IgnoresOtherFailures) {
  for (const int error : {EINVAL, EFAULT, ENOSYS}) {
    SCOPED_TRACE(error);
    const SleepRecorder recorder{{error, {1, 0}}};
    orvo::Sleep(1500);
    EXPECT_THAT(recorder.requests(), SizeIs(1));
  }
}

TEST(Sleep, TakesAStaleErrorNumberForNothing) {
  const SleepRecorder recorder{};
  errno = EINTR;
  orvo::Sleep(10);
  EXPECT_THAT(recorder.requests(), SizeIs(1));
}

volatile std::sig_atomic_t signals = 0;

void CountSignal(int) {
  signals = signals + 1;
}

TEST(Sleep, LastsTheFullTimeUnderAStormOfSignals) {
  struct sigaction action = {};
  action.sa_handler = CountSignal;  // without SA_RESTART
  // Stays, because a last signal may still be on its way at the end.
  ASSERT_EQ(sigaction(SIGALRM, &action, nullptr), 0);
  const itimerval storm = {{0, 1000}, {0, 1000}};
  ASSERT_EQ(setitimer(ITIMER_REAL, &storm, nullptr), 0);

  const auto start = std::chrono::steady_clock::now();
  orvo::Sleep(50);
  const auto slept = std::chrono::steady_clock::now() - start;

  const itimerval calm = {};
  setitimer(ITIMER_REAL, &calm, nullptr);
  EXPECT_GE(slept, std::chrono::milliseconds(50));
  EXPECT_GT(signals, 0);
}

// What GetAsIso8601() and its siblings ask of strftime().
class LayoutRecorder {
 public:
  // "limit format" of each call.
  const std::vector<std::string>& calls() const { return calls_; }

 private:
  std::vector<std::string> calls_;
  ScopedHook<std::size_t(char*, std::size_t, const char*, const std::tm*)>
      hook_{orvo_test::strftime_calls,
            [this](char* text, std::size_t limit, const char* format,
                   const std::tm* fields) {
              calls_.push_back(std::to_string(limit) + " " + format);
              return orvo_test::strftime_calls.Real(text, limit, format,
                                                    fields);
            }};
};

TEST(Iso8601, ComesFromAStrftimeThatTheProgramBrings) {
  const LayoutRecorder recorder;
  const TimeValue time = nanoseconds(1794777596123456789);
  EXPECT_EQ(time.GetAsIso8601(), "2026-11-15T21-19-56Z");
  EXPECT_EQ(time.GetAsIso8601WithColonTimeSeparator(), "2026-11-15T21:19:56Z");
  EXPECT_EQ(time.GetAsIso8601Precise(9), "2026-11-15T21-19-56.123456789Z");
  EXPECT_EQ(time.GetAsIso8601_("%j"), "319Z");
  EXPECT_THAT(recorder.calls(),
              ElementsAre("31 %Y-%m-%dT%H-%M-%S", "31 %Y-%m-%dT%H:%M:%S",
                          "32 %Y-%m-%dT%H-%M-%S", "31 %j"));
}

// Calls each of the functions that make a text of a time.
template <typename Check>
void ForEachText(Check check) {
  check([] { TimeValue(0).GetAsIso8601(); });
  check([] { TimeValue(0).GetAsIso8601WithColonTimeSeparator(); });
  check([] { TimeValue(0).GetAsIso8601Precise(3); });
  check([] { TimeValue(0).GetAsIso8601_("%Y"); });
  check([] { orvo::GetNowIso8601(); });
}

TEST(Iso8601, ThrowsWhenTheCalendarConversionFails) {
  const ScopedFailure failure("gmtime_r", EOVERFLOW);
  ForEachText([](auto text) {
    EXPECT_THAT(text, ThrowsMessage<orvo::TimeValueError>(
                          "Error converting time to UTC time."));
  });
}

TEST(Iso8601, ThrowsWhenTheTextCannotBeMade) {
  const ScopedFailure failure("strftime", ERANGE);
  ForEachText([](auto text) {
    EXPECT_THAT(text, ThrowsMessage<orvo::TimeValueError>(
                          "Time to string conversion failed."));
  });
}

TEST(Iso8601, ShowsTheReasonWhenTheFractionCannotBeMade) {
  const ScopedFailure failure("vsnprintf", EOVERFLOW);
  EXPECT_EQ(TimeValue(1.5).GetAsIso8601Precise(9),
            "1970-01-01T00-00-01."
            "Formatting error: Value too large for defined data typeZ");
  EXPECT_EQ(TimeValue(-1.5).GetAsIso8601Precise(9),
            "1969-12-31T23-59-59."
            "Formatting error: Value too large for defined data typeZ");
}

TEST(Iso8601, BreaksDownTheRoundedSecondsAndCutsForThePreciseForm) {
  std::vector<std::time_t> asked;
  const ScopedHook hook(orvo_test::gmtime_r_calls,
                        [&](const std::time_t* seconds, std::tm* fields) {
                          asked.push_back(*seconds);
                          return orvo_test::gmtime_r_calls.Real(seconds,
                                                                fields);
                        });
  const TimeValue time(1.6);
  time.GetAsIso8601();
  time.GetAsIso8601WithColonTimeSeparator();
  time.GetAsIso8601Precise(1);
  EXPECT_THAT(asked, ElementsAre(2, 2, 1));
}

TEST(GmtimeSafe, ThrowsWhenTheConversionFails) {
  const ScopedFailure failure("gmtime_r", EOVERFLOW);
  std::tm fields{};
  EXPECT_THAT([&] { orvo::GmtimeSafe(0, &fields); },
              ThrowsMessage<orvo::TimeError>("gmtime_r failed."));
}

TEST(LocaltimeSafe, ThrowsWhenTheConversionFails) {
  const ScopedFailure failure("localtime_r", EOVERFLOW);
  std::tm fields{};
  EXPECT_THAT([&] { orvo::LocaltimeSafe(0, &fields); },
              ThrowsMessage<orvo::TimeError>("localtime_r failed"));
}

TEST(CurrentTime, IsTheLocalTime) {
  const orvo_test::ScopedTimeZone zone("CET-1CEST,M3.5.0,M10.5.0/3");
  std::time_t now = 1794777596;
  const ScopedHook hook(orvo_test::time_calls,
                        [&](std::time_t*) { return now; });
  EXPECT_EQ(orvo::current_time(), "Sun Nov 15 22:19:56 2026\n");
  now = 1783000000;
  EXPECT_EQ(orvo::current_time(), "Thu Jul  2 15:46:40 2026\n");
}

TEST(CurrentTime, ComesFromTheReentrantFunctions) {
  std::vector<std::string> calls;
  const ScopedHook break_down(orvo_test::localtime_r_calls,
                              [&](const std::time_t* seconds, std::tm* fields) {
                                calls.emplace_back("localtime_r");
                                return orvo_test::localtime_r_calls.Real(
                                    seconds, fields);
                              });
  const ScopedHook write(orvo_test::asctime_r_calls,
                         [&](const std::tm*, char* text) {
                           calls.emplace_back("asctime_r");
                           return std::strcpy(text, "now\n");
                         });
  EXPECT_EQ(orvo::current_time(), "now\n");
  EXPECT_THAT(calls, ElementsAre("localtime_r", "asctime_r"));
}

TEST(CurrentTime, DoesNotTestTheConversion) {
  const ScopedFailure failure("localtime_r", EOVERFLOW);
  EXPECT_THAT(orvo::current_time(), SizeIs(25));
}

TEST(CurrentTime, SurvivesTimesWithoutACalendarForm) {
  for (const std::time_t now :
       {std::numeric_limits<std::time_t>::max(),
        std::numeric_limits<std::time_t>::min(), std::time_t{253402300800},
        std::time_t{67767976233529199}, std::time_t{-1}}) {
    SCOPED_TRACE(now);
    const ScopedHook hook(orvo_test::time_calls,
                          [&](std::time_t*) { return now; });
    EXPECT_NO_THROW(orvo::current_time());
  }
}

}  // namespace

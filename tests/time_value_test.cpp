#include "orvo/time_value.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <initializer_list>
#include <sstream>
#include <string>
#include <type_traits>
#include <unordered_set>
#include <vector>

#include "tests/support/interpose/calls.h"

namespace {

using orvo::TimeValue;
using testing::ElementsAre;
using testing::SizeIs;

long long Count(const TimeValue& time) {
  return time.GetAsDuration().count();
}

TEST(TimeValue, MeansSecondsByABareNumber) {
  EXPECT_EQ(Count(TimeValue(2)), 2000000000);
  EXPECT_EQ(Count(TimeValue(-1)), -1000000000);
  EXPECT_EQ(Count(TimeValue(4294967295U)), 4294967295000000000);
  EXPECT_EQ(Count(TimeValue(3L)), 3000000000);
  EXPECT_EQ(Count(TimeValue(3UL)), 3000000000);
  EXPECT_EQ(Count(TimeValue(-3LL)), -3000000000);
  EXPECT_EQ(Count(TimeValue(3ULL)), 3000000000);
  EXPECT_EQ(Count(TimeValue(1.5)), 1500000000);
  EXPECT_EQ(Count(TimeValue(0.25F)), 250000000);
}

TEST(TimeValue, TakesTheStandardDurations) {
  EXPECT_EQ(Count(std::chrono::seconds(2)), 2000000000);
  EXPECT_EQ(Count(std::chrono::milliseconds(1500)), 1500000000);
  EXPECT_EQ(Count(std::chrono::microseconds(-7)), -7000);
  EXPECT_EQ(Count(std::chrono::nanoseconds(7)), 7);
}

TEST(TimeValue, TakesDurationsOfLongLong) {
  using std::chrono::duration;
  EXPECT_EQ(Count(duration<long long>(2)), 2000000000);
  EXPECT_EQ(Count(duration<long long, std::milli>(1500)), 1500000000);
  EXPECT_EQ(Count(duration<long long, std::micro>(-7)), -7000);
  EXPECT_EQ(Count(duration<long long, std::nano>(7)), 7);
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

}  // namespace

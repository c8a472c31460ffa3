#include "orvo/time_value.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <iomanip>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <thread>
#include <type_traits>
#include <unordered_set>
#include <vector>

#include "tests/support/grouped_digits.h"
#include "tests/support/latch.h"

namespace {

using orvo::TimeValue;
using std::chrono::duration;
using std::chrono::nanoseconds;

constexpr long long kMax = std::numeric_limits<long long>::max();
constexpr long long kMin = std::numeric_limits<long long>::min();

constexpr unsigned int kSeed = 20261115;

constexpr long long Count(const TimeValue& time) {
  return time.GetAsDuration().count();
}

// Counts of all sizes and both signs, the same ones in each run.
std::vector<long long> SampleCounts() {
  std::vector<long long> counts = {0,           1,           -1,
                                   499,         500,         -500,
                                   501,         499999999,   500000000,
                                   -500000000,  1499999999,  1500000000,
                                   -1500000000, 999999499,   999999500,
                                   -999999500,  1999999600,  9007199254740991,
                                   kMax,        kMax - 1000, kMin,
                                   kMin + 1000};
  std::mt19937_64 random(kSeed);  // NOLINT(cert-msc*): the same in every run
  for (int i = 0; i < 20000; ++i) {
    const auto bits = static_cast<long long>(random());
    counts.push_back(bits >> (random() % 64));
  }
  return counts;
}

TEST(TimeValue, MeansSecondsByABareNumber) {
  EXPECT_EQ(Count(TimeValue(2)), 2000000000);
  EXPECT_EQ(Count(TimeValue(-1)), -1000000000);
  EXPECT_EQ(Count(TimeValue(4294967295U)), 4294967295000000000);
  EXPECT_EQ(Count(TimeValue(3L)), 3000000000);
  EXPECT_EQ(Count(TimeValue(-3L)), -3000000000);
  EXPECT_EQ(Count(TimeValue(3UL)), 3000000000);
  EXPECT_EQ(Count(TimeValue(-3LL)), -3000000000);
  EXPECT_EQ(Count(TimeValue(3ULL)), 3000000000);
  EXPECT_EQ(Count(TimeValue(1.5)), 1500000000);
  EXPECT_EQ(Count(TimeValue(0.25F)), 250000000);
}

TEST(TimeValue, PromotesSmallIntegers) {
  EXPECT_EQ(Count(TimeValue(static_cast<short>(-2))), -2000000000);
  EXPECT_EQ(Count(TimeValue(static_cast<unsigned short>(65535))),
            65535000000000);
  EXPECT_EQ(Count(TimeValue(static_cast<signed char>(-2))), -2000000000);
  EXPECT_EQ(Count(TimeValue(static_cast<unsigned char>(255))), 255000000000);
  EXPECT_EQ(Count(TimeValue('A')), 65000000000);
}

TEST(TimeValue, TakesTheStandardDurations) {
  EXPECT_EQ(Count(std::chrono::seconds(2)), 2000000000);
  EXPECT_EQ(Count(std::chrono::milliseconds(1500)), 1500000000);
  EXPECT_EQ(Count(std::chrono::microseconds(-7)), -7000);
  EXPECT_EQ(Count(nanoseconds(7)), 7);
}

TEST(TimeValue, TakesDurationsOfLongLong) {
  EXPECT_EQ(Count(duration<long long>(2)), 2000000000);
  EXPECT_EQ(Count(duration<long long, std::milli>(1500)), 1500000000);
  EXPECT_EQ(Count(duration<long long, std::micro>(-7)), -7000);
  EXPECT_EQ(Count(duration<long long, std::nano>(7)), 7);
}

TEST(TimeValue, TakesOtherDurationsOfWholeNanoseconds) {
  EXPECT_EQ(Count(std::chrono::hours(-2)), -7200000000000);
  EXPECT_EQ(Count(std::chrono::minutes(1)), 60000000000);
  EXPECT_EQ(Count(duration<short, std::milli>(-3)), -3000000);
  EXPECT_EQ(Count(duration<long long, std::ratio<3600>>(2)), 7200000000000);
  EXPECT_EQ(Count(duration<unsigned long, std::milli>(5)), 5000000);
  EXPECT_EQ(Count(duration<unsigned, std::deci>(3)), 300000000);
}

TEST(TimeValue, RefusesDurationsThatWouldLoseSomething) {
  EXPECT_FALSE((std::is_convertible_v<duration<long, std::pico>, TimeValue>));
  EXPECT_FALSE((std::is_convertible_v<duration<double>, TimeValue>));
  // So long a unit that its nanoseconds have no ratio.
  EXPECT_FALSE(
      (std::is_constructible_v<TimeValue, duration<double, std::tera>>));
}

TEST(TimeValue, IsTheSameHoweverItIsMade) {
  const TimeValue time(1.5);
  EXPECT_EQ(time, TimeValue(std::chrono::milliseconds(1500)));
  EXPECT_EQ(time, TimeValue(0).SetAsMicroseconds(1500000));
  EXPECT_EQ(time.GetAsSeconds(), 2);
  EXPECT_EQ(time.GetAsMicroseconds(), 1500000);
}

TEST(TimeValue, WrapsIntegersAround) {
  EXPECT_EQ(Count(TimeValue(kMax)), -1000000000);
  EXPECT_EQ(Count(TimeValue(kMin)), 0);
  EXPECT_EQ(Count(TimeValue(std::numeric_limits<unsigned long long>::max())),
            -1000000000);
  EXPECT_EQ(Count(TimeValue(std::numeric_limits<unsigned long>::max())),
            -1000000000);
  EXPECT_EQ(Count(TimeValue(18446744073ULL)), -709551616);
  EXPECT_EQ(Count(TimeValue(9223372037LL)), -9223372036709551616LL);
  EXPECT_EQ(Count(TimeValue(std::numeric_limits<int>::min())),
            -2147483648000000000);
  EXPECT_EQ(Count(std::chrono::seconds::max()), -1000000000);
  EXPECT_EQ(Count(duration<long long, std::milli>(kMax)), -1000000);
  EXPECT_EQ(Count(duration<long long, std::micro>(kMin)), 0);
  EXPECT_EQ(Count(nanoseconds::min()), kMin);
  EXPECT_EQ(Count(std::chrono::hours::max()), -3600000000000);
}

TEST(TimeValue, RoundsFractionsToTheNearestNanosecond) {
  EXPECT_EQ(Count(TimeValue(1e-10)), 0);
  EXPECT_EQ(Count(TimeValue(1.5e-9)), 2);
  EXPECT_EQ(Count(TimeValue(-1.5e-9)), -2);
  EXPECT_EQ(Count(TimeValue(1.4e-9)), 1);
  EXPECT_EQ(Count(TimeValue(-0.0)), 0);
  EXPECT_EQ(Count(TimeValue(0.1F)), 100000001);
}

TEST(TimeValue, SaturatesFloatingPointNumbers) {
  const double infinity = std::numeric_limits<double>::infinity();
  const struct {
    double seconds;
    long long count;
  } cases[] = {
      {infinity, kMax},
      {-infinity, kMin},
      {std::numeric_limits<double>::quiet_NaN(), 0},
      {-std::numeric_limits<double>::quiet_NaN(), 0},
      {std::numeric_limits<double>::max(), kMax},
      {std::numeric_limits<double>::lowest(), kMin},
      {9223372036.854775807, kMax},
      {-9223372036.854775808, kMin},
      {9223372036.0, 9223372036000000000},
      {-9223372036.0, -9223372036000000000},
      {std::numeric_limits<double>::denorm_min(), 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.seconds);
    EXPECT_EQ(Count(TimeValue(c.seconds)), c.count);
  }
  EXPECT_EQ(Count(TimeValue(std::numeric_limits<float>::infinity())), kMax);
  EXPECT_EQ(Count(TimeValue(std::numeric_limits<float>::quiet_NaN())), 0);
}

// The rounding by the standard library's own function.
long long RoundedNanoseconds(double seconds) {
  const double count = std::round(seconds * 1e9);
  if (std::isnan(count)) return 0;
  if (count >= 0x1p63) return kMax;
  if (count < -0x1p63) return kMin;
  return static_cast<long long>(count);
}

TEST(TimeValue, RoundsLikeTheStandardLibraryAtTheHardPlaces) {
  for (const double place :
       {0.0, 0.5, 1.0, 1.5, 2.5, 1e6 + 0.5, 0x1p51 + 0.5, 0x1p52 - 0.5, 0x1p52,
        0x1p52 + 1, 0x1p53 - 1, 0x1p53, 0x1p62, 0x1p63}) {
    for (const double sign : {1.0, -1.0}) {
      // A few neighbours, because the product is rounded as well.
      double seconds = sign * place / 1e9;
      for (int i = 0; i < 20; ++i) seconds = std::nextafter(seconds, -1e300);
      for (int i = 0; i < 40; ++i) {
        seconds = std::nextafter(seconds, 1e300);
        EXPECT_EQ(Count(TimeValue(seconds)), RoundedNanoseconds(seconds))
            << std::hexfloat << seconds;
      }
    }
  }
}

TEST(TimeValue, RoundsLikeTheStandardLibraryForAnyBits) {
  SCOPED_TRACE(testing::Message() << "seed " << kSeed);
  std::mt19937_64 random(kSeed);  // NOLINT(cert-msc*): the same in every run
  for (int i = 0; i < 100000; ++i) {
    const std::uint64_t bits = random();
    double seconds = 0;
    std::memcpy(&seconds, &bits, sizeof seconds);
    EXPECT_EQ(Count(TimeValue(seconds)), RoundedNanoseconds(seconds))
        << std::hexfloat << seconds;
    const double common = std::ldexp(static_cast<double>(bits), -50);
    EXPECT_EQ(Count(TimeValue(common)), RoundedNanoseconds(common))
        << std::hexfloat << common;
  }
}

TEST(TimeValue, ConvertsToSecondsInDoublePrecision) {
  EXPECT_EQ(TimeValue(nanoseconds(1500000000)).GetAsDouble(), 1.5);
  EXPECT_EQ(TimeValue(nanoseconds(-1)).GetAsDouble(), -1e-9);
  EXPECT_EQ(TimeValue(nanoseconds::max()).GetAsDouble(), 0x1p63 / 1e9);
}

TEST(TimeValue, ConvertsToSecondsInSinglePrecision) {
  EXPECT_EQ(TimeValue(nanoseconds(1500000000)).GetAsFloat(), 1.5F);
  // By way of a double it would be 0x1.80a1d2p+0.
  EXPECT_EQ(TimeValue(nanoseconds(1502469135)).GetAsFloat(), 0x1.80a1dp+0F);
  EXPECT_EQ(TimeValue(nanoseconds::min()).GetAsFloat(), -0x1p63F / 1e9F);
}

TEST(TimeValue, RoundsToWholeSeconds) {
  const struct {
    long long count;
    long long seconds;
  } cases[] = {
      {1500000000, 2},
      {1499900000, 1},
      {-1500000000, -2},
      {-1499900000, -1},
      {499999999, 0},
      {500000000, 1},
      {-500000000, -1},
      {2500000000, 3},
      {kMax, 9223372037},
      {kMin, -9223372037},
      {-499999999, 0},
      {0, 0},
      // The double, not the count, is rounded.
      {1794777596499999999, 1794777597},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.count);
    EXPECT_EQ(TimeValue(nanoseconds(c.count)).GetAsSeconds(), c.seconds);
  }
}

TEST(TimeValue, RoundsToWholeMicroseconds) {
  const struct {
    long long count;
    long long microseconds;
  } cases[] = {
      {499, 0},   {500, 1},    {-499, 0},
      {-500, -1}, {1500, 2},   {1234567890, 1234568},
      {0, 0},     {2500, 3},   {kMax, 9223372036854776},
      {1499, 1},  {-1500, -2}, {kMin, -9223372036854776},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.count);
    EXPECT_EQ(TimeValue(nanoseconds(c.count)).GetAsMicroseconds(),
              c.microseconds);
  }
}

TEST(TimeValue, RoundsItsDoublesLikeTheStandardLibrary) {
  for (const long long count : SampleCounts()) {
    SCOPED_TRACE(count);
    const TimeValue time = nanoseconds(count);
    EXPECT_EQ(time.GetAsSeconds(), std::llround(time.GetAsDouble()));
    EXPECT_EQ(time.GetAsMicroseconds(),
              std::llround(static_cast<double>(count) / 1000.0));
  }
}

TEST(TimeValue, IsSetInWholeSeconds) {
  TimeValue time;
  EXPECT_EQ(&time.SetAsSeconds(-3), &time);
  EXPECT_EQ(Count(time), -3000000000);
  EXPECT_EQ(Count(time.SetAsSeconds(kMax)), -1000000000);
}

TEST(TimeValue, IsSetInWholeMicroseconds) {
  TimeValue time;
  EXPECT_EQ(&time.SetAsMicroseconds(-3), &time);
  EXPECT_EQ(Count(time), -3000);
  EXPECT_EQ(Count(time.SetAsMicroseconds(kMax)), -1000);
}

TEST(TimeValue, BecomesATimevalWithoutCarry) {
  const struct {
    long long count;
    long seconds;
    long microseconds;
  } cases[] = {
      {0, 0, 0},
      {3250000000, 3, 250000},
      {-1500000000, -1, -500000},
      {1999999499, 1, 999999},
      {1999999500, 1, 1000000},
      {1999999600, 1, 1000000},
      {-1999999600, -1, -1000000},
      {-400, 0, 0},
      {-500, 0, -1},
      {kMax, 9223372036, 854776},
      {kMin, -9223372036, -854776},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.count);
    const timeval time = TimeValue(nanoseconds(c.count)).GetAsTimeval();
    EXPECT_EQ(time.tv_sec, c.seconds);
    EXPECT_EQ(time.tv_usec, c.microseconds);
  }
}

TEST(TimeValue, BecomesATimespecOfOneSign) {
  const struct {
    long long count;
    long seconds;
    long nanoseconds;
  } cases[] = {
      {0, 0, 0},
      {1999999999, 1, 999999999},
      {-1500000000, -1, -500000000},
      {-1, 0, -1},
      {kMax, 9223372036, 854775807},
      {kMin, -9223372036, -854775808},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.count);
    const timespec time = TimeValue(nanoseconds(c.count)).GetAsTimespec();
    EXPECT_EQ(time.tv_sec, c.seconds);
    EXPECT_EQ(time.tv_nsec, c.nanoseconds);
  }
}

TEST(TimeValue, GivesItsCountWithoutLoss) {
  for (const long long count : {0LL, -1LL, kMax, kMin}) {
    const TimeValue time = nanoseconds(count);
    EXPECT_EQ(time.GetAsDuration().count(), count);
    EXPECT_EQ(static_cast<nanoseconds>(time).count(), count);
    EXPECT_EQ(nanoseconds(time), nanoseconds(count));
  }
}

TEST(TimeValue, AddsAndSubtracts) {
  TimeValue time(5);
  EXPECT_EQ(&(time += TimeValue(2)), &time);
  EXPECT_EQ(time, TimeValue(7));
  EXPECT_EQ(&(time -= TimeValue(10)), &time);
  EXPECT_EQ(time, TimeValue(-3));
  EXPECT_EQ(&time.AddOffset(TimeValue(1)), &time);
  EXPECT_EQ(time, TimeValue(-2));
  EXPECT_EQ(time + TimeValue(2), TimeValue(0));
  EXPECT_EQ(time - TimeValue(2), TimeValue(-4));
  EXPECT_EQ(time, TimeValue(-2));
  const TimeValue& same = time;
  time += same;
  EXPECT_EQ(time, TimeValue(-4));
  time -= same;
  EXPECT_EQ(time, TimeValue(0));
}

TEST(TimeValue, WrapsSumsAndDifferencesAround) {
  const TimeValue max = nanoseconds::max();
  const TimeValue min = nanoseconds::min();
  const TimeValue one = nanoseconds(1);
  EXPECT_EQ(max + one, min);
  EXPECT_EQ(min - one, max);
  EXPECT_EQ(min + min, TimeValue(0));
  EXPECT_EQ(TimeValue(0) - min, min);
  EXPECT_EQ(TimeValue(max).AddOffset(max), TimeValue(nanoseconds(-2)));
}

TEST(TimeValue, TakesAnOffsetForASummand) {
  const std::vector<long long> counts = SampleCounts();
  for (std::size_t i = 1; i < counts.size(); ++i) {
    const TimeValue a = nanoseconds(counts[i - 1]);
    const TimeValue b = nanoseconds(counts[i]);
    EXPECT_EQ(a.GetOffset(b), a + b);
    EXPECT_EQ(Count(a), counts[i - 1]);
  }
  EXPECT_EQ(TimeValue(5).GetOffset(2), TimeValue(7));
}

TEST(TimeValue, ComparesCounts) {
  const long long counts[] = {kMin, -1000000000, -1, 0, 1, 999999999, kMax};
  for (const long long a : counts) {
    for (const long long b : counts) {
      SCOPED_TRACE(testing::Message() << a << " and " << b);
      const TimeValue x = nanoseconds(a);
      const TimeValue y = nanoseconds(b);
      EXPECT_EQ(x == y, a == b);
      EXPECT_EQ(x != y, a != b);
      EXPECT_EQ(x < y, a < b);
      EXPECT_EQ(x <= y, a <= b);
      EXPECT_EQ(x > y, a > b);
      EXPECT_EQ(x >= y, a >= b);
    }
  }
}

TEST(TimeValue, MixesWithNumbersAndDurations) {
  const TimeValue time(1.5);
  EXPECT_TRUE(time == std::chrono::milliseconds(1500));
  EXPECT_TRUE(time == 1.5);
  EXPECT_TRUE(time < 2);
  EXPECT_TRUE(time > std::chrono::seconds(1));
  EXPECT_TRUE((time >= duration<long long, std::milli>(1500)));
  EXPECT_TRUE(time != 2U);
  EXPECT_EQ(time + std::chrono::seconds(1), 2.5);
  EXPECT_EQ(time - 1, 0.5F);
  EXPECT_EQ(TimeValue(time) += 3ULL, 4.5);
}

TEST(TimeValue, IsZeroUnlessToldOtherwise) {
  EXPECT_EQ(TimeValue(), TimeValue(0));
  const TimeValue time{};
  EXPECT_EQ(Count(time), 0);
}

TEST(TimeValue, IsAPlainValueOfOneWord) {
  EXPECT_EQ(sizeof(TimeValue), 8U);
  EXPECT_TRUE(std::is_trivially_copyable_v<TimeValue>);
  EXPECT_TRUE(std::is_standard_layout_v<TimeValue>);
  EXPECT_FALSE(std::is_polymorphic_v<TimeValue>);
  EXPECT_TRUE(std::is_nothrow_default_constructible_v<TimeValue>);
}

TEST(TimeValue, WorksAtCompileTime) {
  constexpr TimeValue timeout = std::chrono::milliseconds(2500);
  static_assert(timeout == TimeValue(2.5));
  static_assert(timeout + 1 > TimeValue(3U) && timeout - 1L < 2ULL);
  static_assert(timeout.GetAsSeconds() == 3);
  static_assert(timeout.GetAsMicroseconds() == 2500000);
  static_assert(timeout.GetAsTimeval().tv_usec == 500000);
  static_assert(timeout.GetAsTimespec().tv_nsec == 500000000);
  static_assert(timeout.GetAsDouble() > 2.4 && timeout.GetAsFloat() < 2.6F);
  static_assert(nanoseconds(TimeValue(-1.5e-9)).count() == -2);
  static_assert(TimeValue().SetAsSeconds(1).SetAsMicroseconds(5) ==
                std::chrono::microseconds(5));
}

TEST(TimeValue, IsAKeyOfUnorderedContainers) {
  const std::hash<TimeValue> hash;
  EXPECT_EQ(hash(TimeValue(1.5)), hash(std::chrono::milliseconds(1500)));
  std::unordered_set<TimeValue> times = {1, 2.5, 1.0, nanoseconds(1)};
  EXPECT_EQ(times.size(), 3U);
  EXPECT_EQ(times.count(std::chrono::milliseconds(2500)), 1U);
}

TEST(TimeValue, NeverRunsBackwards) {
  TimeValue last = TimeValue::GetNow();
  for (int i = 0; i < 1000; ++i) {
    const TimeValue now = TimeValue::GetNow();
    EXPECT_GE(now, last);
    last = now;
  }
  EXPECT_GE(TimeValue::GetNowDouble(), last.GetAsDouble());
}

TEST(TimeValue, IsSetToTheCurrentTime) {
  const TimeValue before = TimeValue::GetNow();
  TimeValue time;
  EXPECT_EQ(&time.SetToNow(), &time);
  EXPECT_GE(time, before);
  EXPECT_LE(time, TimeValue::GetNow());
}

std::string Written(const TimeValue& time) {
  std::ostringstream os;
  os << time;
  return os.str();
}

TEST(TimeValueStream, WritesSecondsAndMicroseconds) {
  const struct {
    long long count;
    const char* text;
  } cases[] = {
      {3250000000, "3.250000"},
      {1000, "0.000001"},
      {0, "0.000000"},
      {123456789, "0.123457"},
      {1999999600, "1.1000000"},
      {-1500000000, "-1.-500000"},
      {-1005000000, "-1.0-5000"},
      {-1000, "0.0000-1"},
      {-1999999600, "-1.-1000000"},
      {1794777596123456789, "1794777596.123457"},
      {kMax, "9223372036.854776"},
      {kMin, "-9223372036.-854776"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.count);
    EXPECT_EQ(Written(nanoseconds(c.count)), c.text);
  }
}

TEST(TimeValueStream, LeavesTheFillCharacterAtZero) {
  std::ostringstream os;
  EXPECT_EQ(&(os << TimeValue(1.5)), &os);
  EXPECT_EQ(os.fill(), '0');
  os << std::setw(4) << 7;
  EXPECT_EQ(os.str(), "1.5000000007");
}

TEST(TimeValueStream, GivesTheWidthToTheSeconds) {
  std::ostringstream os;
  os << std::setfill('*') << std::setw(4) << TimeValue(1.5);
  EXPECT_EQ(os.width(), 0);
  os << ' ' << std::setw(3) << TimeValue(2.25);
  EXPECT_EQ(os.str(), "***1.500000 002.250000");
}

TEST(TimeValueStream, TakesANegativeWidthForNone) {
  std::ostringstream os;
  os.width(-4);
  os << TimeValue(1.5);
  EXPECT_EQ(os.width(), 0);
  EXPECT_EQ(os.str(), "1.500000");
}

TEST(TimeValueStream, PadsTheMicrosecondsOnTheLeftWhateverTheFlags) {
  std::ostringstream os;
  os << std::left << std::setfill('*') << std::setw(4) << TimeValue(1.005)
     << std::internal << ' ' << TimeValue(-1.005);
  EXPECT_EQ(os.str(), "1***.005000 -1.0-5000");
}

TEST(TimeValueStream, IsDecimalWhateverTheFlags) {
  std::ostringstream os;
  os << std::hex << std::showbase << std::showpos << std::uppercase
     << TimeValue(255.000255) << ' ' << std::oct << TimeValue(8.000008);
  EXPECT_EQ(os.str(), "255.000255 8.000008");
  EXPECT_TRUE(os.flags() & std::ios_base::showpos);
}

TEST(TimeValueStream, IgnoresTheLocaleOfTheStream) {
  std::ostringstream os;
  os.imbue(orvo_test::GroupedDigits());
  os << TimeValue(1234567.654321);
  EXPECT_EQ(os.str(), "1234567.654321");
}

TEST(TimeValueStream, WritesNothingToAFailedStream) {
  std::ostringstream os;
  os.setstate(std::ios_base::failbit);
  os << TimeValue(1.5);
  EXPECT_EQ(os.str(), "");
}

TEST(CurrentTimes, AreReadByManyThreadsAtOnce) {
  const TimeValue start = TimeValue::GetNow();
  orvo_test::Latch ready(4);
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      ready.Arrive();
      TimeValue previous = start;
      for (int j = 0; j < 100; ++j) {
        const TimeValue now = TimeValue::GetNow();
        EXPECT_GE(now, previous);
        previous = now;
        EXPECT_EQ(orvo::current_time().size(), 25U);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace

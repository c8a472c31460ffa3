#include <cmath>
#include <limits>
#include <ostream>

#include "fuzz/fuzz.h"
#include "fuzz/sink.h"
#include "orvo/time_value.h"

namespace {

using orvo::TimeValue;
using orvo_fuzz::Expect;
using orvo_fuzz::Sink;

__extension__ using Wide = __int128;

constexpr long long kSecond = 1000000000;

TimeValue FromCount(long long count) {
  return TimeValue(std::chrono::nanoseconds(count));
}

long long CountOf(const TimeValue& time) {
  return time.GetAsDuration().count();
}

// The low 64 bits.
long long Wrap(Wide number) {
  return static_cast<long long>(static_cast<unsigned long long>(number));
}

long long Saturate(double nanoseconds) {
  using Limits = std::numeric_limits<long long>;
  if (std::isnan(nanoseconds)) return 0;
  if (nanoseconds >= 0x1p63) return Limits::max();
  if (nanoseconds <= -0x1p63) return Limits::min();
  return std::llround(nanoseconds);
}

// At least so many digits, with zeros in front; a sign counts as a digit.
std::string Pad(long long number, std::size_t width) {
  std::string digits = std::to_string(std::llabs(number));
  const std::string sign = number < 0 ? "-" : "";
  while (digits.size() + sign.size() < width) digits.insert(0, 1, '0');
  return sign + digits;
}

// Counts days from the first of March of the year 0, so that the leap day is
// the last one of its year and of its era of 400 years.
std::string ModelUtc(long long seconds, char separator) {
  long long days = seconds / 86400;
  long long rest = seconds % 86400;
  if (rest < 0) {
    rest += 86400;
    --days;
  }
  days += 719468;
  const long long era = days / 146097;
  const long long day_of_era = days % 146097;
  long long year_of_era = day_of_era / 365;
  const auto start_of_year = [](long long year) {
    return year * 365 + year / 4 - year / 100 + year / 400;
  };
  while (start_of_year(year_of_era) > day_of_era) --year_of_era;
  long long day = day_of_era - start_of_year(year_of_era);
  long long year = era * 400 + year_of_era;
  const int lengths[] = {31, 30, 31, 30, 31, 31, 30, 31, 30, 31, 31, 29};
  int month = 0;
  for (; day >= lengths[month]; ++month) day -= lengths[month];
  month += 3;
  if (month > 12) {
    month -= 12;
    ++year;
  }
  return Pad(year, 4) + "-" + Pad(month, 2) + "-" + Pad(day + 1, 2) + "T" +
         Pad(rest / 3600, 2) + separator + Pad(rest / 60 % 60, 2) + separator +
         Pad(rest % 60, 2);
}

void TestTexts(long long count, unsigned long digits) {
  const TimeValue time = FromCount(count);
  const auto rounded = std::llround(static_cast<double>(count) / 1e9);
  Expect(time.GetAsIso8601() == ModelUtc(rounded, '-') + "Z");
  Expect(time.GetAsIso8601WithColonTimeSeparator() ==
         ModelUtc(rounded, ':') + "Z");
  std::string fraction = Pad(count % kSecond, 9);
  if (digits < 9) fraction.resize(digits);
  Expect(time.GetAsIso8601Precise(digits) ==
         ModelUtc(count / kSecond, '-') + "." + fraction + "Z");
}

void TestConversions(long long count) {
  const TimeValue time = FromCount(count);
  const auto exact = static_cast<double>(count);
  Expect(time.GetAsSeconds() == std::llround(exact / 1e9));
  Expect(time.GetAsMicroseconds() == std::llround(exact / 1000.0));
  Expect(time.GetAsTimespec().tv_sec == count / kSecond);
  Expect(time.GetAsTimespec().tv_nsec == count % kSecond);
  Expect(time.GetAsTimeval().tv_sec == count / kSecond);
  Expect(time.GetAsTimeval().tv_usec ==
         std::llround(static_cast<double>(count % kSecond) / 1000.0));

  Expect(CountOf(TimeValue(count)) == Wrap(Wide{count} * kSecond));
  Expect(CountOf(TimeValue(static_cast<unsigned long long>(count))) ==
         Wrap(Wide{count} * kSecond));
  Expect(CountOf(TimeValue().SetAsMicroseconds(count)) ==
         Wrap(Wide{count} * 1000));
  Expect(CountOf(std::chrono::milliseconds(count)) ==
         Wrap(Wide{count} * 1000000));
}

void TestArithmetic(long long a, long long b) {
  const TimeValue x = FromCount(a);
  const TimeValue y = FromCount(b);
  Expect(CountOf(x + y) == Wrap(Wide{a} + b));
  Expect(CountOf(x - y) == Wrap(Wide{a} - b));
  Expect(x.GetOffset(y) == x + y);
  Expect((x < y) == (a < b) && (x > y) == (a > b));
  Expect((x <= y) == (a <= b) && (x >= y) == (a >= b));
  Expect((x == y) == (a == b) && (x != y) == (a != b));
  Expect(x - y + y == x);
}

void TestFloats(double seconds, float rough_seconds) {
  Expect(CountOf(TimeValue(seconds)) == Saturate(seconds * 1e9));
  Expect(CountOf(TimeValue(rough_seconds)) ==
         Saturate(static_cast<double>(rough_seconds) * 1e9));
}

void TestInserter(long long count, std::uint8_t width, char fill) {
  static Sink sink;
  static std::ostream stream(&sink);
  sink.text.clear();
  stream.fill(fill);
  stream.width(width);
  stream << FromCount(count);
  std::string seconds = std::to_string(count / kSecond);
  if (seconds.size() < width) seconds.insert(0, width - seconds.size(), fill);
  const auto rest = static_cast<double>(count % kSecond);
  std::string digits = std::to_string(std::llround(rest / 1000.0));
  // In front of a sign too.
  while (digits.size() < 6) digits.insert(0, 1, '0');
  Expect(sink.text == seconds + "." + digits);
  Expect(stream.width() == 0 && stream.fill() == '0');
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  orvo_fuzz::Input input(data, size);
  const auto width = input.Take<std::uint8_t>();
  const auto count = input.Take<long long>();
  const auto other = input.Take<long long>();
  TestTexts(count, width % 16);
  TestConversions(count);
  TestArithmetic(count, other);
  TestInserter(count, width, static_cast<char>(other));
  TestFloats(input.Take<double>(), input.Take<float>());
  return 0;
}

#include "orvo/time_value.h"

#include <dlfcn.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstddef>
#include <iterator>
#include <ostream>
#include <string>
#include <string_view>

#include "orvo/errors.h"
#include "orvo/format.h"

namespace orvo {
namespace {

constexpr char kHyphenLayout[] = "%Y-%m-%dT%H-%M-%S";
constexpr char kColonLayout[] = "%Y-%m-%dT%H:%M:%S";

template <typename Function>
bool IsTheSystems(const char* name, Function* function) {
  return dlsym(RTLD_NEXT, name) == reinterpret_cast<void*>(function);
}

// A program that puts its own formatters before the system's gets every call.
// Otherwise the common texts can be written here, in a tenth of the time.
const bool formattersAreTheSystems =
    IsTheSystems("strftime", strftime) && IsTheSystems("vsnprintf", vsnprintf);

// So has every time there is, unless a program brings its own gmtime_r().
bool HasCommonFields(const std::tm& fields) {
  const auto in_range = [](int value, int first, int last) {
    return first <= value && value <= last;
  };
  return in_range(fields.tm_year, 1000 - 1900, 9999 - 1900) &&
         in_range(fields.tm_mon, 0, 11) && in_range(fields.tm_mday, 1, 31) &&
         in_range(fields.tm_hour, 0, 23) && in_range(fields.tm_min, 0, 59) &&
         in_range(fields.tm_sec, 0, 60);
}

// Two digits and the character after them.
char* WriteTwoDigits(char* text, int number, char next) {
  text[0] = static_cast<char>('0' + number / 10);
  text[1] = static_cast<char>('0' + number % 10);
  text[2] = next;
  return text + 3;
}

// What strftime() writes for the layouts above.
std::size_t WriteCommonFields(char* text, char separator,
                              const std::tm& fields) {
  const int year = fields.tm_year + 1900;
  char* next = WriteTwoDigits(text, year / 100, '0') - 1;
  next = WriteTwoDigits(next, year % 100, '-');
  next = WriteTwoDigits(next, fields.tm_mon + 1, '-');
  next = WriteTwoDigits(next, fields.tm_mday, 'T');
  next = WriteTwoDigits(next, fields.tm_hour, separator);
  next = WriteTwoDigits(next, fields.tm_min, separator);
  next = WriteTwoDigits(next, fields.tm_sec, '\0') - 1;
  return static_cast<std::size_t>(next - text);
}

// Like strftime().
std::size_t WriteFields(char* text, std::size_t limit, const char* format,
                        const std::tm& fields) {
  const bool hyphens = format == kHyphenLayout;
  if (formattersAreTheSystems && (hyphens || format == kColonLayout) &&
      HasCommonFields(fields)) {
    return WriteCommonFields(text, hyphens ? '-' : ':', fields);
  }
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  return strftime(text, limit, format, &fields);
#pragma GCC diagnostic pop
}

// The text of a time in UTC, with room for what follows it.
std::string FormatUtc(std::time_t seconds, const char* format,
                      std::size_t limit) {
  std::tm fields{};
  if (gmtime_r(&seconds, &fields) == nullptr) {
    throw TimeValueError("Error converting time to UTC time.");
  }
  std::string text(32, '\0');
  const std::size_t length = WriteFields(text.data(), limit, format, fields);
  if (length == 0) throw TimeValueError("Time to string conversion failed.");
  text.resize(length);
  return text;
}

// Nine characters, or ten for a number of nine digits and a sign.
std::string FormatFraction(long nanoseconds) {
  if (nanoseconds < 0 || !formattersAreTheSystems) {
    return FastFormatter<10>("%09ld", nanoseconds);
  }
  // One more digit in front keeps the leading zeros.
  return std::to_string(1000000000 + nanoseconds).erase(0, 1);
}

// In whole microseconds, which the system clock counts on every platform.
TimeValue ReadSystemClock() {
  return std::chrono::duration_cast<std::chrono::microseconds>(
      std::chrono::system_clock::now().time_since_epoch());
}

}  // namespace

std::string TimeValue::GetAsIso8601() const {
  return GetAsIso8601_(kHyphenLayout);
}

std::string TimeValue::GetAsIso8601WithColonTimeSeparator() const {
  return GetAsIso8601_(kColonLayout);
}

std::string TimeValue::GetAsIso8601Precise(unsigned long digits) const {
  const timespec time = GetAsTimespec();
  std::string text = FormatUtc(time.tv_sec, kHyphenLayout, 32);
  std::string fraction = FormatFraction(time.tv_nsec);
  // From 9 digits on the sign of the fraction costs none of them.
  if (digits < 9) fraction.resize(digits);
  Concatenate(&text, ".", fraction, "Z");
  return text;
}

std::string TimeValue::GetAsIso8601_(const char* format) const {
  std::string text = FormatUtc(GetAsSeconds(), format, 31);
  text += 'Z';
  return text;
}

std::ostream& operator<<(std::ostream& os, const TimeValue& time) {
  const timeval fields = time.GetAsTimeval();
  // Texts and not numbers, which the flags and the locale of a stream change.
  char text[32];
  char* const point =
      std::to_chars(std::begin(text), std::end(text), fields.tv_sec).ptr;
  *point = '.';
  char digits[8];
  char* const digits_end =
      std::to_chars(std::begin(digits), std::end(digits), fields.tv_usec).ptr;
  const auto zeros = std::max<std::ptrdiff_t>(0, 6 - (digits_end - digits));
  const char* const end =
      std::copy(digits, digits_end, std::fill_n(point + 1, zeros, '0'));

  const char* rest = text;
  if (os.width() != 0) {
    os << std::string_view(text, static_cast<std::size_t>(point - text));
    rest = point;
  }
  os.fill('0');
  return os.write(rest, end - rest);
}

MonotonicSystemClock_::MonotonicSystemClock_() : offset_(ReadSystemClock()) {
  offset_ -= std::chrono::steady_clock::now().time_since_epoch();
}

MonotonicSystemClock_ monotonicSystemClock_;

std::string current_time() {
  const std::time_t now = std::time(nullptr);
  std::tm fields{};
  localtime_r(&now, &fields);
  char text[64] = "";
  asctime_r(&fields, text);
  return text;
}

void Sleep(unsigned int milliseconds) {
  timespec request{};
  request.tv_sec = milliseconds / 1000;
  request.tv_nsec = (milliseconds % 1000) * 1000000L;
  timespec remaining{};
  while (nanosleep(&request, &remaining) < 0 && errno == EINTR) {
    request = remaining;
  }
}

void GmtimeSafe(const long& seconds, std::tm* fields) {
  const std::time_t time = seconds;
  if (gmtime_r(&time, fields) == nullptr) throw TimeError("gmtime_r failed.");
}

void LocaltimeSafe(const long& seconds, std::tm* fields) {
  const std::time_t time = seconds;
  if (localtime_r(&time, fields) == nullptr) {
    throw TimeError("localtime_r failed");
  }
}

std::string GetNowIso8601() {
  return TimeValue::GetNow().GetAsIso8601();
}

}  // namespace orvo

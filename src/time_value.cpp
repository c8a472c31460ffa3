#include "orvo/time_value.h"

#include <cerrno>
#include <charconv>
#include <cstddef>
#include <ostream>
#include <string_view>

#include "orvo/errors.h"
#include "orvo/format.h"

namespace orvo {
namespace {

constexpr char kHyphenLayout[] = "%Y-%m-%dT%H-%M-%S";
constexpr char kColonLayout[] = "%Y-%m-%dT%H:%M:%S";

// The text of a time in UTC, without the closing "Z".
std::string FormatUtc(std::time_t seconds, const char* format,
                      std::size_t limit) {
  std::tm fields{};
  if (gmtime_r(&seconds, &fields) == nullptr) {
    throw TimeValueError("Error converting time to UTC time.");
  }
  std::string text(32, '\0');
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  const std::size_t length = strftime(text.data(), limit, format, &fields);
#pragma GCC diagnostic pop
  if (length == 0) throw TimeValueError("Time to string conversion failed.");
  text.resize(length);
  return text;
}

// The system clock's own resolution on other platforms, so that what the clock
// yields has the same form everywhere.
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
  std::string fraction = orvo::format("%09ld", time.tv_nsec);
  if (digits < 9) fraction.resize(digits);
  return text + "." + fraction + "Z";
}

std::string TimeValue::GetAsIso8601_(const char* format) const {
  return FormatUtc(GetAsSeconds(), format, 31) + "Z";
}

std::ostream& operator<<(std::ostream& os, const TimeValue& time) {
  const timeval fields = time.GetAsTimeval();
  char text[32];
  const char* const end =
      std::to_chars(std::begin(text), std::end(text), fields.tv_sec).ptr;
  os << std::string_view(text, static_cast<std::size_t>(end - text));
  os.fill('0');

  char fraction[32] = ".00000";
  char digits[16];
  const char* const digits_end =
      std::to_chars(std::begin(digits), std::end(digits), fields.tv_usec).ptr;
  std::string_view shown(digits, static_cast<std::size_t>(digits_end - digits));
  std::size_t length = 1;
  if (shown.size() < 6) length += 6 - shown.size();
  shown.copy(fraction + length, shown.size());
  return os << std::string_view(fraction, length + shown.size());
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

#ifndef ORVO_TIME_VALUE_H_
#define ORVO_TIME_VALUE_H_

/// @file
/// Instants and lengths of time in one type, the clock that yields them, and
/// their calendar texts.
///
/// A TimeValue is what the clock returns, what time-outs take and what a
/// subtraction leaves:
///
/// @code
/// const orvo::TimeValue start = orvo::TimeValue::GetNow();
/// orvo::Sleep(20);
/// std::cout << orvo::TimeValue::GetNow() - start << " s\n";
/// @endcode
///
/// Every function may be called from any thread at once; an object that
/// several threads change needs a lock of the caller's.

#include <sys/time.h>

#include <chrono>
#include <cstddef>
#include <ctime>
#include <iosfwd>
#include <ratio>
#include <string>
#include <type_traits>

#include "orvo/errors.h"  // IWYU pragma: export
#include "orvo/export.h"

namespace orvo {

/// A point in time (since the Unix epoch) or a length of time, as one signed
/// 64-bit count of nanoseconds, which reaches 292 years to either side.
///
/// Integer arithmetic wraps around; a floating-point number beyond the range
/// becomes the nearest end of it, and NaN becomes 0.
///
/// @code
/// const orvo::TimeValue timeout(1.5);              // a number means seconds
/// timeout == std::chrono::milliseconds(1500);      // true
/// timeout.GetAsIso8601Precise(3);  // "1970-01-01T00-00-01.500Z"
/// @endcode
class ORVO_EXPORT TimeValue {
 public:
  /// The epoch, or no time at all.
  ORVO_EXPORT_INLINE constexpr TimeValue() noexcept : count_(0) {}

  /// @name From a duration
  /// Any duration that counts whole nanoseconds in an integer will do.
  /// @{

  /// As long as the duration, without loss.
  ORVO_EXPORT_INLINE constexpr TimeValue(
      const std::chrono::duration<long long>& seconds) noexcept
      : count_(Multiply_(seconds.count(), kSecond_)) {}
  ORVO_EXPORT_INLINE constexpr TimeValue(
      const std::chrono::duration<long long, std::milli>& milliseconds) noexcept
      : count_(Multiply_(milliseconds.count(), 1000000)) {}
  ORVO_EXPORT_INLINE constexpr TimeValue(
      const std::chrono::duration<long long, std::micro>& microseconds) noexcept
      : count_(Multiply_(microseconds.count(), 1000)) {}
  ORVO_EXPORT_INLINE constexpr TimeValue(
      const std::chrono::duration<long long, std::nano>& nanoseconds) noexcept
      : count_(nanoseconds) {}

  // The standard durations, whose counts have another type on some platforms.
  template <typename Rep, typename Period,
            typename = std::enable_if_t<std::is_integral_v<Rep>>,
            typename Factor = std::ratio_divide<Period, std::nano>,
            typename = std::enable_if_t<Factor::den == 1>>
  constexpr TimeValue(const std::chrono::duration<Rep, Period>& time) noexcept
      : count_(Multiply_(static_cast<long long>(time.count()), Factor::num)) {}
  /// @}

  /// @name From seconds
  /// Fractions are rounded to the nearest nanosecond, halves away from zero; a
  /// double tells instants of our days apart by 256 nanoseconds only.
  /// @{

  /// This number of seconds.
  ORVO_EXPORT_INLINE constexpr TimeValue(double seconds) noexcept
      : count_(Saturate_(seconds * 1e9)) {}
  ORVO_EXPORT_INLINE constexpr TimeValue(float seconds) noexcept
      : TimeValue(static_cast<double>(seconds)) {}
  ORVO_EXPORT_INLINE constexpr TimeValue(long long seconds) noexcept
      : count_(Multiply_(seconds, kSecond_)) {}
  ORVO_EXPORT_INLINE constexpr TimeValue(unsigned long long seconds) noexcept
      : count_(Multiply_(static_cast<long long>(seconds), kSecond_)) {}
  ORVO_EXPORT_INLINE constexpr TimeValue(long seconds) noexcept
      : count_(Multiply_(seconds, kSecond_)) {}
  ORVO_EXPORT_INLINE constexpr TimeValue(unsigned long seconds) noexcept
      : count_(Multiply_(static_cast<long long>(seconds), kSecond_)) {}
  ORVO_EXPORT_INLINE constexpr TimeValue(int seconds) noexcept
      : count_(Multiply_(seconds, kSecond_)) {}
  ORVO_EXPORT_INLINE constexpr TimeValue(unsigned int seconds) noexcept
      : count_(Multiply_(seconds, kSecond_)) {}
  /// @}

  /// The current time; see MonotonicSystemClock_.
  ORVO_EXPORT_INLINE static TimeValue GetNow();

  /// The current time in seconds since the epoch, good to about 0.2
  /// microseconds.
  ORVO_EXPORT_INLINE static double GetNowDouble();

  /// Replaces the value with the current time.
  ORVO_EXPORT_INLINE TimeValue& SetToNow() { return *this = GetNow(); }

  /// In seconds; exact to the nanosecond up to 104 days.
  ORVO_EXPORT_INLINE constexpr double GetAsDouble() const noexcept {
    return static_cast<double>(count_.count()) / 1e9;
  }

  /// In seconds, computed in single precision throughout.
  ORVO_EXPORT_INLINE constexpr float GetAsFloat() const noexcept {
    return static_cast<float>(count_.count()) / 1e9F;
  }

  /// GetAsDouble() rounded to the nearest second, halves away from zero: 2 for
  /// 1.5 s, -2 for -1.5 s.
  ORVO_EXPORT_INLINE constexpr long long GetAsSeconds() const noexcept {
    return Round_(GetAsDouble());
  }

  /// Replaces the value with whole seconds.
  ORVO_EXPORT_INLINE constexpr TimeValue& SetAsSeconds(
      long long seconds) noexcept {
    return *this = TimeValue(seconds);
  }

  /// Rounded to the nearest microsecond, halves away from zero. Computed in
  /// double precision, so that the last digits of a count above 104 days may
  /// decide the other way.
  ORVO_EXPORT_INLINE constexpr long long GetAsMicroseconds() const noexcept {
    return Round_(static_cast<double>(count_.count()) / 1000.0);
  }

  /// Replaces the value with whole microseconds.
  ORVO_EXPORT_INLINE constexpr TimeValue& SetAsMicroseconds(
      long long microseconds) noexcept {
    count_ = Multiply_(microseconds, 1000);
    return *this;
  }

  /// Whole seconds, cut, and the rest in microseconds, rounded to the nearest;
  /// both have the sign of the value.
  ///
  /// Kept on purpose: the microseconds are not carried, so that 1,999,999,600
  /// nanoseconds are 1 second and 1,000,000 microseconds.
  ORVO_EXPORT_INLINE constexpr timeval GetAsTimeval() const noexcept {
    const long long nanoseconds = count_.count() % kSecond_;
    return {static_cast<time_t>(count_.count() / kSecond_),
            static_cast<suseconds_t>(
                Round_(static_cast<double>(nanoseconds) / 1000.0))};
  }

  /// Whole seconds, cut, and the rest in nanoseconds; both have the sign of
  /// the value, while system calls want the nanoseconds positive.
  ORVO_EXPORT_INLINE constexpr timespec GetAsTimespec() const noexcept {
    return {static_cast<time_t>(count_.count() / kSecond_),
            static_cast<long>(count_.count() % kSecond_)};
  }

  /// The count itself, without loss.
  ORVO_EXPORT_INLINE constexpr std::chrono::nanoseconds GetAsDuration()
      const noexcept {
    return count_;
  }

  /// The same as a conversion; explicit, so that mixed comparisons and
  /// arithmetic have one meaning, that of TimeValue.
  ORVO_EXPORT_INLINE constexpr explicit operator std::chrono::nanoseconds()
      const noexcept {
    return count_;
  }

  /// UTC text in whole seconds, fit for a file name.
  ///
  /// Rounded to the nearest second, while GetAsIso8601Precise() cuts.
  ///
  /// @return  For example "2026-11-15T21-19-56Z".
  /// @throws TimeValueError  The time has no UTC calendar form.
  std::string GetAsIso8601() const;

  /// UTC text in whole seconds in the standard form, rounded like
  /// GetAsIso8601().
  ///
  /// @return  For example "2026-11-15T21:19:56Z".
  /// @throws TimeValueError  The time has no UTC calendar form.
  std::string GetAsIso8601WithColonTimeSeparator() const;

  /// UTC text with a fraction of a second, fit for a file name.
  ///
  /// The fraction is cut, while GetAsIso8601() rounds to the nearest second.
  /// Kept on purpose: without digits the full stop stays, as in "56.Z", and
  /// the fraction of a time before 1970 carries its sign, -1.5 s being
  /// "1969-12-31T23-59-59.-500000000Z".
  ///
  /// @param digits  Digits of the fraction to keep, the sign counting as one;
  ///                more than 9 count as 9, and from 9 on nothing is cut.
  /// @return        For example "2026-11-15T21-19-56.123456789Z".
  /// @throws TimeValueError  The time has no UTC calendar form.
  std::string GetAsIso8601Precise(unsigned long digits) const;

  /// UTC text in another layout, rounded like GetAsIso8601().
  ///
  /// @param format  A strftime() format whose text has 1 to 30 characters.
  /// @return        That text, and "Z".
  /// @throws TimeValueError  The text is empty or longer, or the time has no
  ///                         UTC calendar form.
  std::string GetAsIso8601_(const char* format) const;

  /// Adds another time to this one.
  ORVO_EXPORT_INLINE constexpr TimeValue& AddOffset(
      const TimeValue& other) noexcept {
    count_ = Wrap_(Unsigned_() + other.Unsigned_());
    return *this;
  }

  /// @name Sums and differences
  /// @{

  /// Of the counts of nanoseconds.
  ORVO_EXPORT_INLINE constexpr TimeValue& operator+=(
      const TimeValue& other) noexcept {
    return AddOffset(other);
  }
  ORVO_EXPORT_INLINE constexpr TimeValue& operator-=(
      const TimeValue& other) noexcept {
    count_ = Wrap_(Unsigned_() - other.Unsigned_());
    return *this;
  }
  ORVO_EXPORT_INLINE constexpr TimeValue operator+(
      const TimeValue& other) const noexcept {
    return TimeValue(*this) += other;
  }
  ORVO_EXPORT_INLINE constexpr TimeValue operator-(
      const TimeValue& other) const noexcept {
    return TimeValue(*this) -= other;
  }
  /// @}

  /// Kept on purpose: the sum, as operator+ gives it, and not a difference.
  ORVO_EXPORT_INLINE constexpr TimeValue GetOffset(
      const TimeValue& other) const noexcept {
    return TimeValue(*this).AddOffset(other);
  }

  /// @name Order
  /// @{

  /// That of the counts of nanoseconds.
  ORVO_EXPORT_INLINE constexpr bool operator==(
      const TimeValue& other) const noexcept {
    return count_ == other.count_;
  }
  ORVO_EXPORT_INLINE constexpr bool operator!=(
      const TimeValue& other) const noexcept {
    return !(*this == other);
  }
  ORVO_EXPORT_INLINE constexpr bool operator<(
      const TimeValue& other) const noexcept {
    return count_ < other.count_;
  }
  ORVO_EXPORT_INLINE constexpr bool operator<=(
      const TimeValue& other) const noexcept {
    return !(other < *this);
  }
  ORVO_EXPORT_INLINE constexpr bool operator>(
      const TimeValue& other) const noexcept {
    return other < *this;
  }
  ORVO_EXPORT_INLINE constexpr bool operator>=(
      const TimeValue& other) const noexcept {
    return !(*this < other);
  }
  /// @}

 private:
  static constexpr long long kSecond_ = 1000000000;

  // Signed overflow would be undefined; unsigned arithmetic wraps.
  constexpr unsigned long long Unsigned_() const noexcept {
    return static_cast<unsigned long long>(count_.count());
  }
  static constexpr std::chrono::nanoseconds Wrap_(
      unsigned long long count) noexcept {
    return std::chrono::nanoseconds(
        static_cast<std::chrono::nanoseconds::rep>(count));
  }
  static constexpr std::chrono::nanoseconds Multiply_(
      long long count, long long factor) noexcept {
    return Wrap_(static_cast<unsigned long long>(count) *
                 static_cast<unsigned long long>(factor));
  }

  // std::round() for what a long long can hold. To add one half itself would
  // lift the number just below one half to 1.
  static constexpr long long Round_(double value) noexcept {
    constexpr double half = 0x1.fffffffffffffp-2;
    return static_cast<long long>(value + __builtin_copysign(half, value));
  }
  static constexpr std::chrono::nanoseconds Saturate_(double count) noexcept {
    constexpr double end = 9223372036854775808.0;  // one more than the maximum
    if (count > -end && count < end) {
      return std::chrono::nanoseconds(Round_(count));
    }
    if (count < 0) return std::chrono::nanoseconds::min();
    return count > 0 ? std::chrono::nanoseconds::max()
                     : std::chrono::nanoseconds::zero();
  }

  std::chrono::nanoseconds count_;
};

/// Writes seconds, a full stop and microseconds, as in "3.250000".
///
/// Always decimal and without grouping, whatever the flags and the locale of
/// the stream; its width goes to the seconds. Kept on purpose: the fill
/// character of the stream is "0" afterwards, and both fields have the form
/// of GetAsTimeval(), so that -1.5 s reads "-1.-500000".
ORVO_EXPORT std::ostream& operator<<(std::ostream& os, const TimeValue& time);

/// A clock that reads like the system's but never jumps.
///
/// It adds the steady time that has passed to the system time at which it was
/// made. Readings never decrease, and later changes to the system clock are
/// not seen.
class ORVO_EXPORT MonotonicSystemClock_ {
 public:
  /// Reads the system clock, and then the steady clock.
  MonotonicSystemClock_();

  /// One reading of the steady clock and one addition.
  ORVO_EXPORT_INLINE TimeValue GetNow() const {
    return TimeValue(std::chrono::steady_clock::now().time_since_epoch()) +
           offset_;
  }

 private:
  TimeValue offset_;  // system time minus steady time
};

/// The clock behind TimeValue::GetNow(), made when the library is loaded.
extern ORVO_EXPORT MonotonicSystemClock_ monotonicSystemClock_;

inline TimeValue TimeValue::GetNow() {
  return monotonicSystemClock_.GetNow();
}

inline double TimeValue::GetNowDouble() {
  return GetNow().GetAsDouble();
}

/// The local time by the system's clock, as text of 25 characters.
///
/// @return  For example "Sun Nov 15 21:19:56 2026\n"; the line feed is part of
///          the text.
ORVO_EXPORT std::string current_time();

/// Waits at least this long, also when signals arrive meanwhile.
///
/// Other failures of the system's sleep are ignored and end the wait.
ORVO_EXPORT void Sleep(unsigned int milliseconds);

/// Breaks a time down into UTC calendar fields.
///
/// @param seconds  Since the Unix epoch.
/// @param fields   Receives the result.
/// @throws TimeError  "gmtime_r failed."
ORVO_EXPORT void GmtimeSafe(const long& seconds, std::tm* fields);

/// Breaks a time down into calendar fields of the local time zone.
///
/// @param seconds  Since the Unix epoch.
/// @param fields   Receives the result.
/// @throws TimeError  "localtime_r failed"
ORVO_EXPORT void LocaltimeSafe(const long& seconds, std::tm* fields);

/// The current time as by TimeValue::GetAsIso8601().
///
/// @throws TimeValueError  The time has no UTC calendar form.
ORVO_EXPORT std::string GetNowIso8601();

}  // namespace orvo

/// Equal times have equal hashes, so that a TimeValue can be a key of the
/// unordered containers.
template <>
struct std::hash<orvo::TimeValue> {
  /// The hash of the count of nanoseconds.
  ORVO_EXPORT_INLINE std::size_t operator()(
      const orvo::TimeValue& time) const noexcept {
    return std::hash<long long>()(time.GetAsDuration().count());
  }
};

#endif  // ORVO_TIME_VALUE_H_

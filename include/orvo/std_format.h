#ifndef ORVO_STD_FORMAT_H_
#define ORVO_STD_FORMAT_H_

/// @file
/// Values of the library as arguments of std::format() and its relatives.
///
/// @code
/// std::format("{} at {}\n", orvo::UUID(), orvo::TimeValue::GetNow());
/// std::format("[{:>5}]", orvo::midi::Note(60));  // "[   C3]"
/// @endcode
///
/// A value is formatted as its text, with the specifications of strings: fill,
/// alignment, width, and precision, which cuts. The header declares nothing
/// where the standard library has no std::format(), as the macro
/// __cpp_lib_format tells (C++20, with libstdc++ from version 13 on). orvo.h
/// leaves it out, because `<format>` takes long to compile; fmt_format.h serves
/// the fmt library.

#if __has_include(<version>)
#include <version>
#endif

#ifdef __cpp_lib_format

#include <format>
#include <string_view>

#include "orvo/midi.h"
#include "orvo/time_value.h"
#include "orvo/uuid.h"

/// Formats UUID::uuid_string().
template <>
struct std::formatter<orvo::UUID> : std::formatter<std::string_view> {
  /// Writes the text in the width and with the fill that were parsed.
  template <typename Context>
  auto format(const orvo::UUID& uuid, Context& context) const {
    return std::formatter<std::string_view>::format(uuid.uuid_string(),
                                                    context);
  }
};

/// Formats TimeValue::GetAsIso8601Precise() with nine digits, for example
/// "2026-11-15T21-19-56.123456789Z".
template <>
struct std::formatter<orvo::TimeValue> : std::formatter<std::string_view> {
  /// Writes the text in the width and with the fill that were parsed.
  template <typename Context>
  auto format(const orvo::TimeValue& time, Context& context) const {
    return std::formatter<std::string_view>::format(time.GetAsIso8601Precise(9),
                                                    context);
  }
};

/// Formats midi::Note::GetName().
template <>
struct std::formatter<orvo::midi::Note> : std::formatter<std::string_view> {
  /// Writes the text in the width and with the fill that were parsed.
  template <typename Context>
  auto format(const orvo::midi::Note& note, Context& context) const {
    return std::formatter<std::string_view>::format(note.GetName(), context);
  }
};

#endif  // __cpp_lib_format

#endif  // ORVO_STD_FORMAT_H_

#ifndef ORVO_FMT_FORMAT_H_
#define ORVO_FMT_FORMAT_H_

/// @file
/// Values of the library as arguments of the fmt library's functions.
///
/// @code
/// fmt::print("{} at {}\n", orvo::UUID(), orvo::TimeValue::GetNow());
/// fmt::format("[{:>5}]", orvo::midi::Note(60));  // "[   C3]"
/// @endcode
///
/// A value is formatted as its text, with the specifications of strings: fill,
/// alignment, width, and precision, which cuts. orvo.h leaves this header out,
/// since the library itself does without fmt; a program that includes it has
/// to find and link fmt on its own. std_format.h serves std::format.

#if !__has_include(<fmt/format.h>)
#error "orvo/fmt_format.h needs the fmt library (Debian: libfmt-dev)."
#else

#include <fmt/format.h>

#include "orvo/midi.h"
#include "orvo/time_value.h"
#include "orvo/uuid.h"

/// @namespace fmt
/// That of the fmt library, where it looks for formatters.

/// Formats UUID::uuid_string().
template <>
struct fmt::formatter<orvo::UUID> : fmt::formatter<fmt::string_view> {
  /// Writes the text in the width and with the fill that were parsed.
  template <typename Context>
  auto format(const orvo::UUID& uuid, Context& context) const {
    return fmt::formatter<fmt::string_view>::format(uuid.uuid_string(),
                                                    context);
  }
};

/// Formats TimeValue::GetAsIso8601Precise() with nine digits, for example
/// "2026-11-15T21-19-56.123456789Z".
template <>
struct fmt::formatter<orvo::TimeValue> : fmt::formatter<fmt::string_view> {
  /// Writes the text in the width and with the fill that were parsed.
  template <typename Context>
  auto format(const orvo::TimeValue& time, Context& context) const {
    return fmt::formatter<fmt::string_view>::format(time.GetAsIso8601Precise(9),
                                                    context);
  }
};

/// Formats midi::Note::GetName().
template <>
struct fmt::formatter<orvo::midi::Note> : fmt::formatter<fmt::string_view> {
  /// Writes the text in the width and with the fill that were parsed.
  template <typename Context>
  auto format(const orvo::midi::Note& note, Context& context) const {
    return fmt::formatter<fmt::string_view>::format(note.GetName(), context);
  }
};

#endif  // __has_include(<fmt/format.h>)

#endif  // ORVO_FMT_FORMAT_H_

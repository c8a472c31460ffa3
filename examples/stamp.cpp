// Prints a time, by default the current one, in every form of the library.
#include <cstdlib>
#include <ctime>
#include <functional>
#include <iostream>
#include <sstream>
#include <string>

#include "orvo/format.h"
#include "orvo/time_value.h"

namespace {

// Whether the whole text is a number of seconds that a TimeValue can hold.
bool ParseSeconds(const std::string& text, double* seconds) {
  // Decimal digits only: std::strtod() would take blanks and names as well.
  if (text.find_first_not_of("+-.0123456789Ee") != std::string::npos) {
    return false;
  }
  char* end = nullptr;
  *seconds = std::strtod(text.c_str(), &end);
  return end != text.c_str() && *end == '\0' && *seconds >= -9223372036.0 &&
         *seconds <= 9223372036.0;
}

std::string Written(const orvo::TimeValue& time) {
  std::ostringstream text;
  text << time;
  return text.str();
}

std::string Broken(void (*break_down)(const long&, std::tm*),
                   const orvo::TimeValue& time) {
  std::tm fields{};
  break_down(time.GetAsTimespec().tv_sec, &fields);
  char text[64];
  return std::string(
      text, strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S %Z", &fields));
}

void Print(const char* form, const std::string& text) {
  std::cout << orvo::format("%-18s  %s\n", form, text.c_str());
}

void PrintForms(const orvo::TimeValue& time) {
  const timeval micro = time.GetAsTimeval();
  const timespec nano = time.GetAsTimespec();
  Print("as a stream shows", Written(time));
  Print("double", orvo::format("%.9f s", time.GetAsDouble()));
  Print("float",
        orvo::format("%.9g s", static_cast<double>(time.GetAsFloat())));
  Print("whole seconds", orvo::format("%lld s", time.GetAsSeconds()));
  Print("microseconds", orvo::format("%lld us", time.GetAsMicroseconds()));
  Print("nanoseconds", std::to_string(time.GetAsDuration().count()) + " ns");
  Print("timeval", orvo::format("%ld s, %ld us", micro.tv_sec, micro.tv_usec));
  Print("timespec", orvo::format("%ld s, %ld ns", nano.tv_sec, nano.tv_nsec));
  Print("file name", time.GetAsIso8601());
  Print("ISO 8601", time.GetAsIso8601WithColonTimeSeparator());
  Print("milliseconds", time.GetAsIso8601Precise(3));
  Print("precise", time.GetAsIso8601Precise(9));
  Print("UTC", Broken(orvo::GmtimeSafe, time));
  Print("local time", Broken(orvo::LocaltimeSafe, time));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc > 2) {
    std::cerr << "usage: stamp [SECONDS]\n";
    return 2;
  }
  if (argc < 2) {
    PrintForms(orvo::TimeValue::GetNow());
    return 0;
  }
  double seconds = 0;
  if (!ParseSeconds(argv[1], &seconds)) {
    std::cerr << "stamp: not a number of seconds within 292 years of 1970: "
              << argv[1] << '\n';
    return 2;
  }
  PrintForms(seconds);
  return 0;
}

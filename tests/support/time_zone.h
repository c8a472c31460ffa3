#ifndef ORVO_TESTS_SUPPORT_TIME_ZONE_H_
#define ORVO_TESTS_SUPPORT_TIME_ZONE_H_

#include <cstdlib>
#include <ctime>
#include <string>

namespace orvo_test {

/// Puts the process into another time zone while the object lives.
class ScopedTimeZone {
 public:
  /// @param zone  In the form of the variable TZ, for example "UTC0".
  explicit ScopedTimeZone(const char* zone) {
    const char* const old_zone = std::getenv("TZ");
    had_zone_ = old_zone != nullptr;
    if (had_zone_) old_zone_ = old_zone;
    Set(zone);
  }
  ScopedTimeZone(const ScopedTimeZone&) = delete;
  ScopedTimeZone& operator=(const ScopedTimeZone&) = delete;
  ~ScopedTimeZone() { Set(had_zone_ ? old_zone_.c_str() : nullptr); }

 private:
  static void Set(const char* zone) {
    if (zone != nullptr) {
      setenv("TZ", zone, 1);
    } else {
      unsetenv("TZ");
    }
    tzset();
  }

  bool had_zone_;
  std::string old_zone_;
};

}  // namespace orvo_test

#endif  // ORVO_TESTS_SUPPORT_TIME_ZONE_H_

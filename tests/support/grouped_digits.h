#ifndef ORVO_TESTS_SUPPORT_GROUPED_DIGITS_H_
#define ORVO_TESTS_SUPPORT_GROUPED_DIGITS_H_

#include <locale>
#include <string>

namespace orvo_test {

/// A locale that writes 1234567.5 as 1.234.567,5.
inline std::locale GroupedDigits() {
  class Punctuation : public std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
  };
  return std::locale(std::locale::classic(), new Punctuation);
}

/// Makes it the application's locale while the object lives.
class ScopedGroupedDigits {
 public:
  ScopedGroupedDigits() : saved_(std::locale::global(GroupedDigits())) {}
  ScopedGroupedDigits(const ScopedGroupedDigits&) = delete;
  ScopedGroupedDigits& operator=(const ScopedGroupedDigits&) = delete;
  ~ScopedGroupedDigits() { std::locale::global(saved_); }

 private:
  std::locale saved_;
};

}  // namespace orvo_test

#endif  // ORVO_TESTS_SUPPORT_GROUPED_DIGITS_H_

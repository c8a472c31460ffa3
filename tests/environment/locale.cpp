// Puts programs that use the library into another global locale before their
// main() starts. Preloaded by scripts/environments.sh; ORVO_TEST_LOCALE is
// "grouping" for a C++ locale that groups digits and classifies oddly, or
// "user" for what LC_ALL names, in C as well as in C++. All other programs stay
// as they are.
#include <dlfcn.h>

#include <array>
#include <clocale>
#include <cstdlib>
#include <iostream>
#include <locale>
#include <string_view>

namespace {

class GroupingNumpunct : public std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\1"; }
  std::string do_truename() const override { return "ja"; }
  std::string do_falsename() const override { return "nein"; }
};

// Letters are digits, digits are spaces, spaces and all high bytes are letters;
// there are no cases.
class OddCtype : public std::ctype<char> {
 public:
  OddCtype() : ctype(Table()) {}

 private:
  static const mask* Table() {
    static const std::array<mask, table_size> table = [] {
      std::array<mask, table_size> odd{};
      for (std::size_t c = 0; c < odd.size(); ++c) {
        const mask is = classic_table()[c];
        odd[c] = ctype_base::alpha;
        if ((is & ctype_base::alpha) != 0) odd[c] = ctype_base::digit;
        if ((is & ctype_base::digit) != 0) odd[c] = ctype_base::space;
      }
      return odd;
    }();
    return table.data();
  }

  char do_toupper(char c) const override { return c; }
  const char* do_toupper(char*, const char* end) const override { return end; }
  char do_tolower(char c) const override { return c; }
  const char* do_tolower(char*, const char* end) const override { return end; }
};

void GroupDigits() {
  const std::locale locale(
      std::locale(std::locale::classic(), new GroupingNumpunct), new OddCtype);
  std::locale::global(locale);
  // These may have been made before.
  std::cin.imbue(locale);
  std::cout.imbue(locale);
  std::cerr.imbue(locale);
  std::clog.imbue(locale);
}

__attribute__((constructor)) void ChangeLocale() {
  const char* const locale = std::getenv("ORVO_TEST_LOCALE");
  const bool uses_library =
      dlopen(ORVO_LIBRARY, RTLD_LAZY | RTLD_NOLOAD) != nullptr;
  if (locale == nullptr || !uses_library) return;
  if (std::string_view(locale) == "grouping") {
    GroupDigits();
  } else {
    std::setlocale(LC_ALL, locale);
  }
}

}  // namespace

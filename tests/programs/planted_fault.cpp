// planted_fault NAME: a program with one fault, which only a certain check or a
// certain environment brings to light, by an exit status of not 0. Anywhere
// else the fault does no harm.
#include <cctype>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <sstream>
#include <string_view>
#include <thread>
#include <vector>

#include "orvo/format.h"

// Each value and pointer goes through something volatile, or the compilers
// would see the faults.

namespace {

volatile int one = 1;
volatile int counter = 0;
int* volatile kept = nullptr;

bool GroupsDigits() {
  std::ostringstream text;
  text << 1000000 * one;
  return text.str() != "1000000";
}

bool WritesDecimalComma() {
  char text[10];
  std::snprintf(text, sizeof text, "%.1f", 1.5 * one);
  return std::string_view(text) != "1.5";
}

bool HasTurkishLetters() {
  return std::toupper('h' + one) != 'I';
}

bool HasLatinLetters() {
  return std::isalpha(0xDF + one) != 0;
}

bool ChangesTheClock() {
  const std::time_t january = 1704067200;
  const std::time_t july = 1719792000;
  std::tm winter{};
  std::tm summer{};
  localtime_r(&january, &winter);
  localtime_r(&july, &summer);
  return winter.tm_gmtoff != summer.tm_gmtoff;
}

bool TakesMuchStack() {
  volatile char large[500000];
  for (char& part : const_cast<char(&)[500000]>(large)) part = 1;
  return large[one] == 0;
}

bool HasUnsignedChar() {
  volatile char last = '\xff';
  return last > 0;
}

bool ReadsWhatWasNeverWritten() {
  kept = static_cast<int*>(std::malloc(1000 * sizeof *kept));
  const bool is_set = kept[500] != 0;
  std::free(kept);
  return is_set;
}

bool WritesBehindTheEnd() {
  kept = new int[5];
  kept[5] = one;
  delete[] kept;
  return false;
}

bool Leaks() {
  kept = new int[5];
  kept = nullptr;
  return false;
}

[[gnu::noinline]] void KeepLocal() {
  int local = one;
  int* volatile address = &local;
  kept = address;
}

bool ReadsReturnedLocal() {
  KeepLocal();
  return *kept == -1;
}

bool Races() {
  std::thread other([] { counter = counter + 1; });
  counter = counter + 1;
  other.join();
  return counter > 2;
}

bool Overflows() {
  const volatile int sum = INT_MAX + one;
  return sum == 0;
}

bool CastsWhatDoesNotFit() {
  volatile double large = 1e30;
  return static_cast<int>(large) == 1;
}

bool IndexesBehindTheEnd() {
  std::vector<int> numbers(1);
  numbers.reserve(2);
  const int* volatile address = &numbers[static_cast<std::size_t>(one)];
  return address == nullptr;
}

bool ComparesForeignIterators() {
  const std::vector<int> numbers(1);
  const std::vector<int> others(1);
  return numbers.begin() == others.begin();
}

const struct {
  const char* name;
  bool (*show)();
} faults[] = {
    {"groups_digits", GroupsDigits},
    {"decimal_comma", WritesDecimalComma},
    {"turkish_letters", HasTurkishLetters},
    {"latin_letters", HasLatinLetters},
    {"clock_change", ChangesTheClock},
    {"much_stack", TakesMuchStack},
    {"unsigned_char", HasUnsignedChar},
    {"never_written", ReadsWhatWasNeverWritten},
    {"behind_the_end", WritesBehindTheEnd},
    {"leak", Leaks},
    {"returned_local", ReadsReturnedLocal},
    {"race", Races},
    {"overflow", Overflows},
    {"cast", CastsWhatDoesNotFit},
    {"index", IndexesBehindTheEnd},
    {"foreign_iterators", ComparesForeignIterators},
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const std::string_view name = argv[1];
  for (const auto& fault : faults) {
    if (name == fault.name) return fault.show() ? 1 : 0;
  }
  std::fputs(orvo::format("no fault has the name \"%s\"\n", argv[1]).c_str(),
             stderr);
  return 2;
}

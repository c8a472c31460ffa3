// Sorts the lines of a file, or of the standard input, in natural order.

#include <algorithm>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "orvo/numeric_string.h"

namespace {

int Fail(const std::string& message) {
  std::cerr << "natural_sort: " << message << '\n';
  return 2;
}

// Each line is cut into numbers and texts once, however often it is compared.
std::vector<orvo::NumericString> ReadLines(std::istream& input) {
  std::vector<orvo::NumericString> lines;
  for (std::string line; std::getline(input, line);) lines.emplace_back(line);
  return lines;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc > 2) return Fail("more than one file; usage: natural_sort [FILE]");
  std::ifstream file;
  if (argc == 2) file.open(argv[1]);
  std::istream& input = argc == 2 ? file : std::cin;

  std::vector<orvo::NumericString> lines = ReadLines(input);
  // A folder can be opened, but reading from it fails.
  if (input.bad() || (argc == 2 && !file.is_open())) {
    return Fail("cannot read " +
                std::string(argc == 2 ? argv[1] : "the input"));
  }
  // Lines that tie, such as "x007" and "x7", keep their order.
  std::stable_sort(lines.begin(), lines.end());
  for (const orvo::NumericString& line : lines) std::cout << line << '\n';
  if (!std::cout.flush()) return Fail("cannot write the sorted lines");
}

// Wraps the paragraphs of a text: wrap WIDTH [INDENT] [FILE]. Blank lines stay
// between paragraphs; without a file, the standard input is read.

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "orvo/strings.h"

namespace {

constexpr int kWidest = 1000;

[[noreturn]] void Fail(const std::string& problem) {
  std::cerr << "wrap: " << problem << "\n";
  std::exit(2);
}

int ReadColumns(const char* name, std::string text, int least) {
  const int columns = orvo::StringToNumber<int>(text);
  if (text.empty() || !orvo::StringIsDigits(text) || columns < least ||
      columns > kWidest) {
    Fail(std::string(name) + " must be a whole number from " +
         std::to_string(least) + " to " + std::to_string(kWidest) + ", not \"" +
         text + "\"");
  }
  return columns;
}

void PrintParagraph(std::vector<std::string>* words, int indent, int width) {
  if (words->empty()) return;
  // The last line is printed only if something follows that does not fit.
  words->push_back(std::string(static_cast<std::size_t>(width) + 1, '-'));
  std::cout << orvo::format_paragraph(orvo::JoinString(*words, " "), indent,
                                      width)
            << "\n";
  words->clear();
}

}  // namespace

int main(int argc, char* argv[]) {
  if (argc < 2 || argc > 4) Fail("usage: wrap WIDTH [INDENT] [FILE]");
  const int width = ReadColumns("WIDTH", argv[1], 1);
  const int indent = argc > 2 ? ReadColumns("INDENT", argv[2], 0) : 0;
  const std::string name = argc > 3 ? argv[3] : "the standard input";
  std::ifstream file;
  if (argc > 3) file.open(name);
  if (!file) Fail("cannot read " + name);
  std::istream& input = argc > 3 ? file : std::cin;

  std::vector<std::string> words;
  for (std::string line; std::getline(input, line);) {
    if (orvo::strip(line).empty()) {
      PrintParagraph(&words, indent, width);
      std::cout << "\n";
      continue;
    }
    for (const std::string& word : orvo::SplitString(line, ' ', -1)) {
      if (!word.empty()) words.push_back(word);
    }
  }
  if (input.bad()) Fail("cannot read " + name);
  PrintParagraph(&words, indent, width);
}

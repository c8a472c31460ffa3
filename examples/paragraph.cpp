// Wraps a help text, and keeps its last line.
#include <iostream>
#include <string>

#include "orvo/strings.h"

int main() {
  const std::string text = "Copies each FILE into FOLDER and says what it did.";
  const int width = 24;
  std::cout << "without an end:\n"
            << orvo::format_paragraph(text, 2, width) << "\n"
            << "with one:\n"
            << orvo::format_paragraph(text + " " + std::string(width, '-'), 2,
                                      width)
            << "\n";
}

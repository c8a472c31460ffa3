// Says which file failed, and why.
#include <cerrno>
#include <iostream>
#include <stdexcept>
#include <string>

#include "orvo/format.h"

int main() {
  const char* const path = "settings.ini";
  const std::string reason = orvo::errmsg(ENOENT);
  std::cout << orvo::format("%s: %s\n", path, reason.c_str())
            << "the reason has " << reason.size() << " characters\n";

  std::string name = "part";
  Concatenate(&name, "-", FastFormatter<4>("%04d", 17), ".bin");
  std::cout << name << "\n";
  try {
    FastFormatter<4>("%d", 12345);
  } catch (const std::logic_error& error) {
    std::cout << error.what() << "\n";
  }
}

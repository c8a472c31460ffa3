// Prints a UUID in its three forms: uuid_convert TEXT, or uuid_convert - to
// read the text from the standard input.

#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string>

#include "orvo/format.h"
#include "orvo/uuid.h"

namespace {

std::string BytesOf(const orvo::UUID& uuid, bool little_endian) {
  std::ostringstream stream;
  uuid.WriteBinary(stream, little_endian);
  std::string text;
  for (const char c : stream.str()) {
    if (!text.empty()) text += ' ';
    text += orvo::format("%02x", static_cast<unsigned char>(c));
  }
  return text;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: uuid_convert TEXT|-\n";
    return 2;
  }
  std::string text = argv[1];
  if (text == "-") std::getline(std::cin, text);
  try {
    const orvo::UUID uuid(text);
    std::cout << "text           " << uuid << "\n"
              << "network        " << BytesOf(uuid, false) << "\n"
              << "little-endian  " << BytesOf(uuid, true) << "\n";
  } catch (const std::out_of_range&) {
    std::cerr << "uuid_convert: a UUID has five groups of digits with \"-\" "
                 "between them, unlike \""
              << text << "\"\n";
    return 2;
  }
}

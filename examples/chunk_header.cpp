// Reads a big-endian size and an identifier from the head of a binary file.
#include <cstdint>
#include <cstring>
#include <iostream>
#include <sstream>
#include <string>

#include "orvo/byte_order.h"
#include "orvo/format.h"
#include "orvo/uuid.h"

int main() {
  const std::string head(
      "\0\0\x01\x2c"
      "\x78\x56\x34\x12\xbc\x9a\xf0\xde"
      "\x01\x23\x45\x67\x89\xab\xcd\xef",
      20);
  std::istringstream file(head);

  std::uint32_t size = 0;
  file.read(reinterpret_cast<char*>(&size), sizeof size);
  orvo::reverse_byte_order(size);  // on a little-endian machine
  const orvo::UUID id(file, true);
  std::cout << size << " bytes of " << id << "\n"
            << orvo::format("hash %016lx\n",
                            orvo::hash(head.data(), head.size()));

  for (const std::string text :
       {"12345678-9ABC-DEF0-0123-456789ABCDEF", "1-2-3-4-5"}) {
    std::cout << orvo::UUID(text) << (orvo::UUID::Parse(text) ? "" : " from no")
              << " UUID\n";
  }
}

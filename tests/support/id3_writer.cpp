#include "tests/support/id3_writer.h"

namespace orvo_test {
namespace {

std::string FourBytes(std::uint32_t number, int bits_per_byte) {
  std::string bytes;
  const std::uint32_t mask = (1U << bits_per_byte) - 1;
  for (int i = 3; i >= 0; --i) {
    bytes += static_cast<char>(number >> (i * bits_per_byte) & mask);
  }
  return bytes;
}

}  // namespace

std::string BigEndian(std::uint32_t number) {
  return FourBytes(number, 8);
}

std::string Id3Frame(const std::string& identifier, const std::string& body) {
  return Id3Frame(identifier, static_cast<std::uint32_t>(body.size()), body);
}

std::string Id3Frame(const std::string& identifier, std::uint32_t size,
                     const std::string& body) {
  return identifier + BigEndian(size) + std::string(2, '\0') + body;
}

std::string Id3Comment(const std::string& description, const std::string& text,
                       char encoding) {
  return Id3Frame("COMM", std::string(1, encoding) + "eng" + description +
                              std::string(1, '\0') + text);
}

std::string Id3Tag(const std::string& frames, unsigned char flags) {
  return Id3Tag(static_cast<std::uint32_t>(frames.size()), frames, flags);
}

std::string Id3Tag(std::uint32_t size, const std::string& frames,
                   unsigned char flags) {
  const std::string version = {3, 0};
  return "ID3" + version + static_cast<char>(flags) + FourBytes(size, 7) +
         frames;
}

}  // namespace orvo_test

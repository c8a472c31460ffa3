// Prints the comment of each audio file: id3_comment FILE...

#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>

#include "orvo/errors.h"
#include "orvo/id3.h"

namespace {

// The comment on one line: what would move the cursor becomes a space, and
// zero bytes at the end are dropped.
std::string ReadComment(const std::string& path) {
  std::ifstream file(path, std::ios_base::binary);
  if (!file || file.peek() == std::ifstream::traits_type::eof()) {
    throw std::runtime_error("cannot be read, or is empty");
  }
  std::string comment = orvo::get_comm(file);
  comment.erase(comment.find_last_not_of('\0') + 1);
  for (char& c : comment) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < ' ' || byte == 0x7f) c = ' ';
  }
  return comment;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::cerr << "usage: id3_comment FILE...\n";
    return 2;
  }
  bool failed = false;
  for (int i = 1; i < argc; ++i) {
    const std::string path = argv[i];
    try {
      const std::string comment = ReadComment(path);
      std::cout << path << ": " << comment << "\n";
    } catch (const orvo::NoID3Found&) {
      std::cerr << "id3_comment: " << path << " has no ID3 tag\n";
      failed = true;
    } catch (const std::runtime_error& error) {
      std::cerr << "id3_comment: " << path << " " << error.what() << "\n";
      failed = true;
    }
  }
  return failed ? 1 : 0;
}

// Runs a fuzz target over files and the files in folders, without a fuzzer:
// replay FILE|FOLDER...

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

#include "fuzz/fuzz.h"

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> FilesAt(const fs::path& place) {
  if (!fs::is_directory(place)) return {place};
  std::vector<fs::path> files{fs::directory_iterator(place), {}};
  std::sort(files.begin(), files.end());
  return files;
}

bool Replay(const fs::path& file) {
  std::ifstream stream(file, std::ios_base::binary);
  if (!stream) return false;
  const std::vector<char> bytes{std::istreambuf_iterator<char>(stream), {}};
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()),
                         bytes.size());
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  int replayed = 0;
  for (int i = 1; i < argc; ++i) {
    for (const fs::path& file : FilesAt(argv[i])) {
      if (!Replay(file)) {
        std::cerr << file << " cannot be read\n";
        return 1;
      }
      ++replayed;
    }
  }
  if (replayed == 0) std::cerr << "there is nothing to replay\n";
  return replayed == 0 ? 1 : 0;
}

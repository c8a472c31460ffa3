#include "tests/support/files.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace orvo_test {

TemporaryFolder::TemporaryFolder()
    : path_((std::filesystem::temp_directory_path() / "orvo-test-XXXXXX")
                .string()) {
  if (mkdtemp(path_.data()) == nullptr) {
    throw std::runtime_error("No temporary folder at " + path_);
  }
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::string TemporaryFolder::operator/(const std::string& name) const {
  return path_ + "/" + name;
}

ScopedWorkingDirectory::ScopedWorkingDirectory(const std::string& path)
    : saved_(std::filesystem::current_path().string()) {
  std::filesystem::current_path(path);
}

ScopedWorkingDirectory::~ScopedWorkingDirectory() {
  std::filesystem::current_path(saved_);
}

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios_base::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void WriteFile(const std::string& path, const std::string& content) {
  std::ofstream(path, std::ios_base::binary) << content;
}

int CountOpenDescriptors() {
  const std::filesystem::directory_iterator entries("/proc/self/fd");
  // One of them belongs to the iterator itself.
  return static_cast<int>(std::distance(begin(entries), end(entries))) - 1;
}

}  // namespace orvo_test

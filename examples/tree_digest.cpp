// Prints hash, size and path of each file below a folder, in natural order.
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "orvo/byte_order.h"
#include "orvo/exception_log.h"
#include "orvo/format.h"
#include "orvo/path.h"
#include "orvo/thread_safe_ostream.h"

namespace {

// The names of a folder come in natural order, so the files do too. Links are
// left out: they may lead in circles.
void FindFiles(const std::string& folder, std::vector<std::string>* files) {
  for (const std::string& name : orvo::path::entries(folder)) {
    const std::string path = orvo::path::Join(folder, name);
    if (std::filesystem::is_symlink(path)) continue;
    if (orvo::path::isdir(path)) {
      FindFiles(path, files);
    } else if (orvo::path::isfile(path)) {
      files->push_back(path);
    }
  }
}

std::string Digest(const std::string& path) {
  errno = 0;
  std::ifstream file(path, std::ios_base::binary);
  std::string content;
  char part[65536];
  while (file.read(part, sizeof part), file.gcount() > 0) {
    content.append(part, static_cast<std::size_t>(file.gcount()));
  }
  if (!file.is_open() || file.bad()) {
    throw std::runtime_error(
        orvo::format("%s: %s", path.c_str(), orvo::errmsg(errno).c_str()));
  }
  return orvo::format("%016lx %9zu  %s",
                      orvo::hash(content.data(), content.size()),
                      content.size(), path.c_str());
}

// Takes one file after the other, as the other threads do; nothing stays of
// those that cannot be read.
void DigestFiles(const std::vector<std::string>& files,
                 std::atomic<std::size_t>* next,
                 std::vector<std::optional<std::string>>* digests) {
  for (std::size_t i = 0; (i = (*next)++) < files.size();) {
    try {
      (*digests)[i] = Digest(files[i]);
    } catch (const std::exception& error) {
      orvo::LogException(error.what(), __FILE__, __LINE__);
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2 || argc > 3 || !orvo::path::isdir(argv[1])) {
    std::cerr << "usage: tree_digest FOLDER [LOG]\n";
    return 2;
  }
  orvo::SetThreadExceptionLogPath(argc == 3 ? argv[2] : "tree_digest.log");

  std::vector<std::string> files;
  try {
    FindFiles(argv[1], &files);
  } catch (const std::exception& error) {
    orvo::LogException(error.what(), __FILE__, __LINE__);
    return 1;
  }

  std::atomic<std::size_t> next{0};
  std::vector<std::optional<std::string>> digests(files.size());
  std::vector<std::thread> threads(4);
  for (std::thread& thread : threads) {
    thread = std::thread(DigestFiles, std::cref(files), &next, &digests);
  }
  for (std::thread& thread : threads) thread.join();

  for (const auto& digest : digests) {
    if (digest) orvo::CoutBuffer() << *digest << orvo::endl;
  }
  return std::count(digests.begin(), digests.end(), std::nullopt) == 0 ? 0 : 1;
}

// Calls to the file system beside Boost, GLib, the standard library and the
// bare system calls.

#include <benchmark/benchmark.h>
#include <dirent.h>
#include <glib.h>
#include <glib/gstdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <boost/filesystem.hpp>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "bench/compare.h"
#include "orvo/path.h"

namespace {

using orvo_bench::Compare;
using orvo_bench::Contender;

// A folder of its own for each run of the program.
class Folder {
 public:
  Folder()
      : path_(std::filesystem::temp_directory_path() / "orvo-bench-XXXXXX") {
    if (mkdtemp(path_.data()) == nullptr) std::abort();
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  ~Folder() { std::filesystem::remove_all(path_); }

  std::string operator/(const std::string& name) const {
    return path_ + "/" + name;
  }

 private:
  std::string path_;
};

bool HasType(const std::string& path, mode_t type) {
  struct stat status;
  return stat(path.c_str(), &status) == 0 && (status.st_mode & S_IFMT) == type;
}

void CompareFileTypes(const std::string& name, std::size_t depth,
                      const std::string& path) {
  Compare("filesystem/isfile" + name, depth,
          Contender{"orvo", [=] { return orvo::path::isfile(path); }},
          Contender{"std",
                    [=] {
                      std::error_code ignored;
                      return std::filesystem::is_regular_file(path, ignored);
                    }},
          Contender{"boost",
                    [=] {
                      boost::system::error_code ignored;
                      return boost::filesystem::is_regular_file(path, ignored);
                    }},
          Contender{"glib",
                    [=] {
                      return g_file_test(path.c_str(),
                                         G_FILE_TEST_IS_REGULAR) != 0;
                    }},
          Contender{"limit", [=] { return HasType(path, S_IFREG); }});
  Compare("filesystem/isdir" + name, depth,
          Contender{"orvo", [=] { return orvo::path::isdir(path); }},
          Contender{"std",
                    [=] {
                      std::error_code ignored;
                      return std::filesystem::is_directory(path, ignored);
                    }},
          Contender{"boost",
                    [=] {
                      boost::system::error_code ignored;
                      return boost::filesystem::is_directory(path, ignored);
                    }},
          Contender{"glib",
                    [=] {
                      return g_file_test(path.c_str(), G_FILE_TEST_IS_DIR) != 0;
                    }},
          Contender{"limit", [=] { return HasType(path, S_IFDIR); }});
}

// Each form also removes what it made, which takes the same time for all.
void CompareDirectories(const Folder& folder) {
  const std::string existing = folder / "existing";
  mkdir(existing.c_str(), 0755);
  Compare(
      "filesystem/make_directory_exists", 1,
      Contender{"orvo",
                [=] {
                  orvo::path::MakeDirectory(existing);
                  return true;
                }},
      Contender{"std",
                [=] { return !std::filesystem::create_directory(existing); }},
      Contender{"boost",
                [=] { return !boost::filesystem::create_directory(existing); }},
      Contender{"limit", [=] {
                  return mkdir(existing.c_str(), 0755) != 0 &&
                         HasType(existing, S_IFDIR);
                }});

  const std::string created = folder / "created";
  const auto remove = [=] { return rmdir(created.c_str()) == 0; };
  Compare("filesystem/make_directory_new", 1,
          Contender{"orvo",
                    [=] {
                      orvo::path::MakeDirectory(created);
                      return remove();
                    }},
          Contender{"std",
                    [=] {
                      std::filesystem::create_directory(created);
                      return remove();
                    }},
          Contender{"boost",
                    [=] {
                      boost::filesystem::create_directory(created);
                      return remove();
                    }},
          Contender{"limit", [=] {
                      return mkdir(created.c_str(), 0755) == 0 && remove();
                    }});
}

// The size is the number of directories that are made.
void CompareChains(const Folder& folder, std::size_t size) {
  const std::string created = folder / "created";
  std::vector<std::string> chain;
  for (std::string path = created; chain.size() < size; path += "/below") {
    chain.push_back(path);
  }
  const auto remove_chain = [=] {
    return std::all_of(chain.rbegin(), chain.rend(), [](const auto& path) {
      return rmdir(path.c_str()) == 0;
    });
  };
  // All the directories on the way, the existing ones too.
  std::vector<std::string> way;
  for (std::size_t i = 1; (i = chain.back().find('/', i)) != std::string::npos;
       ++i) {
    way.push_back(chain.back().substr(0, i));
  }
  way.push_back(chain.back());
  Compare("filesystem/make_directories_new", size,
          Contender{"orvo",
                    [=] {
                      orvo::path::MakeDirectories(chain.back());
                      return remove_chain();
                    }},
          Contender{"std",
                    [=] {
                      std::filesystem::create_directories(chain.back());
                      return remove_chain();
                    }},
          Contender{"boost",
                    [=] {
                      boost::filesystem::create_directories(chain.back());
                      return remove_chain();
                    }},
          Contender{"glib",
                    [=] {
                      return g_mkdir_with_parents(chain.back().c_str(), 0755) ==
                                 0 &&
                             remove_chain();
                    }},
          Contender{"limit", [=] {
                      for (const std::string& path : way) {
                        if (mkdir(path.c_str(), 0755) != 0 &&
                            !HasType(path, S_IFDIR)) {
                          return false;
                        }
                      }
                      return remove_chain();
                    }});
}

std::vector<std::string> PlainListing(const std::string& path) {
  std::vector<std::string> names;
  DIR* const directory = opendir(path.c_str());
  while (const dirent* const entry = readdir(directory)) {
    names.emplace_back(entry->d_name);
  }
  closedir(directory);
  return names;
}

void CompareListings(const Folder& folder, std::size_t size) {
  const std::string path = folder / std::to_string(size);
  std::filesystem::create_directory(path);
  for (std::size_t i = 0; i < size; ++i) {
    std::ofstream(path + "/file" + std::to_string(i) + ".txt");
  }

  // Counted, because every listing of orvo's leaves a descriptor open.
  constexpr int kListings = 400;
  if (orvo::listdir(path) != PlainListing(path)) {
    std::cerr << "filesystem/listdir: the listings differ\n";
    std::exit(1);
  }
  const std::string name = "/" + std::to_string(size);
  benchmark::RegisterBenchmark(
      ("filesystem/listdir/orvo" + name).c_str(),
      [path](benchmark::State& state) {
        const int next_descriptor = dup(0);
        close(next_descriptor);
        for (auto _ : state) benchmark::DoNotOptimize(orvo::listdir(path));
        for (int i = 0; i < kListings; ++i) close(next_descriptor + i);
      })
      ->Iterations(kListings);
  benchmark::RegisterBenchmark(("filesystem/listdir/limit" + name).c_str(),
                               [path](benchmark::State& state) {
                                 for (auto _ : state)
                                   benchmark::DoNotOptimize(PlainListing(path));
                               })
      ->Iterations(kListings);
}

const bool registered = [] {
  static const Folder folder;
  std::string parent = folder / "parents";
  std::size_t depth = 0;
  for (const std::size_t size : {1U, 8U, 32U}) {
    for (; depth < size; ++depth) parent += "/below";
    std::filesystem::create_directories(parent);
    std::ofstream(parent + "/file").put('x');
    CompareFileTypes("", size, parent + "/file");
    CompareFileTypes("_missing", size, parent + "/missing");
  }
  CompareDirectories(folder);
  for (const std::size_t size : {1U, 4U, 16U}) CompareChains(folder, size);
  for (const std::size_t size : {8U, 256U, 4096U}) {
    CompareListings(folder, size);
  }
  return true;
}();

}  // namespace

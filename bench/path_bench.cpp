#include <absl/strings/match.h>
#include <absl/strings/str_cat.h>
#include <absl/strings/str_join.h>
#include <absl/strings/str_replace.h>
#include <absl/strings/str_split.h>
#include <benchmark/benchmark.h>
#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <boost/filesystem.hpp>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "orvo/path.h"

namespace {

using StringPair = std::pair<std::string, std::string>;

// One way of doing an operation.
template <typename Function>
struct Contender {
  const char* name;
  Function function;
};
template <typename Function>
Contender(const char*, Function) -> Contender<Function>;

template <typename Function>
benchmark::internal::Benchmark* Register(const std::string& operation,
                                         std::size_t size,
                                         Contender<Function> contender) {
  const std::string name =
      operation + "/" + contender.name + "/" + std::to_string(size);
  return benchmark::RegisterBenchmark(
      name.c_str(), [contender](benchmark::State& state) {
        for (auto _ : state) benchmark::DoNotOptimize(contender.function());
      });
}

template <typename Result>
void Check(const std::string& operation, const Result& expected,
           const Result& result) {
  if (result == expected) return;
  std::fprintf(stderr, "The contenders differ in %s.\n", operation.c_str());
  std::abort();
}

// Registers an operation in each of its forms, which have to agree.
template <typename First, typename... Others>
void Compare(const std::string& operation, std::size_t size,
             Contender<First> first, Contender<Others>... others) {
  const auto expected = first.function();
  (Check(operation, expected, others.function()), ...);
  Register(operation, size, first);
  (Register(operation, size, others), ...);
}

// A path of exactly this many bytes: components of seven letters, and a name
// with an extension.
std::string MakePath(std::size_t size) {
  const std::string name = "b.cpp";
  std::string path;
  while (path.size() + name.size() < size) {
    path += path.size() % 8 == 7 ? '/' : 'x';
  }
  path.back() = '/';
  return path + name;
}

std::vector<std::string> MakeComponents(std::size_t count) {
  std::vector<std::string> components;
  for (std::size_t i = 0; i < count; ++i) {
    components.push_back("part" + std::to_string(i));
  }
  return components;
}

void CompareJoins() {
  for (const std::size_t size : {7U, 64U, 500U}) {
    const std::string a = MakePath(size);
    const std::string b = "name.cpp";
    Compare("path/join2", size,
            Contender{"orvo", [=] { return orvo::path::Join(a, b); }},
            Contender{"absl", [=] { return absl::StrCat(a, "/", b); }},
            Contender{"std",
                      [=] { return (std::filesystem::path(a) / b).string(); }},
            Contender{"boost", [=] {
                        return (boost::filesystem::path(a) / b).string();
                      }});

    const std::string doubled = absl::StrReplaceAll(a, {{"/", "//"}}) + "/";
    Compare("path/join2_doubled", size,
            Contender{"orvo", [=] { return orvo::path::Join(doubled, b); }},
            Contender{"absl",
                      [=] {
                        return absl::StrReplaceAll(
                            absl::StrCat(doubled, "/", b), {{"//", "/"}});
                      }},
            Contender{"std", [=] {
                        return (std::filesystem::path(doubled) / b)
                            .lexically_normal()
                            .string();
                      }});
  }
  for (const std::size_t size : {3U, 16U, 128U}) {
    std::vector<std::string> parts = MakeComponents(size);
    Compare(
        "path/join", size,
        Contender{"orvo",
                  [=] { return orvo::path::Join(parts.begin(), parts.end()); }},
        Contender{"absl", [=] { return absl::StrJoin(parts, "/"); }});

    for (std::string& part : parts) part += '/';
    Compare(
        "path/join_doubled", size,
        Contender{"orvo",
                  [=] { return orvo::path::Join(parts.begin(), parts.end()); }},
        Contender{"absl", [=] {
                    return absl::StrReplaceAll(absl::StrJoin(parts, "/"),
                                               {{"//", "/"}});
                  }});
  }
}

StringPair PlainSplit(const std::string& path, char mark, std::size_t dropped) {
  const std::size_t position = path.rfind(mark);
  if (position == std::string::npos) return {path, ""};
  return {path.substr(0, position), path.substr(position + dropped)};
}

std::string PlainBasename(const std::string& path) {
  return PlainSplit(path, '/', 1).second;
}

std::string PlainDirname(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? "" : path.substr(0, slash);
}

// Copies texts whose places are known beforehand.
auto CopyOf(std::string_view text) {
  return [text] { return std::string(text); };
}

auto CopiesOf(std::string_view first, std::string_view second) {
  return [=] { return StringPair(first, second); };
}

void CompareCuts(const std::string& path) {
  using orvo::path::basename_no_ext;
  const std::size_t size = path.size();
  const std::string_view view = path;
  const std::string_view base = view.substr(view.rfind('/') + 1);
  const std::string_view directory = view.substr(0, view.rfind('/'));
  const std::size_t dot = view.rfind('.');

  Compare("path/basename", size,
          Contender{"orvo", [&] { return orvo::path::basename(path); }},
          Contender{"plain", [&] { return PlainBasename(path); }},
          Contender{
              "std",
              [&] { return std::filesystem::path(path).filename().string(); }},
          Contender{"boost",
                    [&] {
                      return boost::filesystem::path(path).filename().string();
                    }},
          Contender{"limit", CopyOf(base)});
  Compare(
      "path/dirname", size,
      Contender{"orvo", [&] { return orvo::path::dirname(path); }},
      Contender{"plain", [&] { return PlainDirname(path); }},
      Contender{
          "std",
          [&] { return std::filesystem::path(path).parent_path().string(); }},
      Contender{
          "boost",
          [&] { return boost::filesystem::path(path).parent_path().string(); }},
      Contender{"limit", CopyOf(directory)});
  Compare("path/split", size,
          Contender{"orvo", [&] { return orvo::path::split(path); }},
          Contender{"plain", [&] { return PlainSplit(path, '/', 1); }},
          Contender{"limit", CopiesOf(directory, base)});
  Compare("path/splitext", size,
          Contender{"orvo", [&] { return orvo::path::splitext(path); }},
          Contender{"plain", [&] { return PlainSplit(path, '.', 0); }},
          Contender{"limit", CopiesOf(view.substr(0, dot), view.substr(dot))});
  Compare(
      "path/extension", size,
      Contender{"orvo", [&] { return orvo::path::extension(path); }},
      Contender{"plain",
                [&] { return PlainSplit(PlainBasename(path), '.', 0).second; }},
      Contender{
          "std",
          [&] { return std::filesystem::path(path).extension().string(); }},
      Contender{"limit", CopyOf(view.substr(dot))});
  Compare(
      "path/basename_no_ext", size,
      Contender{"orvo", [&] { return basename_no_ext(path); }},
      Contender{"plain",
                [&] { return PlainSplit(PlainBasename(path), '.', 0).first; }},
      Contender{"std",
                [&] { return std::filesystem::path(path).stem().string(); }},
      Contender{"limit", CopyOf(base.substr(0, base.rfind('.')))});
}

// For a start without a slash at the end and a path without doubled ones.
std::string PlainRelpath(const std::string& path, const std::string& start) {
  if (!absl::StartsWith(path, start) || path[start.size()] != '/') return path;
  return path.substr(start.size() + 1);
}

void CompareComponents(std::size_t size) {
  const std::vector<std::string> parts = MakeComponents(size);
  const std::string path = "/" + absl::StrJoin(parts, "/");
  Compare("path/split_to_vector", size,
          Contender{"orvo", [=] { return orvo::path::split_to_vector(path); }},
          Contender{"absl", [=]() -> std::vector<std::string> {
                      return absl::StrSplit(path, '/');
                    }});

  const auto middle = parts.begin() + static_cast<long>(size / 2);
  const std::string start = "/" + absl::StrJoin(parts.begin(), middle, "/");
  const std::string rest = absl::StrJoin(middle, parts.end(), "/");
  Compare("path/relpath", size,
          Contender{"orvo", [=] { return orvo::path::relpath(path, start); }},
          Contender{"absl", [=] { return PlainRelpath(path, start); }},
          Contender{"limit", [=] { return std::string(rest); }});
}

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

void CompareFileTypes(const std::string& name, const std::string& path) {
  Compare("filesystem/isfile" + name, 1,
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
          Contender{"limit", [=] { return HasType(path, S_IFREG); }});
  Compare("filesystem/isdir" + name, 1,
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

  std::vector<std::string> chain;
  for (std::string path = created; chain.size() < 4; path += "/below") {
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
  Compare("filesystem/make_directories_new", 4,
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

  Check("filesystem/listdir", PlainListing(path), orvo::listdir(path));
  // Counted, because every listing leaves a descriptor open.
  constexpr int kListings = 400;
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

void CompareAll() {
  CompareJoins();
  static const std::string paths[] = {MakePath(7), MakePath(64), MakePath(500)};
  for (const std::string& path : paths) CompareCuts(path);
  for (const std::size_t size : {3U, 16U, 128U}) CompareComponents(size);

  static const Folder folder;
  const std::string file = folder / "file";
  std::ofstream(file).put('x');
  CompareFileTypes("", file);
  CompareFileTypes("_missing", folder / "missing");
  CompareDirectories(folder);
  for (const std::size_t size : {8U, 256U, 4096U})
    CompareListings(folder, size);
}

const bool registered = (CompareAll(), true);

}  // namespace

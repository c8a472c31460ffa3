// Paths as texts beside abseil, Boost, the standard library, plain cuts at the
// last mark, and the copy of a result that is known beforehand.

#include <absl/strings/match.h>
#include <absl/strings/str_cat.h>
#include <absl/strings/str_join.h>
#include <absl/strings/str_replace.h>
#include <absl/strings/str_split.h>
#include <benchmark/benchmark.h>

#include <boost/filesystem.hpp>
#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "bench/compare.h"
#include "orvo/path.h"

namespace {

using orvo_bench::Compare;
using orvo_bench::Contender;
using StringPair = std::pair<std::string, std::string>;

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

const bool registered = [] {
  CompareJoins();
  static const std::string paths[] = {MakePath(7), MakePath(64), MakePath(500)};
  for (const std::string& path : paths) CompareCuts(path);
  for (const std::size_t size : {3U, 16U, 128U}) CompareComponents(size);
  return true;
}();

}  // namespace

#include "orvo/path.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cassert>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

#include "internal/words.h"
#include "orvo/errors.h"
#include "orvo/format.h"
#include "orvo/numeric_string.h"

namespace orvo::path {
namespace {

// Characters that are looked at all at once.
constexpr std::size_t kBlock = 16;

// The top bit of each of the eight characters that is a slash and has one
// behind it.
std::uint64_t DoubledSlashes(const char* block) {
  return internal::BytesEqualTo('/', internal::LoadWord(block)) &
         internal::BytesEqualTo('/', internal::LoadWord(block + 1));
}

// The same for sixteen, as vectors: only whether there is one.
bool HasDoubledSlash(const char* block) {
  unsigned char doubled = 0;
  for (std::size_t i = 0; i < kBlock; ++i) {
    doubled |=
        static_cast<unsigned char>((block[i] == '/') & (block[i + 1] == '/'));
  }
  return doubled != 0;
}

// The place of the first two slashes in a row, or npos. Where chance puts the
// loops across lines of the instruction cache, they take a third longer.
[[gnu::aligned(64)]] std::size_t FindDoubledSlash(std::string_view text) {
  if (text.size() <= internal::kWordSize) return text.find("//");
  const char* const data = text.data();
  std::size_t i = 0;
  while (text.size() - i > kBlock && !HasDoubledSlash(data + i)) i += kBlock;
  // The last word overlaps what comes before it.
  const std::size_t last = text.size() - internal::kWordSize - 1;
  for (i = std::min(i, last);; i = std::min(i + internal::kWordSize, last)) {
    const std::uint64_t doubled = DoubledSlashes(data + i);
    if (doubled != 0) return i + internal::LeadingZeroBytes(doubled);
    if (i == last) return std::string_view::npos;
  }
}

// The components of a path, in place. They are found from the back: an empty
// one ends the search, and what precedes it is the first component.
std::vector<std::string_view> FindComponents(std::string_view path) {
  std::vector<std::string_view> components;
  components.reserve(16);  // enough for most paths
  for (;;) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string_view::npos) break;
    const std::string_view last = path.substr(slash + 1);
    path = path.substr(0, slash);
    if (last.empty()) break;
    components.push_back(last);
  }
  components.push_back(path);
  std::reverse(components.begin(), components.end());
  return components;
}

// Whether the path is the start followed by a slash and further components,
// none of them empty.
bool IsBelow(std::string_view path, std::string_view start) {
  if (path.size() <= start.size() || path[start.size()] != '/') return false;
  const std::string_view rest = path.substr(start.size());
  return rest.back() != '/' && path.substr(0, start.size()) == start &&
         FindDoubledSlash(rest) == std::string_view::npos;
}

// Apart from its caller, whose usual case needs no lists: what follows the
// start is the answer.
[[gnu::noinline]] std::string RelpathByComponents(const std::string& path,
                                                  const std::string& start) {
  const std::vector<std::string_view> pathVector = FindComponents(path);
  const std::vector<std::string_view> startVector = FindComponents(start);
  assert(!pathVector.empty());
  assert(!startVector.empty());
  if (pathVector.front() != startVector.front()) return path;
  if (pathVector.size() < startVector.size()) return path;

  const auto rest =
      std::mismatch(startVector.begin(), startVector.end(), pathVector.begin())
          .second;
  return Join(rest, pathVector.end());
}

// Where the extension of the base name begins; the end of the path if it has
// none.
std::size_t FindExtension(std::string_view path) {
  for (std::size_t i = path.size(); i > 0 && path[i - 1] != '/'; --i) {
    if (path[i - 1] == '.') return i - 1;
  }
  return path.size();
}

// Whether the path leads to a file of one of the types of S_IFMT.
bool HasFileType(const std::string& path, mode_t type) {
  struct stat status;
  return stat(path.c_str(), &status) == 0 && (status.st_mode & S_IFMT) == type;
}

DIR* OpenDirectory(const std::string& path) {
  DIR* const directory = opendir(path.c_str());
  const int error = errno;
  if (directory == nullptr) throw BadDir(orvo::errmsg(error));
  return directory;
}

struct DirectoryCloser {
  void operator()(DIR* directory) const { closedir(directory); }
};

bool IsDotName(std::string_view name) {
  return name == "." || name == "..";
}

std::string ExplainMkdirError(int error) {
  const auto entry = mkdirErrorsByErrno.find(error);
  if (entry != mkdirErrorsByErrno.end()) return entry->second;
  return "Unknown errno " + std::to_string(error);
}

}  // namespace

void CollapseSlashes_(std::string& text) {
  const std::size_t doubled = FindDoubledSlash(text);
  if (doubled == std::string_view::npos) return;
  const auto first = text.begin() + static_cast<std::ptrdiff_t>(doubled);
  const auto are_slashes = [](char a, char b) { return a == '/' && b == '/'; };
  text.erase(std::unique(first, text.end(), are_slashes), text.end());
}

std::string Join(const std::string& a, const std::string& b) {
  std::string path;
  path.reserve(a.size() + 1 + b.size());
  path.append(a).append(1, '/').append(b);
  CollapseSlashes_(path);
  return path;
}

std::string Join(std::initializer_list<std::string> parts) {
  return Join(parts.begin(), parts.end());
}

template ORVO_EXPORT std::string Join(const std::string*, const std::string*);
template ORVO_EXPORT std::string Join(StringIterator_, StringIterator_);
template ORVO_EXPORT std::string Join(ConstStringIterator_,
                                      ConstStringIterator_);

std::string basename(const std::string& path) {
  const std::string_view text = path;
  return std::string(text.substr(text.rfind('/') + 1));
}

std::string dirname(const std::string& path) {
  const std::string_view text = path;
  const std::size_t slash = text.rfind('/');
  return std::string(
      text.substr(0, slash == std::string_view::npos ? 0 : slash));
}

std::pair<std::string, std::string> split(const std::string& path) {
  const std::string_view text = path;
  const std::size_t slash = text.rfind('/');
  if (slash == std::string_view::npos) return {path, std::string()};
  return {std::string(text.substr(0, slash)),
          std::string(text.substr(slash + 1))};
}

std::pair<std::string, std::string> splitext(const std::string& path) {
  const std::string_view text = path;
  const std::size_t dot = std::min(text.rfind('.'), text.size());
  return {std::string(text.substr(0, dot)), std::string(text.substr(dot))};
}

std::string basename_no_ext(const std::string& path) {
  const std::string_view text = path;
  const std::size_t begin = text.rfind('/') + 1;
  return std::string(text.substr(begin, FindExtension(text) - begin));
}

std::string extension(const std::string& path) {
  const std::string_view text = path;
  return std::string(text.substr(FindExtension(text)));
}

std::vector<std::string> split_to_vector(const std::string& path) {
  const std::vector<std::string_view> components = FindComponents(path);
  return {components.begin(), components.end()};
}

std::string relpath(const std::string& path, const std::string& start) {
  if (IsBelow(path, start)) {
    return std::string(
        path.begin() + static_cast<std::ptrdiff_t>(start.size() + 1),
        path.end());
  }
  return RelpathByComponents(path, start);
}

bool isfile(const std::string& path) {
  return HasFileType(path, S_IFREG);
}

bool isdir(const std::string& path) {
  return HasFileType(path, S_IFDIR);
}

std::map<int, std::string> mkdirErrorsByErrno = {
    {EACCES,
     "Search permission is denied on a component of the path prefix, or write "
     "permission is denied on the parent directory of the directory to be "
     "created."},
    {EEXIST, "The named file exists."},
    {ELOOP,
     "A loop exists in symbolic links encountered during resolution of the "
     "path argument."},
    {EMLINK, "The link count of the parent directory would exceed {LINK_MAX}."},
    {ENAMETOOLONG,
     "The length of the path argument exceeds {PATH_MAX} or a pathname "
     "component is longer than {NAME_MAX}."},
    {ENOENT,
     "A component of the path prefix specified by path does not name an "
     "existing directory or path is an empty string."},
    {ENOSPC,
     "The file system does not contain enough space to hold the contents of "
     "the new directory or to extend the parent directory of the new "
     "directory."},
    {ENOTDIR, "A component of the path prefix is not a directory."},
    {EROFS, "The parent directory resides on a read-only file system."},
};

void MakeDirectory(const std::string& path) {
  if (mkdir(path.c_str(), 0755) == 0) return;
  const int error = errno;
  if (error != EEXIST) {
    throw PathError("Failed to create directory: " + path + ", " +
                    ExplainMkdirError(error));
  }
  if (!isdir(path)) {
    throw PathError("Failed to create directory " + path +
                    ". File already exists.");
  }
}

void MakeDirectories(const std::string& path) {
  const std::vector<std::string> components = SplitString(path, '/', -1);
  auto component = components.begin();
  std::string directory = *component++;
  if (directory.empty()) {
    if (component == components.end()) return;
    directory = "/" + *component++;
  }

  MakeDirectory(directory);
  for (; component != components.end(); ++component) {
    directory = Join(directory, *component);
    MakeDirectory(directory);
  }
}

std::vector<std::string> entries(const std::string& path) {
  std::vector<std::string> names;
  const std::unique_ptr<DIR, DirectoryCloser> directory(OpenDirectory(path));
  while (const dirent* const entry = readdir(directory.get())) {
    if (!IsDotName(entry->d_name)) names.emplace_back(entry->d_name);
  }
  // The second sort keeps the order of the first where names tie.
  std::sort(names.begin(), names.end());
  std::stable_sort(names.begin(), names.end(), NumericStringCompare());
  return names;
}

}  // namespace orvo::path

namespace orvo {

std::vector<std::string> listdir(const std::string& path) {
  std::vector<std::string> names;
  DIR* const directory = path::OpenDirectory(path);
  // Kept on purpose: the directory is never closed.
  while (const dirent* const entry = readdir(directory)) {
    names.emplace_back(entry->d_name);
  }
  return names;
}

}  // namespace orvo

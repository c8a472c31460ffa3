#include "orvo/path.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cassert>
#include <cerrno>
#include <cstddef>
#include <memory>
#include <string_view>

#include "orvo/errors.h"
#include "orvo/format.h"
#include "orvo/numeric_string.h"

namespace orvo::path {
namespace {

// The components of a path in place: a first one, which may hold slashes, and
// the text of the others, none of which is empty.
class Components {
 public:
  explicit Components(std::string_view path)
      : first_(path), others_(path.substr(path.size())) {
    for (std::size_t slash; (slash = first_.rfind('/')) != first_.npos;) {
      const bool ends_with_slash = slash + 1 == first_.size();
      first_ = first_.substr(0, slash);
      if (ends_with_slash) break;
      others_ = path.substr(slash + 1);
      ++size_;
    }
  }

  bool empty() const { return size_ == 0; }
  std::size_t size() const { return size_; }
  std::string_view first() const { return first_; }
  std::string_view others() const { return others_; }

 private:
  std::string_view first_;
  std::string_view others_;
  std::size_t size_ = 1;
};

// Removes the first component from a text of components and returns it.
std::string_view TakeComponent(std::string_view& components) {
  const std::string_view component = components.substr(0, components.find('/'));
  components.remove_prefix(std::min(component.size() + 1, components.size()));
  return component;
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
  if (directory == nullptr) throw BadDir(orvo::errmsg(errno));
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

std::string CollapseSlashes_(std::string text) {
  const auto are_slashes = [](char a, char b) { return a == '/' && b == '/'; };
  text.erase(std::unique(text.begin(), text.end(), are_slashes), text.end());
  return text;
}

std::string Join(const std::string& a, const std::string& b) {
  std::string glued;
  glued.reserve(a.size() + 1 + b.size());
  glued += a;
  glued += '/';
  glued += b;
  return CollapseSlashes_(std::move(glued));
}

std::string Join(std::initializer_list<std::string> parts) {
  return Join(parts.begin(), parts.end());
}

template ORVO_EXPORT std::string Join(const std::string*, const std::string*);
template ORVO_EXPORT std::string Join(StringIterator_, StringIterator_);
template ORVO_EXPORT std::string Join(ConstStringIterator_,
                                      ConstStringIterator_);

std::string basename(const std::string& path) {
  return path.substr(path.rfind('/') + 1);
}

std::string dirname(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == path.npos ? std::string() : path.substr(0, slash);
}

std::pair<std::string, std::string> split(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == path.npos) return {path, std::string()};
  return {path.substr(0, slash), path.substr(slash + 1)};
}

std::pair<std::string, std::string> splitext(const std::string& path) {
  const std::size_t dot = std::min(path.rfind('.'), path.size());
  return {path.substr(0, dot), path.substr(dot)};
}

std::string basename_no_ext(const std::string& path) {
  const std::size_t begin = path.rfind('/') + 1;
  return path.substr(begin, FindExtension(path) - begin);
}

std::string extension(const std::string& path) {
  return path.substr(FindExtension(path));
}

std::vector<std::string> split_to_vector(const std::string& path) {
  const Components components(path);
  std::vector<std::string> result;
  result.reserve(components.size());
  result.emplace_back(components.first());
  for (std::string_view others = components.others(); !others.empty();) {
    result.emplace_back(TakeComponent(others));
  }
  return result;
}

std::string relpath(const std::string& path, const std::string& start) {
  const Components pathVector(path);
  const Components startVector(start);
  if (pathVector.empty() || startVector.empty()) return path;
  assert(!pathVector.empty());
  assert(!startVector.empty());
  if (pathVector.first() != startVector.first()) return path;
  if (pathVector.size() < startVector.size()) return path;

  std::string_view rest = pathVector.others();
  std::string_view shared = startVector.others();
  for (std::string_view next = rest; !shared.empty(); rest = next) {
    if (TakeComponent(next) != TakeComponent(shared)) break;
  }
  // Components that are not empty and single slashes: nothing to collapse.
  return std::string(rest);
}

bool isfile(const std::string& path) {
  return HasFileType(path, S_IFREG);
}

bool isdir(const std::string& path) {
  return HasFileType(path, S_IFDIR);
}

const std::map<int, std::string> mkdirErrorsByErrno = {
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

#ifndef ORVO_TESTS_SUPPORT_FILES_H_
#define ORVO_TESTS_SUPPORT_FILES_H_

#include <string>

namespace orvo_test {

/// A new empty folder, removed with all it holds when the object goes.
class TemporaryFolder {
 public:
  TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder();

  /// Absolute, without a slash at the end.
  const std::string& path() const { return path_; }

  /// The path of a name in the folder; nothing is created.
  std::string operator/(const std::string& name) const;

 private:
  std::string path_;
};

/// Makes a folder the working directory while the object lives.
class ScopedWorkingDirectory {
 public:
  explicit ScopedWorkingDirectory(const std::string& path);
  ScopedWorkingDirectory(const ScopedWorkingDirectory&) = delete;
  ScopedWorkingDirectory& operator=(const ScopedWorkingDirectory&) = delete;
  ~ScopedWorkingDirectory();

 private:
  std::string saved_;
};

/// The whole file, or "" if it cannot be read.
std::string ReadFile(const std::string& path);

void WriteFile(const std::string& path, const std::string& content);

/// Number of descriptors that this process has open.
int CountOpenDescriptors();

}  // namespace orvo_test

#endif  // ORVO_TESTS_SUPPORT_FILES_H_

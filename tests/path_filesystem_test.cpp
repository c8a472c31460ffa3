#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "orvo/errors.h"
#include "orvo/path.h"
#include "tests/support/files.h"
#include "tests/support/interpose/calls.h"
#include "tests/support/latch.h"

namespace {

using orvo::listdir;
using orvo::path::entries;
using orvo::path::isdir;
using orvo::path::isfile;
using orvo::path::MakeDirectories;
using orvo::path::MakeDirectory;
using orvo::path::PathError;
using orvo_test::CountOpenDescriptors;
using orvo_test::ScopedFailure;
using orvo_test::ScopedHook;
using orvo_test::ScopedWorkingDirectory;
using orvo_test::TemporaryFolder;
using orvo_test::WriteFile;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::ThrowsMessage;
using testing::UnorderedElementsAre;

// What an initialiser of this program sees, before main() has begun.
const std::map<int, std::string> explanations_before_main =
    orvo::path::mkdirErrorsByErrno;

// Counts the calls of a system function while it lives.
template <typename Signature>
class CallCounter;

template <typename Result, typename... Arguments>
class CallCounter<Result(Arguments...)> {
 public:
  explicit CallCounter(orvo_test::Interposed<Result(Arguments...)>& calls)
      : hook_(calls, [this, &calls](Arguments... arguments) {
          ++count_;
          return calls.Real(arguments...);
        }) {}
  int count() const { return count_; }

 private:
  int count_ = 0;
  ScopedHook<Result(Arguments...)> hook_;
};

template <typename Signature>
CallCounter(orvo_test::Interposed<Signature>&) -> CallCounter<Signature>;

// Lets mkdir() succeed without effect and notes the paths.
class MkdirRecorder {
 public:
  const std::vector<std::string>& paths() const { return paths_; }

 private:
  std::vector<std::string> paths_;
  ScopedHook<int(const char*, mode_t)> hook_{orvo_test::mkdir_calls,
                                             [this](const char* path, mode_t) {
                                               paths_.emplace_back(path);
                                               return 0;
                                             }};
};

// Gives up the superuser's rights for a while, if the process has them.
class ScopedOrdinaryUser {
 public:
  ScopedOrdinaryUser() {
    if (saved_ == 0) succeeded_ = seteuid(65534) == 0;
  }
  ScopedOrdinaryUser(const ScopedOrdinaryUser&) = delete;
  ScopedOrdinaryUser& operator=(const ScopedOrdinaryUser&) = delete;
  ~ScopedOrdinaryUser() {
    if (seteuid(saved_) != 0) std::abort();
  }

  bool succeeded() const { return succeeded_; }

 private:
  uid_t saved_ = geteuid();
  bool succeeded_ = true;
};

TEST(Isfile, HoldsForARegularFileOnly) {
  const TemporaryFolder folder;
  WriteFile(folder / "file", "");
  EXPECT_TRUE(isfile(folder / "file"));
  EXPECT_FALSE(isfile(folder.path()));
  EXPECT_FALSE(isfile(folder / "missing"));
  EXPECT_FALSE(isfile(folder / "file/below"));
  EXPECT_FALSE(isfile("/dev/null"));
  EXPECT_FALSE(isfile(""));
}

TEST(Isdir, HoldsForADirectoryOnly) {
  const TemporaryFolder folder;
  WriteFile(folder / "file", "");
  EXPECT_TRUE(isdir(folder.path()));
  EXPECT_TRUE(isdir(folder.path() + "/"));
  EXPECT_FALSE(isdir(folder / "file"));
  EXPECT_FALSE(isdir(folder / "missing"));
  EXPECT_FALSE(isdir("/dev/null"));
  EXPECT_FALSE(isdir(""));
}

TEST(FileTypes, FollowSymbolicLinks) {
  const TemporaryFolder folder;
  WriteFile(folder / "file", "");
  std::filesystem::create_symlink("file", folder / "to_file");
  std::filesystem::create_symlink(".", folder / "to_folder");
  std::filesystem::create_symlink("missing", folder / "to_nothing");
  std::filesystem::create_symlink("loop", folder / "loop");
  EXPECT_TRUE(isfile(folder / "to_file"));
  EXPECT_FALSE(isdir(folder / "to_file"));
  EXPECT_TRUE(isdir(folder / "to_folder"));
  EXPECT_FALSE(isfile(folder / "to_folder"));
  for (const char* name : {"to_nothing", "loop"}) {
    EXPECT_FALSE(isfile(folder / name)) << name;
    EXPECT_FALSE(isdir(folder / name)) << name;
  }
}

TEST(FileTypes, AreFalseForWhatCannotBeExamined) {
  const TemporaryFolder folder;
  WriteFile(folder / "file", "");
  for (const int error : {EACCES, EIO, ENOMEM, EOVERFLOW}) {
    const ScopedFailure failure("stat", error);
    EXPECT_FALSE(isfile(folder / "file")) << error;
    EXPECT_FALSE(isdir(folder.path())) << error;
  }
}

TEST(FileTypes, AskTheSystemOnce) {
  const TemporaryFolder folder;
  const CallCounter counter(orvo_test::stat_calls);
  EXPECT_FALSE(isfile(folder.path()));
  EXPECT_EQ(counter.count(), 1);
  EXPECT_TRUE(isdir(folder.path()));
  EXPECT_EQ(counter.count(), 2);
}

TEST(MkdirErrorsByErrno, HoldsNineExplanations) {
  const std::map<int, std::string> explanations = {
      {EACCES,
       "Search permission is denied on a component of the path prefix, or "
       "write permission is denied on the parent directory of the directory to "
       "be created."},
      {EEXIST, "The named file exists."},
      {ELOOP,
       "A loop exists in symbolic links encountered during resolution of the "
       "path argument."},
      {EMLINK,
       "The link count of the parent directory would exceed {LINK_MAX}."},
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
  EXPECT_EQ(orvo::path::mkdirErrorsByErrno, explanations);
  EXPECT_EQ(explanations_before_main, explanations);
  EXPECT_EQ(explanations.size(), 9U);
}

TEST(MakeDirectory, CreatesADirectory) {
  const TemporaryFolder folder;
  MakeDirectory(folder / "new");
  EXPECT_TRUE(std::filesystem::is_directory(folder / "new"));
}

TEST(MakeDirectory, AsksForMode0755) {
  std::string path;
  mode_t mode = 0;
  const ScopedHook hook(orvo_test::mkdir_calls,
                        [&](const char* asked_path, mode_t asked_mode) {
                          path = asked_path;
                          mode = asked_mode;
                          return 0;
                        });
  MakeDirectory("a//b/");
  EXPECT_EQ(path, "a//b/");
  EXPECT_EQ(mode, 0755U);
}

TEST(MakeDirectory, LeavesTheUmaskToTheProcess) {
  const TemporaryFolder folder;
  const mode_t saved = umask(0027);
  MakeDirectory(folder / "new");
  umask(saved);
  EXPECT_EQ(std::filesystem::status(folder / "new").permissions(),
            std::filesystem::perms(0750));
}

TEST(MakeDirectory, AsksNothingMoreAfterASuccess) {
  const MkdirRecorder recorder;
  const CallCounter counter(orvo_test::stat_calls);
  MakeDirectory("new");
  EXPECT_THAT(recorder.paths(), ElementsAre("new"));
  EXPECT_EQ(counter.count(), 0);
}

TEST(MakeDirectory, AcceptsAnExistingDirectory) {
  const TemporaryFolder folder;
  std::filesystem::create_symlink(".", folder / "link");
  EXPECT_NO_THROW(MakeDirectory(folder.path()));
  EXPECT_NO_THROW(MakeDirectory(folder.path() + "/"));
  EXPECT_NO_THROW(MakeDirectory(folder / "link"));
  EXPECT_NO_THROW(MakeDirectory("/"));
}

TEST(MakeDirectory, RejectsAFileInTheWay) {
  const TemporaryFolder folder;
  const ScopedWorkingDirectory working_directory(folder.path());
  WriteFile("file", "content");
  std::filesystem::create_symlink("missing", "link");
  EXPECT_THAT([] { MakeDirectory("file"); },
              ThrowsMessage<PathError>(
                  "Failed to create directory file. File already exists."));
  EXPECT_THAT([] { MakeDirectory("link"); },
              ThrowsMessage<PathError>(
                  "Failed to create directory link. File already exists."));
  EXPECT_EQ(orvo_test::ReadFile("file"), "content");
}

TEST(MakeDirectory, RejectsWhatHasVanishedAfterItWasFound) {
  const ScopedFailure exists("mkdir", EEXIST);
  const ScopedFailure vanished("stat", ENOENT);
  EXPECT_THAT([] { MakeDirectory("a"); },
              ThrowsMessage<PathError>(
                  "Failed to create directory a. File already exists."));
}

TEST(MakeDirectory, ExplainsEachErrorOfTheTable) {
  const struct {
    int error;
    const char* message;
  } cases[] = {
      {EACCES,
       "Failed to create directory: a/b, Search permission is denied on a "
       "component of the path prefix, or write permission is denied on the "
       "parent directory of the directory to be created."},
      {ELOOP,
       "Failed to create directory: a/b, A loop exists in symbolic links "
       "encountered during resolution of the path argument."},
      {EMLINK,
       "Failed to create directory: a/b, The link count of the parent "
       "directory would exceed {LINK_MAX}."},
      {ENAMETOOLONG,
       "Failed to create directory: a/b, The length of the path argument "
       "exceeds {PATH_MAX} or a pathname component is longer than "
       "{NAME_MAX}."},
      {ENOENT,
       "Failed to create directory: a/b, A component of the path prefix "
       "specified by path does not name an existing directory or path is an "
       "empty string."},
      {ENOSPC,
       "Failed to create directory: a/b, The file system does not contain "
       "enough space to hold the contents of the new directory or to extend "
       "the parent directory of the new directory."},
      {ENOTDIR,
       "Failed to create directory: a/b, A component of the path prefix is not "
       "a directory."},
      {EROFS,
       "Failed to create directory: a/b, The parent directory resides on a "
       "read-only file system."},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.error);
    const ScopedFailure failure("mkdir", c.error);
    EXPECT_THAT([] { MakeDirectory("a/b"); },
                ThrowsMessage<PathError>(c.message));
  }
}

TEST(MakeDirectory, NamesTheNumberOfAnyOtherError) {
  const ScopedFailure failure("mkdir", 12345);
  EXPECT_THAT([] { MakeDirectory("a"); },
              ThrowsMessage<PathError>(
                  "Failed to create directory: a, Unknown errno 12345"));
}

TEST(MakeDirectory, ThrowsAnErrorThatItsBaseCatches) {
  const ScopedFailure failure("mkdir", ENOSPC);
  EXPECT_THROW(MakeDirectory("a"), orvo::RuntimeError);
}

TEST(MakeDirectory, ReportsWhatTheSystemReports) {
  const TemporaryFolder folder;
  const ScopedWorkingDirectory working_directory(folder.path());
  WriteFile("file", "");
  std::filesystem::create_symlink("loop", "loop");
  const std::string long_name(300, 'x');
  const struct {
    std::string path;
    int error;
  } cases[] = {
      {"missing/a", ENOENT},     {"", ENOENT},
      {"file/a", ENOTDIR},       {"loop/a", ELOOP},
      {long_name, ENAMETOOLONG},
  };
  for (const auto& c : cases) {
    EXPECT_THAT([&] { MakeDirectory(c.path); },
                ThrowsMessage<PathError>(
                    "Failed to create directory: " + c.path + ", " +
                    orvo::path::mkdirErrorsByErrno.at(c.error)));
  }
}

TEST(MakeDirectory, ReportsAParentThatIsClosedToTheUser) {
  const TemporaryFolder folder;
  std::filesystem::permissions(folder.path(), std::filesystem::perms(0555));
  const ScopedOrdinaryUser user;
  if (!user.succeeded()) GTEST_SKIP() << "Cannot become an ordinary user.";
  EXPECT_THAT([&] { MakeDirectory(folder / "a"); },
              ThrowsMessage<PathError>(
                  "Failed to create directory: " + folder / "a" + ", " +
                  orvo::path::mkdirErrorsByErrno.at(EACCES)));
}

TEST(MakeDirectories, CreatesTheChainFromTheRootSide) {
  const TemporaryFolder folder;
  const ScopedWorkingDirectory working_directory(folder.path());
  MakeDirectories("a/b/c");
  EXPECT_TRUE(isdir("a/b/c"));
  EXPECT_NO_THROW(MakeDirectories("a/b/c"));
  MakeDirectories(folder / "x/y");
  EXPECT_TRUE(isdir("x/y"));
}

TEST(MakeDirectories, NamesEachDirectoryOnTheWay) {
  const struct {
    const char* path;
    std::vector<std::string> created;
  } cases[] = {
      {"a/b/c", {"a", "a/b", "a/b/c"}},
      {"/tmp/x/y", {"/tmp", "/tmp/x", "/tmp/x/y"}},
      {"/usr", {"/usr"}},
      {"a", {"a"}},
      {"a/b/", {"a", "a/b", "a/b/"}},
      {"a//b", {"a", "a/", "a/b"}},
      {"a///b", {"a", "a/", "a/", "a/b"}},
      {"a/./b", {"a", "a/.", "a/./b"}},
      {"../a", {"..", "../a"}},
      {"/", {"/"}},
      {"//", {"/", "/"}},
      {"///", {"/", "/", "/"}},
      {"//a", {"/", "/a"}},
      {"/a/", {"/a", "/a/"}},
      {"", {}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.path);
    const MkdirRecorder recorder;
    MakeDirectories(c.path);
    EXPECT_EQ(recorder.paths(), c.created);
  }
}

TEST(MakeDirectories, AcceptsEveryFormOfAnExistingPath) {
  const TemporaryFolder folder;
  for (const char* form : {"", "/", "//a//b", "/a/../a/./b/", "/a/b//"}) {
    EXPECT_NO_THROW(MakeDirectories(folder.path() + form)) << form;
  }
  EXPECT_TRUE(isdir(folder / "a/b"));
  EXPECT_NO_THROW(MakeDirectories("/"));
  EXPECT_NO_THROW(MakeDirectories("//"));
}

TEST(MakeDirectories, StopsAtTheFirstFailureAndKeepsWhatIsThere) {
  const TemporaryFolder folder;
  const ScopedWorkingDirectory working_directory(folder.path());
  const ScopedFailure failure("mkdir", ENOSPC, 2, 1);
  EXPECT_THAT(
      [] { MakeDirectories("a/b/c/d"); },
      ThrowsMessage<PathError>("Failed to create directory: a/b/c, " +
                               orvo::path::mkdirErrorsByErrno.at(ENOSPC)));
  EXPECT_TRUE(isdir("a/b"));
  EXPECT_FALSE(isdir("a/b/c"));
}

TEST(MakeDirectories, RejectsAFileOnTheWay) {
  const TemporaryFolder folder;
  const ScopedWorkingDirectory working_directory(folder.path());
  MakeDirectory("a");
  WriteFile("a/b", "");
  EXPECT_THAT([] { MakeDirectories("a/b/c"); },
              ThrowsMessage<PathError>(
                  "Failed to create directory a/b. File already exists."));
}

TEST(MakeDirectories, ToleratesOthersWhoCreateTheSamePath) {
  const TemporaryFolder folder;
  constexpr int kThreads = 8;
  constexpr int kRounds = 50;
  orvo_test::Latch latch(kThreads);
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] {
      latch.Arrive();
      for (int round = 0; round < kRounds; ++round) {
        MakeDirectories(folder / std::to_string(round) + "/a/b");
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (int round = 0; round < kRounds; ++round) {
    EXPECT_TRUE(isdir(folder / std::to_string(round) + "/a/b"));
  }
}

TEST(Listdir, ReturnsTheDotNamesOfAnEmptyDirectory) {
  const TemporaryFolder folder;
  EXPECT_THAT(listdir(folder.path()), UnorderedElementsAre(".", ".."));
}

TEST(Listdir, ReturnsEveryName) {
  const TemporaryFolder folder;
  for (const char* name : {"b", "a", ".hidden", "with space"}) {
    WriteFile(folder / name, "");
  }
  std::filesystem::create_directory(folder / "directory");
  std::filesystem::create_symlink("missing", folder / "link");
  EXPECT_THAT(listdir(folder.path()),
              UnorderedElementsAre(".", "..", "b", "a", ".hidden", "with space",
                                   "directory", "link"));
}

TEST(Listdir, KeepsTheOrderOfTheSystem) {
  const TemporaryFolder folder;
  dirent entries[4] = {};
  const char* const names[] = {"b", "..", "a", "b"};
  for (int i = 0; i < 4; ++i) std::string(names[i]).copy(entries[i].d_name, 2);
  int calls = 0;
  const ScopedHook hook(orvo_test::readdir_calls, [&](DIR*) {
    return calls++ < 4 ? &entries[calls - 1] : nullptr;
  });
  EXPECT_THAT(listdir(folder.path()), ElementsAre("b", "..", "a", "b"));
  EXPECT_EQ(calls, 5);
}

TEST(Listdir, LeavesOneHandleOpenPerCall) {
  const TemporaryFolder folder;
  const int before = CountOpenDescriptors();
  const CallCounter closed(orvo_test::closedir_calls);
  for (int i = 0; i < 3; ++i) listdir(folder.path());
  EXPECT_EQ(closed.count(), 0);
  EXPECT_EQ(CountOpenDescriptors(), before + 3);
}

TEST(Listdir, ThrowsTheSystemsTextAlone) {
  const TemporaryFolder folder;
  WriteFile(folder / "file", "");
  EXPECT_THAT([&] { listdir(folder / "missing"); },
              ThrowsMessage<orvo::BadDir>("No such file or directory"));
  EXPECT_THAT([&] { listdir(folder / "file"); },
              ThrowsMessage<orvo::BadDir>("Not a directory"));
  EXPECT_THAT([] { listdir(""); },
              ThrowsMessage<orvo::BadDir>("No such file or directory"));
  EXPECT_THROW(listdir(folder / "missing"), orvo::ListDirError);

  const ScopedFailure failure("opendir", EMFILE);
  EXPECT_THAT([&] { listdir(folder.path()); },
              ThrowsMessage<orvo::BadDir>("Too many open files"));
}

TEST(Listdir, KeepsTheErrorWhileItMakesAnException) {
  const TemporaryFolder folder;
  const std::string missing = folder / "missing";
  bool changed = false;
  const ScopedHook hook(
      orvo_test::cxa_allocate_exception_calls, [&](std::size_t size) {
        changed = true;
        errno = EINVAL;
        return orvo_test::cxa_allocate_exception_calls.Real(size);
      });
  EXPECT_THAT([&] { listdir(missing); },
              ThrowsMessage<orvo::BadDir>("No such file or directory"));
  EXPECT_TRUE(changed);
}

TEST(Listdir, TakesAFailureOfReadingForTheEnd) {
  const TemporaryFolder folder;
  WriteFile(folder / "a", "");
  const ScopedFailure failure("readdir", EIO, 2);
  EXPECT_EQ(listdir(folder.path()).size(), 2U);
}

TEST(Entries, AreInNaturalOrderWithoutTheDotNames) {
  const TemporaryFolder folder;
  for (const char* name : {"file10", "file9", "b", ".hidden", "...", "File1"}) {
    WriteFile(folder / name, "");
  }
  std::filesystem::create_directory(folder / "c");
  EXPECT_THAT(entries(folder.path()), ElementsAre("...", ".hidden", "File1",
                                                  "b", "c", "file9", "file10"));
}

TEST(Entries, StandInTheOrderOfTheirBytesWhereTheyTie) {
  const TemporaryFolder folder;
  for (const char* name : {"x7", "x007", "x8", "x07", "x0007"}) {
    WriteFile(folder / name, "");
  }
  EXPECT_THAT(entries(folder.path()),
              ElementsAre("x0007", "x007", "x07", "x7", "x8"));
}

TEST(Entries, AreNoneInAnEmptyDirectory) {
  const TemporaryFolder folder;
  EXPECT_THAT(entries(folder.path()), IsEmpty());
}

TEST(Entries, LeaveNoHandleOpen) {
  const TemporaryFolder folder;
  WriteFile(folder / "a", "");
  const int before = CountOpenDescriptors();
  entries(folder.path());
  EXPECT_THROW(entries(folder / "a"), orvo::BadDir);
  EXPECT_EQ(CountOpenDescriptors(), before);
}

TEST(Entries, LeaveNoHandleOpenAfterAnException) {
  const TemporaryFolder folder;
  const int before = CountOpenDescriptors();
  {
    const ScopedHook hook(orvo_test::readdir_calls,
                          [](DIR*) -> dirent* { throw std::bad_alloc(); });
    EXPECT_THROW(entries(folder.path()), std::bad_alloc);
  }
  EXPECT_EQ(CountOpenDescriptors(), before);
}

TEST(Entries, ThrowTheSystemsTextAlone) {
  const TemporaryFolder folder;
  EXPECT_THAT([&] { entries(folder / "missing"); },
              ThrowsMessage<orvo::BadDir>("No such file or directory"));
}

TEST(Entries, EndWhereReadingFails) {
  const TemporaryFolder folder;
  dirent entry{};
  entry.d_name[0] = 'a';
  int reads = 0;
  const ScopedHook hook(orvo_test::readdir_calls, [&](DIR*) -> dirent* {
    if (++reads == 1) return &entry;
    errno = EIO;
    return nullptr;
  });
  EXPECT_THAT(entries(folder.path()), ElementsAre("a"));
  EXPECT_EQ(reads, 2);
}

TEST(Paths, AreCutAtANulByTheSystem) {
  const TemporaryFolder folder;
  const std::string path = folder / std::string("a\0b", 3);
  MakeDirectory(path);
  EXPECT_TRUE(isdir(path));
  EXPECT_THAT(listdir(path), UnorderedElementsAre(".", ".."));
  EXPECT_TRUE(std::filesystem::is_directory(folder / "a"));
}

}  // namespace

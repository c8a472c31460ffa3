// What becomes of programs whose output goes nowhere.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "orvo/thread_safe_ostream.h"
#include "tests/support/capture.h"
#include "tests/support/files.h"
#include "tests/support/latch.h"

namespace {

using orvo_test::ProgramPath;
using orvo_test::ProgramResult;
using orvo_test::ReadFile;
using orvo_test::RunProgram;
using orvo_test::TemporaryFolder;
using orvo_test::WriteFile;

ProgramResult RunBroken(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), ProgramPath("broken_output"));
  return RunProgram(arguments);
}

// The same with a descriptor that is closed when the process starts.
ProgramResult RunWithout(const std::string& descriptor,
                         const std::vector<std::string>& arguments) {
  std::vector<std::string> all = {"/bin/sh", "-c",
                                  R"(exec "$0" "$@" )" + descriptor + ">&-",
                                  ProgramPath("broken_output")};
  all.insert(all.end(), arguments.begin(), arguments.end());
  return RunProgram(all);
}

constexpr char kOutputFails[] = "failed\n";
constexpr char kOutputWorks[] = "good\n";

TEST(BrokenOutput, LosesMessagesAndNothingElse) {
  for (const char* output : {"closed", "full", "ignored"}) {
    SCOPED_TRACE(output);
    const ProgramResult result = RunBroken({output, "messages"});
    EXPECT_EQ(result.exit_status, 0);
    EXPECT_EQ(result.errors, kOutputFails);
    EXPECT_EQ(result.output, "kept\n");
  }
}

TEST(BrokenOutput, IsNoneForThoseWhoseOutputWorks) {
  const ProgramResult result = RunBroken({"whole", "messages"});
  EXPECT_EQ(result.exit_status, 0);
  EXPECT_EQ(result.errors, kOutputWorks);
  EXPECT_THAT(result.output, testing::StartsWith("message\n[DEBUG] f line 7: "
                                                 "Trying.\n"));
  EXPECT_THAT(result.output, testing::EndsWith(" is not sharing.\nkept\n"));
}

TEST(BrokenOutput, MayBeMissingFromTheStart) {
  const ProgramResult result = RunWithout("1", {"whole", "messages"});
  EXPECT_EQ(result.exit_status, 0);
  EXPECT_EQ(result.errors, kOutputFails);
  EXPECT_EQ(result.output, "");
}

TEST(BrokenOutput, MayBeAllThatIsOpen) {
  const ProgramResult result = RunWithout("0<&- 2", {"whole", "messages"});
  EXPECT_EQ(result.exit_status, 0);
  EXPECT_THAT(result.output, testing::EndsWith("kept\n"));
}

TEST(BrokenOutput, EndsAProcessThatLeavesSigpipeAlone) {
  const ProgramResult result = RunBroken({"broken", "messages"});
  EXPECT_EQ(result.exit_status, -SIGPIPE);
  EXPECT_EQ(result.errors, "");
}

// Also shows that a process which ends is noticed.
TEST(BrokenOutput, EndsAProcessThatWantsExceptions) {
  const ProgramResult result = RunBroken({"throwing", "messages"});
  EXPECT_EQ(result.exit_status, -SIGABRT);
  EXPECT_THAT(result.errors, testing::HasSubstr("failure"));
}

TEST(BrokenOutput, DoesNotKeepAnExceptionFromItsLog) {
  for (const char* output : {"closed", "full", "ignored"}) {
    SCOPED_TRACE(output);
    const TemporaryFolder folder;
    const ProgramResult result = RunBroken({output, "log", folder / "log"});
    EXPECT_EQ(result.exit_status, 0);
    EXPECT_EQ(result.errors, kOutputFails);
    EXPECT_EQ(ReadFile(folder / "log"), "\nf line 7: m\n");
  }
}

// A folder that everybody may enter and that nobody may change, with a file
// that nobody may write.
class ReadOnly {
 public:
  ReadOnly() {
    WriteFile(folder_ / "file", "old\n");
    chmod((folder_ / "file").c_str(), 0444);
    chmod(folder_.path().c_str(), 0555);
  }
  ReadOnly(const ReadOnly&) = delete;
  ReadOnly& operator=(const ReadOnly&) = delete;
  ~ReadOnly() { chmod(folder_.path().c_str(), 0755); }

  std::string operator/(const std::string& name) const {
    return folder_ / name;
  }

 private:
  const TemporaryFolder folder_;
};

// A program that logs to the path by this action says that it cannot.
void ExpectReport(const std::string& action, const std::string& path) {
  const ProgramResult result = RunBroken({"whole", action, path});
  EXPECT_EQ(result.exit_status, 0);
  EXPECT_EQ(result.errors, kOutputWorks);
  EXPECT_EQ(result.output,
            "LogException(m)\n"
            "Unable to write to threadExceptionLogPath: " +
                path + "\nf line 7: m\nkept\n");
}

TEST(BrokenExceptionLog, IsReportedOnTheStandardOutput) {
  const TemporaryFolder folder;
  std::filesystem::create_symlink("missing/log", folder / "to_nothing");
  std::filesystem::create_symlink("loop", folder / "loop");
  WriteFile(folder / "file", "");
  for (const std::string& path :
       {std::string(), folder / "missing/log", folder.path(), folder / "loop",
        folder / "to_nothing", folder / "file/log",
        folder / std::string(300, 'x')}) {
    SCOPED_TRACE(path);
    ExpectReport("log", path);
  }
}

TEST(BrokenExceptionLog, LeavesAloneWhatItMayNotWrite) {
  const ReadOnly read_only;
  for (const char* name : {"file", "new"}) {
    SCOPED_TRACE(name);
    ExpectReport("nobody_log", read_only / name);
  }
  EXPECT_EQ(ReadFile(read_only / "file"), "old\n");
  EXPECT_FALSE(std::filesystem::exists(read_only / "new"));
}

TEST(BrokenExceptionLog, SaysNothingWhenItIsFull) {
  const ProgramResult result = RunBroken({"whole", "log", "/dev/full"});
  EXPECT_EQ(result.exit_status, 0);
  EXPECT_EQ(result.output, "LogException(m)\nkept\n");
}

TEST(BrokenExceptionLog, MayFailTogetherWithTheOutput) {
  for (const char* path : {"/dev/full", "/missing/log"}) {
    SCOPED_TRACE(path);
    const ProgramResult result = RunBroken({"full", "log", path});
    EXPECT_EQ(result.exit_status, 0);
    EXPECT_EQ(result.errors, kOutputFails);
    EXPECT_EQ(result.output, "kept\n");
  }
}

TEST(BrokenRedirection, LosesTheOutputFromThenOn) {
  const TemporaryFolder folder;
  for (const std::string& path : {std::string(), folder / "missing/log",
                                  folder.path(), std::string("/dev/full")}) {
    SCOPED_TRACE(path);
    const ProgramResult result = RunBroken({"whole", "redirect", path});
    EXPECT_EQ(result.exit_status, 0);
    EXPECT_EQ(result.errors, kOutputFails);
    // The repaired stream still has the buffer of the redirection.
    EXPECT_EQ(result.output, "");
  }
}

TEST(BrokenRedirection, LeavesAFileAloneThatItMayNotWrite) {
  const ReadOnly read_only;
  const ProgramResult result =
      RunBroken({"whole", "nobody_redirect", read_only / "file"});
  EXPECT_EQ(result.exit_status, 0);
  EXPECT_EQ(result.errors, kOutputFails);
  EXPECT_EQ(ReadFile(read_only / "file"), "old\n");
}

TEST(BrokenRedirection, IsRepairedByAnotherOne) {
  const TemporaryFolder folder;
  const ProgramResult result =
      RunBroken({"whole", "redirect", folder / "missing/log", folder / "log"});
  EXPECT_EQ(result.exit_status, 0);
  EXPECT_EQ(result.errors, kOutputWorks);
  EXPECT_EQ(ReadFile(folder / "log"), "line 2\nkept\n");
  EXPECT_EQ(result.output, "");
}

TEST(BrokenRedirection, LeavesAWorkingOneInPlace) {
  const TemporaryFolder folder;
  const ProgramResult result =
      RunBroken({"whole", "redirect", folder / "log", folder / "missing/log"});
  EXPECT_EQ(result.exit_status, 0);
  EXPECT_EQ(result.errors, kOutputWorks);
  EXPECT_EQ(ReadFile(folder / "log"), "line 1\nline 2\nkept\n");
}

TEST(BrokenRedirection, TakesTheOutputOfAProcessWithoutAny) {
  const TemporaryFolder folder;
  const ProgramResult results[] = {
      RunBroken({"full", "redirect", folder / "full"}),
      RunBroken({"ignored", "redirect", folder / "ignored"}),
      RunWithout("1", {"whole", "redirect", folder / "missing"}),
  };
  for (const ProgramResult& result : results) {
    EXPECT_EQ(result.exit_status, 0);
    EXPECT_EQ(result.errors, kOutputWorks);
    EXPECT_EQ(result.output, "");
  }
  for (const char* name : {"full", "ignored", "missing"}) {
    EXPECT_EQ(ReadFile(folder / name), "line 1\nkept\n") << name;
  }
}

// One of them comes first, and its file gets all the lines.
TEST(BrokenRedirection, MayComeFromTwoThreadsAtOnce) {
  constexpr int kRounds = 200;
  const TemporaryFolder folder;
  const std::string paths[] = {folder / "first", folder / "second"};
  for (int round = 0; round < kRounds; ++round) {
    std::ostringstream target;
    {
      orvo::ThreadSafeOStream stream(target);
      orvo_test::Latch start(2);
      std::vector<std::thread> threads;
      for (const std::string& path : paths) {
        threads.emplace_back([&] {
          start.Arrive();
          stream.redirect(path);
          stream << 'x';
        });
      }
      for (std::thread& thread : threads) thread.join();
      stream << 'y';
    }
    ASSERT_EQ(ReadFile(paths[0]) + ReadFile(paths[1]), "xxy") << round;
    ASSERT_EQ(target.str(), "");
    for (const std::string& path : paths) std::filesystem::remove(path);
  }
}

}  // namespace

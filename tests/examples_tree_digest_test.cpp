#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/capture.h"
#include "tests/support/files.h"

namespace {

using orvo_test::ExamplePath;
using orvo_test::ProgramResult;
using orvo_test::ReadFile;
using orvo_test::RunProgram;
using orvo_test::TemporaryFolder;
using orvo_test::WriteFile;

TEST(TreeDigest, PrintsTheFilesOfATreeInNaturalOrder) {
  const TemporaryFolder folder;
  std::filesystem::create_directories(folder / "part2");
  std::filesystem::create_directories(folder / "part10");
  std::filesystem::create_directory_symlink(folder.path(), folder / "circle");
  WriteFile(folder / "part10/x", "ab");
  WriteFile(folder / "part2/file10", "");
  WriteFile(folder / "part2/file9", "a");
  const ProgramResult result =
      RunProgram({ExamplePath("tree_digest"), folder.path(), folder / "log"});
  EXPECT_EQ(result.exit_status, 0);
  EXPECT_EQ(result.output, "000000000002b606         1  " +
                               (folder / "part2/file9") +
                               "\n"
                               "0000000000001505         0  " +
                               (folder / "part2/file10") +
                               "\n"
                               "0000000000597728         2  " +
                               (folder / "part10/x") + "\n");
  EXPECT_FALSE(std::filesystem::exists(folder / "log"));
}

// A command for a user who may not read everything.
std::vector<std::string> AsNobody(std::vector<std::string> command) {
  if (geteuid() == 0) {
    command.insert(command.begin(), {"/usr/bin/setpriv", "--reuid=65534",
                                     "--clear-groups", "--"});
  }
  return command;
}

TEST(TreeDigest, LogsWhatItCannotRead) {
  const TemporaryFolder folder;
  const std::string secret = folder / "tree/secret";
  std::filesystem::create_directory(folder / "tree");
  WriteFile(secret, "x");
  WriteFile(folder / "tree/open", "a");
  std::filesystem::permissions(secret, std::filesystem::perms::none);
  std::filesystem::permissions(folder.path(), std::filesystem::perms::all);
  const ProgramResult result = RunProgram(
      AsNobody({ExamplePath("tree_digest"), folder / "tree", folder / "log"}));
  if (result.exit_status >= 126) GTEST_SKIP() << result.errors;

  EXPECT_EQ(result.exit_status, 1);
  EXPECT_EQ(result.output, "LogException(" + secret +
                               ": Permission denied)\n"
                               "000000000002b606         1  " +
                               (folder / "tree/open") + "\n");
  EXPECT_THAT(ReadFile(folder / "log"),
              testing::AllOf(
                  testing::MatchesRegex(
                      "\nexamples/tree_digest.cpp line [0-9]+: [^\n]*\n"),
                  testing::EndsWith(": " + secret + ": Permission denied\n")));
}

TEST(TreeDigest, ExplainsItsUse) {
  for (const auto& arguments : {std::vector<std::string>{},
                                {"/missing/folder"},
                                {"/dev/null"},
                                {"/tmp", "log", "more"}}) {
    std::vector<std::string> command = {ExamplePath("tree_digest")};
    command.insert(command.end(), arguments.begin(), arguments.end());
    const ProgramResult result = RunProgram(command);
    EXPECT_EQ(result.exit_status, 2);
    EXPECT_EQ(result.errors, "usage: tree_digest FOLDER [LOG]\n");
  }
}

}  // namespace

// The programs of the guide print what the guide shows: examples/output/.
#include <gtest/gtest.h>

#include <string>

#include "tests/support/capture.h"
#include "tests/support/files.h"

namespace {

using orvo_test::ExamplePath;
using orvo_test::ProgramResult;
using orvo_test::ReadFile;
using orvo_test::RunProgram;
using orvo_test::SourcePath;

std::string ShownOutput(const std::string& name) {
  return ReadFile(SourcePath("examples/output/" + name + ".txt"));
}

TEST(GuideExamples, PrintWhatTheGuideShows) {
  for (const std::string name :
       {"chunk_header", "file_error", "foreign_unlock", "hand_over",
        "lock_owner", "paragraph", "photo_order", "settings", "time_texts",
        "transpose", "whole_lines"}) {
    SCOPED_TRACE(name);
    const ProgramResult result = RunProgram({ExamplePath(name)});
    EXPECT_EQ(result.errors, "");
    EXPECT_NE(result.output, "");
    EXPECT_EQ(result.output, ShownOutput(name));
    EXPECT_EQ(result.exit_status, 0);
  }
}

TEST(InstallSteps, LogsOnTheScreen) {
  const ProgramResult result = RunProgram({ExamplePath("install_steps")});
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(result.output,
            "[DEBUG] install.cpp line 13: Install the library.\n"
            "[DEBUG] install.cpp line 15: Succeeded install the library.\n"
            "[DEBUG] install.cpp line 13: Install fonts.\n"
            "install.cpp line 18: Error install fonts.\n"
            "        disk full\n");
  EXPECT_EQ(result.output, ShownOutput("install_steps"));
  EXPECT_EQ(result.exit_status, 1);
}

TEST(InstallSteps, LogsToAFile) {
  const orvo_test::TemporaryFolder folder;
  const std::string log = folder / "install.log";
  const ProgramResult result = RunProgram({ExamplePath("install_steps"), log});
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors, "the log is in " + log + "\n");
  EXPECT_EQ(ReadFile(log), ShownOutput("install_steps"));
  EXPECT_EQ(result.exit_status, 1);
}

TEST(LastWords, NamesThreadAndFunctionsAndKeepsARecord) {
  const orvo_test::TemporaryFolder folder;
  const std::string log = folder / "exceptions.log";
  const ProgramResult result = RunProgram({ExamplePath("last_words"), log});
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(result.output, ShownOutput("last_words"));
  EXPECT_EQ(ReadFile(log), ShownOutput("last_words_log"));
  EXPECT_EQ(result.exit_status, 0);
}

TEST(ProjectPaths, MakesAndListsFolders) {
  const orvo_test::TemporaryFolder folder;
  const ProgramResult result =
      RunProgram({ExamplePath("project_paths"), folder.path()});
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(result.output, ShownOutput("project_paths"));
  EXPECT_EQ(result.exit_status, 0);
}

TEST(ProjectPaths, SaysWhyAFolderCannotBeMade) {
  const orvo_test::TemporaryFolder folder;
  const std::string file = folder / "file";
  orvo_test::WriteFile(file, "");
  const ProgramResult result = RunProgram({ExamplePath("project_paths"), file});
  EXPECT_EQ(result.errors,
            "Failed to create directory " + file + ". File already exists.\n");
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.exit_status, 1);
}

TEST(GuideExamples, ExplainTheirUse) {
  for (const std::string name : {"last_words", "project_paths"}) {
    SCOPED_TRACE(name);
    const ProgramResult result = RunProgram({ExamplePath(name)});
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors.rfind("usage: " + name + " ", 0), 0U);
    EXPECT_EQ(result.exit_status, 2);
  }
}

}  // namespace

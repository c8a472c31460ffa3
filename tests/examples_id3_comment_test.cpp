#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/capture.h"
#include "tests/support/files.h"
#include "tests/support/id3_writer.h"

namespace {

using orvo_test::ProgramResult;

ProgramResult Comments(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), orvo_test::ExamplePath("id3_comment"));
  return orvo_test::RunProgram(arguments);
}

TEST(Id3CommentExample, PrintsTheCommentOfEachFile) {
  const std::string folder = orvo_test::SourcePath("tests/data/id3/");
  const std::string first = folder + "tika-testMP3id3v2.mp3";
  const std::string second = folder + "mp3agic-v23tagwithbpm.mp3";
  const ProgramResult result = Comments({first, second});
  EXPECT_EQ(result.exit_status, 0);
  EXPECT_EQ(result.output, first + ": Test Comment\n" + second +
                               ": COMMENT123456789012345678901\n");
  EXPECT_EQ(result.errors, "");
}

TEST(Id3CommentExample, KeepsACommentOnOneLine) {
  const orvo_test::TemporaryFolder folder;
  const std::string path = folder / "file";
  orvo_test::WriteFile(
      path, orvo_test::Id3Tag(orvo_test::Id3Comment(
                "", std::string("two\r\nlines\x1b[0m caf\xe9\0\0", 20))));
  EXPECT_EQ(Comments({path}).output, path + ": two  lines [0m caf\xe9\n");
}

TEST(Id3CommentExample, ReportsFilesWithoutATagAndPrintsTheOthers) {
  const orvo_test::TemporaryFolder folder;
  orvo_test::WriteFile(folder / "no_tag", "RIFF....");
  orvo_test::WriteFile(folder / "empty", "");
  orvo_test::WriteFile(folder / "tag",
                       orvo_test::Id3Tag(orvo_test::Id3Comment("", "hello")));
  const ProgramResult result = Comments({folder / "no_tag", folder / "tag",
                                         folder / "missing", folder / "empty"});
  EXPECT_EQ(result.exit_status, 1);
  EXPECT_EQ(result.output, (folder / "tag") + ": hello\n");
  EXPECT_EQ(result.errors,
            "id3_comment: " + (folder / "no_tag") +
                " has no ID3 tag\nid3_comment: " + (folder / "missing") +
                " cannot be read, or is empty\nid3_comment: " +
                (folder / "empty") + " cannot be read, or is empty\n");
}

TEST(Id3CommentExample, WantsAFile) {
  const ProgramResult result = Comments({});
  EXPECT_EQ(result.exit_status, 2);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors, "usage: id3_comment FILE...\n");
}

}  // namespace

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
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
using testing::EndsWith;
using testing::HasSubstr;

ProgramResult RunJobQueue(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), ExamplePath("job_queue"));
  return RunProgram(arguments);
}

int Count(const std::string& part, const std::string& text) {
  int count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos;
       at = text.find(part, at + 1)) {
    ++count;
  }
  return count;
}

TEST(JobQueue, RunsAllJobs) {
  const TemporaryFolder folder;
  const ProgramResult result = RunJobQueue({"9", folder / "log"});
  EXPECT_EQ(result.exit_status, 0);
  EXPECT_EQ(result.output, "9 jobs, 0 failed\n");
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(ReadFile(folder / "log"), "");
}

TEST(JobQueue, LogsTheJobsThatFail) {
  const TemporaryFolder folder;
  const ProgramResult result = RunJobQueue({"1005", folder / "log"});
  EXPECT_EQ(result.exit_status, 0);
  EXPECT_THAT(result.output, EndsWith("1005 jobs, 100 failed\n"));
  EXPECT_EQ(Count("LogException(job ", result.output), 100);
  const std::string log = ReadFile(folder / "log");
  EXPECT_EQ(Count("job_queue.cpp line ", log), 100);
  EXPECT_THAT(log, HasSubstr(": job 10 failed\n"));
  EXPECT_THAT(log, HasSubstr(": job 1000 failed\n"));
}

TEST(JobQueue, RunsWithADebugLock) {
  const TemporaryFolder folder;
  const ProgramResult result =
      RunProgram({orvo_test::ProgramPath("job_queue_with_debug_lock"), "1005",
                  folder / "log"});
  EXPECT_EQ(result.exit_status, 0);
  EXPECT_EQ(result.errors, "");
  EXPECT_THAT(result.output, EndsWith("1005 jobs, 100 failed\n"));
  EXPECT_EQ(Count("LogException(job ", result.output), 100);
}

TEST(JobQueue, NeedsNoJobs) {
  EXPECT_EQ(RunJobQueue({"0"}).output, "0 jobs, 0 failed\n");
}

TEST(JobQueue, RejectsBadArguments) {
  const std::vector<std::vector<std::string>> cases = {
      {},
      {""},
      {"many"},
      {"-1"},
      {"1000001"},
      {"99999999999999999999"},
      {"1", "log", "more"},
  };
  for (const auto& arguments : cases) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    const ProgramResult result = RunJobQueue(arguments);
    EXPECT_EQ(result.exit_status, 2);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors,
              "usage: job_queue N [LOGFILE], with N from 0 to 1000000\n");
  }
}

}  // namespace

// The frames of this very program, which is linked so that the system knows its
// functions by name.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <list>
#include <string>
#include <vector>

#include "orvo/stacktrace.h"
#include "tests/support/capture.h"

// Each function is a frame: not inlined, and no call is its last act.
#define KEEP_FRAME __attribute__((noinline))

namespace frames {

volatile int sink;

KEEP_FRAME std::list<std::string> Trace(int depth) {
  std::list<std::string> trace = orvo::GetStackTrace(depth);
  sink = sink + 1;
  return trace;
}

KEEP_FRAME std::list<std::string> TraceFurther(int depth, const std::string&) {
  std::list<std::string> trace = Trace(depth);
  sink = sink + 1;
  return trace;
}

KEEP_FRAME std::vector<orvo::StackFrame> Parts(int depth) {
  std::vector<orvo::StackFrame> parts = orvo::GetStackFrames(depth);
  sink = sink + 1;
  return parts;
}

KEEP_FRAME void Print(int depth) {
  orvo::PrintStackTrace(depth);
  sink = sink + 1;
}

KEEP_FRAME void PrintFurther(int depth, const std::string&) {
  Print(depth);
  sink = sink + 1;
}

KEEP_FRAME std::list<std::string> Recurse(int levels, int depth) {
  std::list<std::string> trace =
      levels == 0 ? orvo::GetStackTrace(depth) : Recurse(levels - 1, depth);
  sink = sink + 1;
  return trace;
}

}  // namespace frames

namespace {

using testing::HasSubstr;
using testing::MatchesRegex;
using testing::SizeIs;
using testing::StartsWith;

TEST(Frames, BeginWithTheCallerOfGetStackTrace) {
  const std::list<std::string> trace = frames::TraceFurther(2, "");
  ASSERT_THAT(trace, SizeIs(2));
  EXPECT_THAT(trace.front(),
              MatchesRegex("0  stacktrace_frames_test  0x[0-9a-f]+  "
                           "frames::Trace[^ ]*\\(int\\) \\+ [0-9]+"));
  EXPECT_THAT(trace.back(), StartsWith("1  stacktrace_frames_test  0x"));
  EXPECT_THAT(trace.back(), HasSubstr("  frames::TraceFurther"));
}

TEST(Frames, BeginWithTheCallerOfGetStackFrames) {
  const std::vector<orvo::StackFrame> parts = frames::Parts(2);
  ASSERT_THAT(parts, SizeIs(2));
  EXPECT_EQ(parts[0].number, "0");
  EXPECT_EQ(parts[0].image, "stacktrace_frames_test");
  EXPECT_THAT(parts[0].address, MatchesRegex("0x[0-9a-f]+"));
  EXPECT_THAT(parts[0].symbol, MatchesRegex("frames::Parts[^ ]*\\(int\\)"));
  EXPECT_THAT(parts[0].offset, MatchesRegex("[0-9]+"));
  EXPECT_THAT(parts[0].text, HasSubstr("stacktrace_frames_test("));
  EXPECT_EQ(parts[1].number, "1");
}

TEST(Frames, BeginWithTheCallerOfPrintStackTrace) {
  const orvo_test::StdoutCapture output;
  frames::PrintFurther(2, "");
  EXPECT_THAT(output.Text(),
              MatchesRegex("\nstack trace:\n"
                           "1  stacktrace_frames_test  0x[0-9a-f]+  "
                           "frames::Print\\(int\\) \\+ [0-9]+\n"
                           "2  stacktrace_frames_test  0x[0-9a-f]+  "
                           "frames::PrintFurther\\(.*\n(.*\n)?"));
}

TEST(Frames, PrintOneLineForDepthOne) {
  const orvo_test::StdoutCapture output;
  frames::Print(1);
  EXPECT_THAT(output.Text(),
              MatchesRegex("\nstack trace:\n"
                           "1  stacktrace_frames_test  0x[0-9a-f]+  "
                           "frames::Print\\(int\\) \\+ [0-9]+\n"));
}

TEST(Frames, StandInColumnsDownToTheStartOfTheProgram) {
  const orvo_test::StdoutCapture output;
  const std::list<std::string> trace = frames::Trace(INT_MAX);
  EXPECT_EQ(output.Text(), "");
  ASSERT_GT(trace.size(), 5U);
  EXPECT_THAT(trace.back(), HasSubstr("_start + "));
  const std::size_t image = trace.back().find("stacktrace_frames_test");
  const std::size_t address = trace.back().find("0x");
  for (const std::string& line : trace) {
    SCOPED_TRACE(line);
    EXPECT_EQ(line.find_first_not_of("0123456789 "), image);
    EXPECT_EQ(line.substr(address, 2), "0x");
  }
}

TEST(Frames, AreAsManyAsAskedFor) {
  EXPECT_THAT(frames::Recurse(50, 0), SizeIs(0));
  EXPECT_THAT(frames::Recurse(50, -7), SizeIs(0));
  EXPECT_THAT(frames::Recurse(50, 1), SizeIs(1));
  EXPECT_THAT(frames::Recurse(50, 50), SizeIs(50));
  EXPECT_GT(frames::Recurse(300, INT_MAX).size(), 300U);
}

}  // namespace

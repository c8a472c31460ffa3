#include "orvo/exception_log.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <new>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/allocations.h"
#include "tests/support/capture.h"
#include "tests/support/files.h"
#include "tests/support/grouped_digits.h"
#include "tests/support/interpose/calls.h"
#include "tests/support/latch.h"

namespace {

using orvo::LogException;
using orvo::SetThreadExceptionLogPath;
using orvo_test::CountOpenDescriptors;
using orvo_test::Latch;
using orvo_test::ReadFile;
using orvo_test::RunProgram;
using orvo_test::ScopedFailure;
using orvo_test::ScopedHook;
using orvo_test::StdoutCapture;
using orvo_test::TemporaryFolder;

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

// Runs a function in several threads that start it at once.
template <typename Function>
void InThreads(int count, Function function) {
  Latch start(count);
  std::vector<std::thread> threads;
  threads.reserve(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) {
    threads.emplace_back([&, i] {
      start.Arrive();
      function(i);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

orvo_test::ProgramResult RunLogger(const std::string& path,
                                   const std::string& message,
                                   const std::string& times) {
  return RunProgram({orvo_test::ProgramPath("exception_logger"), path, message,
                     "f", "7", times});
}

class ExceptionLog : public testing::Test {
 protected:
  ~ExceptionLog() override { SetThreadExceptionLogPath(""); }

  // A name in a new folder; the file is not there yet.
  std::string LogIn(const char* name) {
    std::string path = folder_ / name;
    SetThreadExceptionLogPath(path);
    return path;
  }

  const TemporaryFolder folder_;
};

TEST_F(ExceptionLog, EchoesTheMessageAndAppendsARecord) {
  const std::string path = LogIn("log");
  const StdoutCapture output;
  LogException("msg", "f", 7);
  EXPECT_EQ(output.Text(), "LogException(msg)\n");
  EXPECT_EQ(ReadFile(path), "\nf line 7: msg\n");
  LogException("second message", "dir/file.cpp", 12345);
  EXPECT_EQ(output.Text(), "LogException(msg)\nLogException(second message)\n");
  EXPECT_EQ(ReadFile(path),
            "\nf line 7: msg\n\ndir/file.cpp line 12345: second message\n");
}

TEST_F(ExceptionLog, WritesAnyTextAndLine) {
  const std::string nul("a\0b", 3);
  const std::string large(200000, 'x');
  const struct {
    std::string message;
    std::string file;
    int line;
    std::string record;
  } cases[] = {
      {"", "", 0, "\n line 0: \n"},
      {"msg", "f", -7, "\nf line -7: msg\n"},
      {"msg", "f", -2147483647 - 1, "\nf line -2147483648: msg\n"},
      {"msg", "f", 2147483647, "\nf line 2147483647: msg\n"},
      {"two\nlines", "%s", 1, "\n%s line 1: two\nlines\n"},
      {nul, nul, 1, "\n" + nul + " line 1: " + nul + "\n"},
      {large, "f", 1, "\nf line 1: " + large + "\n"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.record.substr(0, 100));
    const StdoutCapture output;
    const std::string path = LogIn("log");
    LogException(c.message, c.file, c.line);
    EXPECT_EQ(ReadFile(path), c.record);
    EXPECT_EQ(output.Text(), "LogException(" + c.message + ")\n");
    std::filesystem::remove(path);
  }
}

TEST_F(ExceptionLog, IgnoresTheApplicationsLocale) {
  const orvo_test::ScopedGroupedDigits locale;
  const std::string path = LogIn("log");
  const StdoutCapture output;
  LogException("msg", "f", 1234567);
  EXPECT_EQ(ReadFile(path), "\nf line 1234567: msg\n");
}

TEST_F(ExceptionLog, KeepsWhatTheFileHolds) {
  const std::string path = LogIn("log");
  orvo_test::WriteFile(path, "no line feed");
  const StdoutCapture output;
  LogException("msg", "f", 7);
  EXPECT_EQ(ReadFile(path), "no line feed\nf line 7: msg\n");
}

TEST_F(ExceptionLog, UsesTheNewPathFromTheNextRecordOn) {
  const StdoutCapture output;
  const std::string first = LogIn("first");
  LogException("one", "f", 1);
  const std::string second = LogIn("second");
  LogException("two", "f", 2);
  EXPECT_EQ(ReadFile(first), "\nf line 1: one\n");
  EXPECT_EQ(ReadFile(second), "\nf line 2: two\n");
}

TEST_F(ExceptionLog, CopiesThePath) {
  const std::string path = folder_ / "log";
  std::string changing = path;
  SetThreadExceptionLogPath(changing);
  changing.back() = 'x';
  const StdoutCapture output;
  LogException("msg", "f", 7);
  EXPECT_EQ(ReadFile(path), "\nf line 7: msg\n");
}

TEST_F(ExceptionLog, ReportsOnTheStandardOutputWithoutAPath) {
  const orvo_test::ScopedWorkingDirectory directory(folder_.path());
  const StdoutCapture output;
  LogException("msg", "f", 7);
  EXPECT_EQ(output.Text(),
            "LogException(msg)\n"
            "Unable to write to threadExceptionLogPath: \n"
            "f line 7: msg\n");
  EXPECT_TRUE(std::filesystem::is_empty(folder_.path()));
}

TEST_F(ExceptionLog, ReportsOnTheStandardOutputWhatCannotBeOpened) {
  const struct {
    const char* what;
    std::string path;
  } cases[] = {
      {"in a directory that does not exist", folder_ / "missing/log"},
      {"a directory", folder_.path()},
      {"too long a name", folder_ / std::string(1000, 'x')},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const StdoutCapture output;
    SetThreadExceptionLogPath(c.path);
    LogException("msg", "f", -7);
    EXPECT_EQ(output.Text(),
              "LogException(msg)\n"
              "Unable to write to threadExceptionLogPath: " +
                  c.path +
                  "\n"
                  "f line -7: msg\n");
  }
}

TEST_F(ExceptionLog, EchoesBeforeItOpensTheFile) {
  const std::string path = LogIn("log");
  const StdoutCapture output;
  std::vector<std::string> opened;
  const ScopedHook hook(orvo_test::open_calls,
                        [&](const char* name, int flags, mode_t mode) {
                          if (path == name) opened.push_back(output.Text());
                          return orvo_test::open_calls.Real(name, flags, mode);
                        });
  LogException("msg", "f", 7);
  EXPECT_THAT(opened, testing::ElementsAre("LogException(msg)\n"));
}

TEST_F(ExceptionLog, IsReadableAndWritableAsTheUserWants) {
  const mode_t saved = umask(027);
  const std::string path = LogIn("log");
  const StdoutCapture output;
  LogException("msg", "f", 7);
  umask(saved);
  struct stat status {};
  ASSERT_EQ(stat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0640U);
}

TEST_F(ExceptionLog, LeavesNothingOpen) {
  const StdoutCapture output;
  const int before = CountOpenDescriptors();
  LogIn("log");
  LogException("msg", "f", 7);
  LogIn("missing/log");
  LogException("msg", "f", 7);
  EXPECT_EQ(CountOpenDescriptors(), before);
}

TEST_F(ExceptionLog, SaysNothingWhenTheDeviceIsFull) {
  SetThreadExceptionLogPath("/dev/full");
  const StdoutCapture output;
  LogException("msg", "f", 7);
  EXPECT_EQ(output.Text(), "LogException(msg)\n");
}

TEST_F(ExceptionLog, WritesARecordInOnePiece) {
  const std::string path = LogIn("log");
  const StdoutCapture output;
  std::vector<std::size_t> sizes;
  const ScopedHook hook(orvo_test::write_calls,
                        [&](int file, const void* data, std::size_t size) {
                          sizes.push_back(size);
                          return orvo_test::write_calls.Real(file, data, size);
                        });
  LogException(std::string(100000, 'x'), "f", 7);
  EXPECT_THAT(sizes, testing::ElementsAre(100012));
}

TEST_F(ExceptionLog, GoesOnAfterSignalsAndPartialWrites) {
  const std::string path = LogIn("log");
  const StdoutCapture output;
  int calls = 0;
  const ScopedHook hook(orvo_test::write_calls,
                        [&](int file, const void* data, std::size_t size) {
                          if (++calls % 2 != 0) {
                            errno = EINTR;
                            return ssize_t{-1};
                          }
                          return orvo_test::write_calls.Real(
                              file, data, std::min<std::size_t>(size, 3));
                        });
  const ScopedFailure failure("open", EINTR, 0, 2);
  LogException("msg", "f", 7);
  EXPECT_EQ(calls, 10);
  EXPECT_EQ(ReadFile(path), "\nf line 7: msg\n");
  EXPECT_EQ(output.Text(), "LogException(msg)\n");
}

TEST_F(ExceptionLog, GivesUpWhenNothingIsWritten) {
  LogIn("log");
  const StdoutCapture output;
  int calls = 0;
  const ScopedHook hook(orvo_test::write_calls,
                        [&](int, const void*, std::size_t) {
                          const bool first = ++calls == 1;
                          // Left over: nothing written is no failure.
                          errno = first ? EINTR : EIO;
                          return ssize_t{first ? 0 : -1};
                        });
  LogException("msg", "f", 7);
  EXPECT_EQ(calls, 1);
}

TEST_F(ExceptionLog, GoesOnAfterMemoryRanOut) {
  const std::string path = LogIn("log");
  const std::string file = "f";
  const std::string long_message(100, 'x');
  const StdoutCapture output;
  int failures = 0;
  for (bool finished = false; !finished; ++failures) {
    try {
      const orvo_test::ScopedAllocationFailure failure(failures);
      LogException(long_message, file, 7);
      finished = true;
    } catch (const std::bad_alloc&) {
      EXPECT_EQ(ReadFile(path), "");
    }
  }
  EXPECT_GT(failures, 2);
  LogException("msg", file, 7);
  EXPECT_EQ(ReadFile(path),
            "\nf line 7: " + long_message + "\n\nf line 7: msg\n");
}

TEST_F(ExceptionLog, TakesANewPathInTheMiddleOfARecord) {
  const std::string first = LogIn("first");
  const std::string second = folder_ / "second";
  const StdoutCapture output;
  {
    const ScopedHook hook(
        orvo_test::open_calls, [&](const char* name, int flags, mode_t mode) {
          const int file = orvo_test::open_calls.Real(name, flags, mode);
          if (first == name) SetThreadExceptionLogPath(second);
          return file;
        });
    LogException("one", "f", 1);
  }
  LogException("two", "f", 2);
  EXPECT_EQ(ReadFile(first), "\nf line 1: one\n");
  EXPECT_EQ(ReadFile(second), "\nf line 2: two\n");
}

TEST_F(ExceptionLog, AppendsOverSeveralRuns) {
  const std::string path = folder_ / "log";
  EXPECT_EQ(RunLogger(path, "first", "2").output,
            "LogException(first)\nLogException(first)\n");
  EXPECT_EQ(RunLogger(path, "second", "1").errors, "");
  EXPECT_EQ(ReadFile(path),
            "\nf line 7: first\n\nf line 7: first\n\nf line 7: second\n");
}

TEST_F(ExceptionLog, KeepsRecordsOfSeveralProcessesWhole) {
  const std::string path = folder_ / "log";
  const std::string long_message(3000, 'x');
  InThreads(4, [&](int) { RunLogger(path, long_message, "100"); });
  const std::vector<std::string> lines = Lines(ReadFile(path));
  ASSERT_EQ(lines.size(), 800U);
  for (std::size_t i = 0; i < lines.size(); i += 2) {
    ASSERT_EQ(lines[i], "");
    ASSERT_EQ(lines[i + 1], "f line 7: " + long_message);
  }
}

TEST_F(ExceptionLog, KeepsRecordsOfSeveralThreadsWhole) {
  const std::string path = LogIn("log");
  const StdoutCapture output;
  InThreads(8, [](int thread) {
    for (int i = 0; i < 200; ++i) {
      LogException(std::to_string(thread), "file", i);
    }
  });

  const std::vector<std::string> lines = Lines(ReadFile(path));
  const std::vector<std::string> echoes = Lines(output.Text());
  ASSERT_EQ(lines.size(), 3200U);
  ASSERT_EQ(echoes.size(), 1600U);
  std::vector<int> next(8);
  for (std::size_t i = 0; i < echoes.size(); ++i) {
    // The echo tells which thread's turn it was.
    const std::string thread = echoes[i].substr(13, 1);
    const int line = next.at(std::stoul(thread))++;
    ASSERT_EQ(echoes[i], "LogException(" + thread + ")");
    ASSERT_EQ(lines[2 * i], "");
    ASSERT_EQ(lines[2 * i + 1],
              "file line " + std::to_string(line) + ": " + thread);
  }
}

TEST_F(ExceptionLog, KeepsReportsOfSeveralThreadsTogether) {
  const StdoutCapture output;
  InThreads(8, [](int thread) {
    for (int i = 0; i < 200; ++i) LogException(std::to_string(thread), "f", 7);
  });
  const std::vector<std::string> lines = Lines(output.Text());
  ASSERT_EQ(lines.size(), 4800U);
  for (std::size_t i = 0; i < lines.size(); i += 3) {
    const std::string thread = lines[i].substr(13, 1);
    ASSERT_EQ(lines[i], "LogException(" + thread + ")");
    ASSERT_EQ(lines[i + 1], "Unable to write to threadExceptionLogPath: ");
    ASSERT_EQ(lines[i + 2], "f line 7: " + thread);
  }
}

}  // namespace

#include "orvo/thread_safe_ostream.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <iomanip>
#include <iostream>
#include <map>
#include <memory>
#include <new>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include "orvo/exception_log.h"
#include "orvo/stacktrace.h"
#include "orvo/strings.h"
#include "tests/support/allocations.h"
#include "tests/support/capture.h"
#include "tests/support/files.h"
#include "tests/support/grouped_digits.h"
#include "tests/support/interpose/calls.h"
#include "tests/support/latch.h"
#include "tests/support/recording_streambuf.h"
#include "tests/support/standard_library.h"

namespace {

using orvo::CoutBuffer;
using orvo::OutBuffer;
using orvo::ScopedCoutCapture;
using orvo::ThreadSafeOStream;
using orvo_test::ReadFile;
using orvo_test::RecordingStreambuf;
using orvo_test::StdoutCapture;
using orvo_test::StdoutRedirection;
using orvo_test::TemporaryFolder;
using testing::ElementsAre;

// What a buffer hands over to.
struct RecordingReceiver {
  std::vector<std::string> calls;

  RecordingReceiver& operator<<(const std::string& text) {
    calls.push_back(text);
    return *this;
  }
  void flush() { calls.emplace_back("(flush)"); }
};

TEST(ThreadSafeOStream, InsertsValuesIntoItsTarget) {
  std::ostringstream target;
  ThreadSafeOStream stream(target);
  EXPECT_EQ(&(stream << std::string("text") << 7 << 'c'), &stream);
  EXPECT_EQ(target.str(), "text7c");
}

TEST(ThreadSafeOStream, FlushesItsTarget) {
  RecordingStreambuf buffer;
  std::ostream target(&buffer);
  ThreadSafeOStream stream(target);
  EXPECT_EQ(&stream.flush(), &stream);
  EXPECT_THAT(buffer.calls, ElementsAre("(flush)"));
}

TEST(ThreadSafeOStream, NeitherCopiesNorMoves) {
  static_assert(!std::is_copy_constructible_v<ThreadSafeOStream>);
  static_assert(!std::is_move_constructible_v<ThreadSafeOStream>);
  static_assert(!std::is_copy_assignable_v<ThreadSafeOStream>);
  static_assert(!std::is_move_assignable_v<ThreadSafeOStream>);
  static_assert(std::has_virtual_destructor_v<ThreadSafeOStream>);
}

TEST(ThreadSafeOStream, TakesItsMutexOnceForEachWriteAndFlush) {
  RecordingStreambuf buffer;
  std::ostream target(&buffer);
  ThreadSafeOStream stream(target);
  std::vector<std::string>& calls = buffer.calls;
  // Locales have mutexes as well.
  const auto is_inside_stream = [&](const void* mutex) {
    return mutex >= &stream && mutex < &stream + 1;
  };
  const orvo_test::ScopedHook lock(
      orvo_test::pthread_mutex_lock_calls, [&](pthread_mutex_t* mutex) {
        if (is_inside_stream(mutex)) calls.emplace_back("(lock)");
        return orvo_test::pthread_mutex_lock_calls.Real(mutex);
      });
  const orvo_test::ScopedHook unlock(
      orvo_test::pthread_mutex_unlock_calls, [&](pthread_mutex_t* mutex) {
        if (is_inside_stream(mutex)) calls.emplace_back("(unlock)");
        return orvo_test::pthread_mutex_unlock_calls.Real(mutex);
      });
  {
    OutBuffer<ThreadSafeOStream> message(stream);
    message << "text" << 7;
    EXPECT_THAT(calls, testing::IsEmpty());
  }
  EXPECT_THAT(calls, ElementsAre("(lock)", "text7", "(unlock)", "(lock)",
                                 "(flush)", "(unlock)"));
}

// Notes which mutexes are held at each write and each flush.
class MutexObserver : public std::streambuf {
 public:
  MutexObserver() : saved_(std::cout.rdbuf(this)) {}
  MutexObserver(const MutexObserver&) = delete;
  MutexObserver& operator=(const MutexObserver&) = delete;
  ~MutexObserver() override { std::cout.rdbuf(saved_); }

  const std::vector<std::set<pthread_mutex_t*>>& calls() const {
    return calls_;
  }

 protected:
  std::streamsize xsputn(const char*, std::streamsize size) override {
    calls_.push_back(held_);
    return size;
  }
  int sync() override {
    calls_.push_back(held_);
    return 0;
  }

 private:
  std::streambuf* saved_;
  std::set<pthread_mutex_t*> held_;
  std::vector<std::set<pthread_mutex_t*>> calls_;
  const orvo_test::ScopedHook<int(pthread_mutex_t*)> lock_{
      orvo_test::pthread_mutex_lock_calls, [this](pthread_mutex_t* mutex) {
        held_.insert(mutex);
        return orvo_test::pthread_mutex_lock_calls.Real(mutex);
      }};
  const orvo_test::ScopedHook<int(pthread_mutex_t*)> unlock_{
      orvo_test::pthread_mutex_unlock_calls, [this](pthread_mutex_t* mutex) {
        held_.erase(mutex);
        return orvo_test::pthread_mutex_unlock_calls.Real(mutex);
      }};
};

TEST(ThreadSafeCout, WaitsWhileTheLibraryWritesPlainly) {
#ifdef _GLIBCXX_DEBUG
  GTEST_SKIP() << "Checked containers take mutexes while they note mutexes.";
#endif
  const MutexObserver observer;
  orvo::thread_safe_cout.flush();
  ASSERT_EQ(observer.calls().size(), 1U);
  ASSERT_EQ(observer.calls()[0].size(), 1U);
  pthread_mutex_t* const mutex = *observer.calls()[0].begin();

  orvo::LogException("msg", "f", 7);
  EXPECT_EQ(observer.calls().size(), 5U);
  const orvo::FrameParts of_no_frame("main");
  EXPECT_EQ(observer.calls().size(), 7U);
  EXPECT_THAT(observer.calls(), testing::Each(testing::Contains(mutex)));
}

TEST(ThreadSafeOStream, RedirectsItsTargetToATruncatedFile) {
  const TemporaryFolder folder;
  const std::string path = folder / "log";
  orvo_test::WriteFile(path, "old content");
  std::ostringstream target;
  {
    ThreadSafeOStream stream(target);
    stream << std::string("direct ");
    stream.redirect(path);
    stream << std::string("through ");
    target << "plainly";
    EXPECT_EQ(target.str(), "direct ");
  }
  EXPECT_EQ(ReadFile(path), "through plainly");
}

TEST(ThreadSafeOStream, OpensTheFileBeforeItTakesItsMutexToRedirect) {
  const TemporaryFolder folder;
  RecordingStreambuf buffer;
  std::ostream target(&buffer);
  ThreadSafeOStream stream(target);
  std::vector<std::string> states;
  const auto note = [&](std::string call) {
    call += access((folder / "log").c_str(), F_OK) == 0 ? ": open, " : ": no, ";
    states.push_back(call += target.rdbuf() == &buffer ? "own" : "file");
  };
  {
    const orvo_test::ScopedHook lock(
        orvo_test::pthread_mutex_lock_calls, [&](pthread_mutex_t* mutex) {
          note("lock");
          return orvo_test::pthread_mutex_lock_calls.Real(mutex);
        });
    const orvo_test::ScopedHook unlock(
        orvo_test::pthread_mutex_unlock_calls, [&](pthread_mutex_t* mutex) {
          note("unlock");
          return orvo_test::pthread_mutex_unlock_calls.Real(mutex);
        });
    stream.redirect(folder / "log");
  }
  // One mutex for the opening alone, and then that of the stream.
  EXPECT_THAT(states, ElementsAre("lock: no, own", "unlock: open, own",
                                  "lock: open, own", "unlock: open, file"));
}

TEST(ThreadSafeOStream, GivesItsTargetTheBufferBack) {
  const TemporaryFolder folder;
  RecordingStreambuf buffer;
  std::ostream target(&buffer);
  {
    ThreadSafeOStream stream(target);
    stream.redirect(folder / "log");
    EXPECT_NE(target.rdbuf(), &buffer);
  }
  EXPECT_EQ(target.rdbuf(), &buffer);
}

TEST(ThreadSafeOStream, LeavesItsTargetAloneIfNeverRedirected) {
  RecordingStreambuf buffer;
  RecordingStreambuf other;
  std::ostream target(&buffer);
  {
    const ThreadSafeOStream stream(target);
    target.rdbuf(&other);
    target.setstate(std::ios_base::failbit);
  }
  EXPECT_EQ(target.rdbuf(), &other);
  EXPECT_TRUE(target.fail());
}

TEST(ThreadSafeOStream, ClearsTheStateOfItsTargetWhenRedirected) {
  const TemporaryFolder folder;
  std::ostringstream target;
  target.setstate(std::ios_base::failbit);
  ThreadSafeOStream stream(target);
  stream.redirect(folder / "log");
  EXPECT_TRUE(target.good());
}

TEST(ThreadSafeOStream, LosesOutputWhenTheFileCannotBeOpened) {
  const TemporaryFolder folder;
  std::ostringstream target;
  {
    ThreadSafeOStream stream(target);
    stream.redirect(folder / "missing/log");
    EXPECT_TRUE(target.good());
    stream << std::string("lost");
    EXPECT_TRUE(target.bad());
  }
  EXPECT_TRUE(target.good());
  EXPECT_EQ(target.str(), "");
}

TEST(ThreadSafeOStream, IsRedirectedInTheEndAlthoughMemoryRanOut) {
  ORVO_NEEDS_LIBSTDCXX();
  const TemporaryFolder folder;
  const std::string path = folder / "file";
  std::ostringstream target;
  ThreadSafeOStream stream(target);
  {
    const orvo_test::ScopedAllocationFailure failure;
    EXPECT_THROW(stream.redirect(path), std::bad_alloc);
  }
  stream << 1;
  stream.redirect(path);
  stream << 2;
  stream.flush();
  EXPECT_EQ(ReadFile(path), "2");
  EXPECT_EQ(target.str(), "1");
}

TEST(ThreadSafeOStream, KeepsTheFirstFileWhenRedirectedAgain) {
  const TemporaryFolder folder;
  std::ostringstream target;
  std::streambuf* const own_buffer = target.rdbuf();
  {
    ThreadSafeOStream stream(target);
    stream.redirect(folder / "first");
    stream.redirect(folder / "second");
    stream << std::string("text");
  }
  EXPECT_EQ(ReadFile(folder / "first"), "text");
  EXPECT_EQ(ReadFile(folder / "second"), "");
  // The target gets no buffer back, and does not keep that of the file.
  std::ostream& base = target;
  EXPECT_EQ(base.rdbuf(), nullptr);
  base.rdbuf(own_buffer);
}

TEST(OutBuffer, HandsItsWholeTextOverAndFlushes) {
  RecordingReceiver receiver;
  {
    OutBuffer<RecordingReceiver> buffer(receiver);
    buffer << "text " << 7 << std::string(" more");
    EXPECT_THAT(receiver.calls, testing::IsEmpty());
  }
  EXPECT_THAT(receiver.calls, ElementsAre("text 7 more", "(flush)"));
}

TEST(OutBuffer, HandsOverEverythingAgainWhenCommittedTwice) {
  RecordingReceiver receiver;
  {
    OutBuffer<RecordingReceiver> buffer(receiver);
    buffer << "one";
    buffer.commit();
    buffer << "two";
  }
  EXPECT_THAT(receiver.calls, ElementsAre("one", "onetwo", "(flush)"));
}

TEST(OutBuffer, CommitsWhenFlushed) {
  RecordingReceiver receiver;
  OutBuffer<RecordingReceiver> buffer(receiver);
  buffer << "one";
  EXPECT_EQ(&buffer.flush(), &buffer);
  EXPECT_THAT(receiver.calls, ElementsAre("one", "(flush)"));
}

TEST(OutBuffer, IsGoodAgainAfterACommit) {
  RecordingReceiver receiver;
  OutBuffer<RecordingReceiver> buffer(receiver);
  buffer << "one";
  buffer.setstate(std::ios::badbit);
  buffer.commit();
  EXPECT_TRUE(buffer.good());
  buffer << "two";
  EXPECT_EQ(buffer.str(), "onetwo");
}

TEST(OutBuffer, HandsOverNothingAsAnEmptyText) {
  RecordingReceiver receiver;
  { const OutBuffer<RecordingReceiver> buffer(receiver); }
  EXPECT_THAT(receiver.calls, ElementsAre("", "(flush)"));
}

TEST(OutBuffer, TakesEveryStandardInsertion) {
  RecordingReceiver receiver;
  OutBuffer<RecordingReceiver> buffer(receiver);
  const std::string text("s");
  char array[] = "array";
  buffer << std::hex << 255 << std::dec << std::setw(4) << 7 << ' ' << true
         << 2.5 << text << array << std::string_view("view") << std::endl;
  EXPECT_EQ(buffer.str(), "ff   7 12.5sarrayview\n");
}

TEST(OutBuffer, IsAnOutputStringStream) {
  static_assert(
      std::is_base_of_v<std::ostringstream, OutBuffer<ThreadSafeOStream>>);
  RecordingReceiver receiver;
  OutBuffer<RecordingReceiver> buffer(receiver);
  std::ostringstream& stream = buffer;
  stream << "text";
  EXPECT_EQ(buffer.str(), "text");
}

TEST(OutBuffer, TakesInsertionsWhileTemporary) {
  RecordingReceiver receiver;
  OutBuffer<RecordingReceiver>(receiver) << "text" << 7;
  EXPECT_THAT(receiver.calls, ElementsAre("text7", "(flush)"));
}

// A receiver whose flush fails.
struct ThrowingReceiver {
  ThrowingReceiver& operator<<(const std::string&) { return *this; }
  [[noreturn]] void flush() { throw std::runtime_error("no flush"); }
};

TEST(OutBufferDeathTest, EndsTheProcessWhenItsDestructorFails) {
  ThrowingReceiver receiver;
  EXPECT_EXIT(OutBuffer<ThrowingReceiver>{receiver},
              testing::KilledBySignal(SIGABRT), "terminat");
}

TEST(CoutBuffer, WritesItsMessageWhenItGoes) {
  const StdoutCapture capture;
  {
    CoutBuffer buffer;
    buffer << "text " << 7 << orvo::endl;
    EXPECT_EQ(capture.Text(), "");
  }
  EXPECT_EQ(capture.Text(), "text 7\n");
}

TEST(CoutBuffer, TakesInsertionsWhileTemporary) {
  const StdoutCapture capture;
  const std::string text("s");
  CoutBuffer() << "text" << 7 << orvo::endl;
  CoutBuffer() << 7 << "text";
  CoutBuffer() << orvo::endl;
  CoutBuffer() << text << std::string("t") << 'c' << 2.5 << orvo::endl;
  EXPECT_EQ(capture.Text(), "text7\n7text\nstc2.5\n");
}

TEST(CoutBuffer, TakesManipulatorsWhileTemporary) {
  const StdoutCapture capture;
  CoutBuffer() << std::endl;
  CoutBuffer() << std::hex << 255 << std::endl;
  CoutBuffer() << std::setw(4) << 7 << std::endl;
  EXPECT_EQ(capture.Text(), "\nff\n   7\n");
}

// A value that can only be moved.
struct Ticket {
  std::unique_ptr<int> number;
};

std::ostream& operator<<(std::ostream& stream, const Ticket& ticket) {
  return stream << "ticket " << *ticket.number;
}

TEST(CoutBuffer, TakesWhatOnlyMovesWhileTemporary) {
  const StdoutCapture capture;
  CoutBuffer() << Ticket{std::make_unique<int>(7)} << orvo::endl;
  EXPECT_EQ(capture.Text(), "ticket 7\n");
}

// A value that is inserted by a reference to what is not constant.
struct Counter {
  int next = 1;
};

std::ostream& operator<<(std::ostream& stream, Counter& counter) {
  return stream << counter.next++;
}

TEST(CoutBuffer, TakesWhatAStringStreamTakesAsAnObject) {
  const StdoutCapture capture;
  CoutBuffer() << Counter() << Counter() << orvo::endl;
  EXPECT_EQ(capture.Text(), "11\n");
}

// Declared only: a reference to the constant would not link.
struct Limits {
  static const int kMost = 7;
};

TEST(CoutBuffer, TakesConstantsWithoutADefinitionWhileTemporary) {
  const StdoutCapture capture;
  CoutBuffer() << Limits::kMost << orvo::endl;
  EXPECT_EQ(capture.Text(), "7\n");
}

TEST(CoutBuffer, EndsALineWithOneCharacterWhateverTheWidth) {
  const StdoutCapture capture;
  CoutBuffer() << "a" << std::setw(4) << orvo::endl;
  EXPECT_EQ(capture.Text(), "a\n");
}

TEST(CoutBuffer, KeepsItsTypeInChains) {
  const StdoutCapture capture;
  CoutBuffer buffer;
  static_assert(std::is_same_v<decltype(buffer << "text"), CoutBuffer&>);
  static_assert(std::is_same_v<decltype(buffer << 7), CoutBuffer&>);
  static_assert(std::is_same_v<decltype(buffer << orvo::endl), CoutBuffer&>);
  static_assert(
      std::is_same_v<decltype(buffer << std::string("s")), CoutBuffer&>);
  static_assert(sizeof(CoutBuffer) == sizeof(OutBuffer<ThreadSafeOStream>));
}

TEST(CoutBuffer, EndsALineWithOneLineFeedOnly) {
  const StdoutCapture capture;
  CoutBuffer buffer;
  buffer << "a" << orvo::endl << orvo::endl << "b" << std::endl;
  EXPECT_EQ(buffer.str(), "a\n\nb\n");
  EXPECT_EQ(capture.Text(), "");
}

TEST(CoutBuffer, AddsNoLineEndOfItsOwn) {
  const StdoutCapture capture;
  CoutBuffer() << "no end";
  EXPECT_EQ(capture.Text(), "no end");
}

TEST(CoutBuffer, WritesNothingVisibleWhenEmptyButFlushes) {
  RecordingStreambuf recorder;
  std::streambuf* const saved = std::cout.rdbuf(&recorder);
  { const CoutBuffer buffer; }
  std::cout.rdbuf(saved);
  std::string written;
  for (const std::string& call : recorder.calls) written += call;
  EXPECT_EQ(written, "(flush)");
}

TEST(CoutBuffer, ReachesTheOutputInOnePiece) {
  RecordingStreambuf recorder;
  std::streambuf* const saved = std::cout.rdbuf(&recorder);
  CoutBuffer() << "a" << 1 << std::string("b") << orvo::endl;
  std::cout.rdbuf(saved);
  EXPECT_THAT(recorder.calls, ElementsAre("a1b\n", "(flush)"));
}

TEST(CoutBuffer, WritesCommittedTextAgainAtItsEnd) {
  const StdoutCapture capture;
  {
    CoutBuffer buffer;
    buffer << "one" << orvo::endl;
    buffer.commit();
    buffer << "two" << orvo::endl;
  }
  EXPECT_EQ(capture.Text(), "one\none\ntwo\n");
}

TEST(CoutBuffer, PrintsNumbersAlikeInEveryLocale) {
  const orvo_test::ScopedGroupedDigits locale;
  const StdoutCapture capture;
  CoutBuffer() << 12345678 << ' ' << 0.5;
  EXPECT_EQ(capture.Text(), "12345678 0.5");
}

TEST(CoutBuffer, LosesOnlyWhatAFullDeviceDoesNotTake) {
  const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
  {
    const StdoutRedirection redirection(full);
    CoutBuffer() << "lost" << orvo::endl;
    EXPECT_TRUE(std::cout.bad());
    CoutBuffer() << "lost as well" << orvo::endl;
  }
  close(full);
  std::cout.clear();
  const StdoutCapture capture;
  CoutBuffer() << "kept" << orvo::endl;
  EXPECT_TRUE(std::cout.good());
  EXPECT_EQ(capture.Text(), "kept\n");
}

TEST(CoutBuffer, LosesOnlyWhatAClosedDescriptorDoesNotTake) {
  {
    const StdoutRedirection redirection(STDERR_FILENO);
    close(STDOUT_FILENO);
    CoutBuffer() << "lost" << orvo::endl;
    EXPECT_TRUE(std::cout.bad());
  }
  std::cout.clear();
  const StdoutCapture capture;
  CoutBuffer() << "kept" << orvo::endl;
  EXPECT_EQ(capture.Text(), "kept\n");
}

TEST(TagConstants, TakeOneByteEach) {
  EXPECT_EQ(sizeof orvo::endl, 1U);
  EXPECT_EQ(sizeof orvo::flush, 1U);
  EXPECT_EQ(sizeof orvo::rollback, 1U);
  static_assert(std::is_same_v<decltype(orvo::endl), const orvo::EndlT>);
}

// Checks that a text consists of the lines "thread T message M", each once and
// those of one thread in order.
void ExpectWholeLines(const std::string& text, int threads, int messages) {
  std::istringstream lines(text);
  std::map<int, int> next;
  std::string line;
  int count = 0;
  for (; std::getline(lines, line); ++count) {
    int thread = -1;
    int message = -1;
    int size = 0;
    ASSERT_EQ(std::sscanf(line.c_str(), "thread %d message %d%n", &thread,
                          &message, &size),
              2)
        << line;
    ASSERT_EQ(static_cast<std::size_t>(size), line.size()) << line;
    ASSERT_EQ(message, next[thread]++) << line;
  }
  EXPECT_EQ(count, threads * messages);
  EXPECT_EQ(next.size(), static_cast<std::size_t>(threads));
}

constexpr int kThreads = 16;
constexpr int kMessages = 10000;

void WriteFromManyThreads() {
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([i] {
      for (int j = 0; j < kMessages; ++j) {
        CoutBuffer() << "thread " << i << " message " << j << orvo::endl;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

TEST(CoutBuffer, KeepsLinesOfManyThreadsWholeInAPipe) {
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
  std::string text;
  std::thread reader([&] {
    char part[4096];
    ssize_t size = 0;
    while ((size = read(ends[0], part, sizeof part)) > 0) {
      text.append(part, static_cast<std::size_t>(size));
    }
  });
  {
    const StdoutRedirection redirection(ends[1]);
    close(ends[1]);
    WriteFromManyThreads();
  }
  reader.join();
  close(ends[0]);
  ExpectWholeLines(text, kThreads, kMessages);
}

TEST(RedirectCout, KeepsLinesOfManyThreadsWholeInTheFile) {
  const TemporaryFolder folder;
  const std::string path = folder / "log";
  const orvo_test::ProgramResult result = orvo_test::RunProgram(
      {orvo_test::ProgramPath("redirected_writers"), path,
       std::to_string(kThreads), std::to_string(kMessages)});
  EXPECT_EQ(result.exit_status, 0) << result.errors;
  EXPECT_EQ(result.output, "");
  ExpectWholeLines(ReadFile(path), kThreads, kMessages);
}

TEST(RedirectCout, SendsPlainOutputToTheTruncatedFileAsWell) {
  const TemporaryFolder folder;
  const std::string path = folder / "log";
  orvo_test::WriteFile(path, "old content\n");
  const orvo_test::ProgramResult result = orvo_test::RunProgram(
      {orvo_test::ProgramPath("redirected_writers"), path, "0", "0"});
  EXPECT_EQ(result.exit_status, 0) << result.errors;
  EXPECT_EQ(ReadFile(path), "plain\nbuffered\n");
}

TEST(RedirectCout, GivesTheStandardOutputItsBufferBackAtExit) {
  const TemporaryFolder folder;
  const orvo_test::ProgramResult result = orvo_test::RunProgram(
      {orvo_test::ProgramPath("output_after_exit"), folder / "log"});
  EXPECT_EQ(result.exit_status, 0) << result.errors;
  EXPECT_EQ(ReadFile(folder / "log"), "redirected\n");
  EXPECT_EQ(result.output, "after the library\n");
}

TEST(RedirectCout, KeepsTheFirstFileUntilTheExitWhenCalledAgain) {
  const TemporaryFolder folder;
  const orvo_test::ProgramResult result =
      orvo_test::RunProgram({orvo_test::ProgramPath("redirected_twice"),
                             folder / "first", folder / "second"});
  EXPECT_EQ(result.exit_status, 0) << result.errors;
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(ReadFile(folder / "first"), "one\ntwo\n");
  EXPECT_NE(access((folder / "second").c_str(), F_OK), 0);
}

TEST(RedirectCout, LosesOutputToAnImpossibleFileWithoutHarm) {
  const orvo_test::ProgramResult result =
      orvo_test::RunProgram({orvo_test::ProgramPath("redirected_writers"),
                             "/missing/folder/log", "2", "10"});
  EXPECT_EQ(result.exit_status, 0) << result.errors;
  EXPECT_EQ(result.output, "");
}

TEST(ScopedCoutCapture, CatchesTheDiagnosticsAndPlainOutput) {
  const StdoutCapture output;
  const ScopedCoutCapture capture;
  EXPECT_EQ(capture.Text(), "");
  CoutBuffer() << "worker " << 7 << " is done" << orvo::endl;
  EXPECT_EQ(capture.Text(), "worker 7 is done\n");
  std::cout << "plain" << std::endl;
  EXPECT_EQ(capture.Text(), "worker 7 is done\nplain\n");
  EXPECT_EQ(output.Text(), "");
}

TEST(ScopedCoutCapture, GivesTheOutputBackAnyNumberOfTimes) {
  std::streambuf* const own_buffer = std::cout.rdbuf();
  for (int round = 0; round < 3; ++round) {
    const StdoutCapture output;
    {
      const ScopedCoutCapture capture;
      CoutBuffer() << "caught";
      EXPECT_EQ(capture.Text(), "caught");
    }
    EXPECT_EQ(std::cout.rdbuf(), own_buffer);
    CoutBuffer() << "written";
    EXPECT_EQ(output.Text(), "written");
  }
}

TEST(ScopedCoutCapture, GivesTheOutputBackWhenAnExceptionEndsIt) {
  const StdoutCapture output;
  try {
    const ScopedCoutCapture capture;
    CoutBuffer() << "caught";
    throw std::runtime_error("failed");
  } catch (const std::runtime_error&) {
    CoutBuffer() << "written";
  }
  EXPECT_EQ(output.Text(), "written");
}

TEST(ScopedCoutCapture, LeavesTheTextToTheInnermostOne) {
  const StdoutCapture output;
  const ScopedCoutCapture outer;
  CoutBuffer() << "1";
  {
    const ScopedCoutCapture inner;
    CoutBuffer() << "2";
    EXPECT_EQ(inner.Text(), "2");
  }
  CoutBuffer() << "3";
  EXPECT_EQ(outer.Text(), "13");
  EXPECT_EQ(output.Text(), "");
}

TEST(ScopedCoutCapture, MayEndInAnyOrder) {
  std::streambuf* const own_buffer = std::cout.rdbuf();
  const int orders[][3] = {{0, 1, 2}, {0, 2, 1}, {1, 0, 2},
                           {1, 2, 0}, {2, 0, 1}, {2, 1, 0}};
  for (const auto& order : orders) {
    std::string expected[3];
    std::unique_ptr<ScopedCoutCapture> captures[3];
    for (auto& capture : captures) {
      capture = std::make_unique<ScopedCoutCapture>();
    }
    for (const int ended : order) {
      captures[ended].reset();
      if (ended == order[2]) break;
      const std::string text = "after " + std::to_string(ended) + ", ";
      CoutBuffer() << text;
      int innermost = 2;
      while (captures[innermost] == nullptr) --innermost;
      expected[innermost] += text;
      for (int i = 0; i < 3; ++i) {
        if (captures[i] == nullptr) continue;
        EXPECT_EQ(captures[i]->Text(), expected[i]);
      }
    }
    EXPECT_EQ(std::cout.rdbuf(), own_buffer);
  }
}

TEST(ScopedCoutCapture, TakesAForeignBufferAway) {
  std::streambuf* const own_buffer = std::cout.rdbuf();
  std::ostringstream foreign;
  {
    const ScopedCoutCapture capture;
    std::cout.rdbuf(foreign.rdbuf());
  }
  EXPECT_EQ(std::cout.rdbuf(), own_buffer);
}

TEST(ScopedCoutCapture, LeavesItsOutputToAnInnerOneInFrontOfAForeignBuffer) {
  std::streambuf* const own_buffer = std::cout.rdbuf();
  std::ostringstream foreign;
  auto outer = std::make_unique<ScopedCoutCapture>();
  std::cout.rdbuf(foreign.rdbuf());
  auto inner = std::make_unique<ScopedCoutCapture>();
  outer.reset();
  CoutBuffer() << "text";
  EXPECT_EQ(inner->Text(), "text");
  inner.reset();
  EXPECT_EQ(std::cout.rdbuf(), own_buffer);
}

TEST(ScopedCoutCapture, CatchesWhatAFailedStreamWouldLoseAndKeepsItsState) {
  std::cout.setstate(std::ios_base::failbit);
  {
    const ScopedCoutCapture capture;
    CoutBuffer() << "caught";
    EXPECT_EQ(capture.Text(), "caught");
    std::cout.setstate(std::ios_base::badbit);
  }
  const std::ios_base::iostate state = std::cout.rdstate();
  std::cout.clear();
  EXPECT_EQ(state, std::ios_base::failbit);
}

TEST(ScopedCoutCapture, EndsInPeaceWhereTheStreamThrowsForItsState) {
  std::streambuf* const own_buffer = std::cout.rdbuf();
  std::cout.setstate(std::ios_base::badbit);
  {
    const ScopedCoutCapture capture;
    std::cout.exceptions(std::ios_base::badbit);
  }
  const std::ios_base::iostate state = std::cout.rdstate();
  std::cout.clear();
  std::cout.exceptions(std::ios_base::goodbit);
  EXPECT_EQ(state, std::ios_base::badbit);
  EXPECT_EQ(std::cout.rdbuf(), own_buffer);
}

TEST(ScopedCoutCapture, KeepsLinesOfManyThreadsWhole) {
  const ScopedCoutCapture capture;
  WriteFromManyThreads();
  ExpectWholeLines(capture.Text(), kThreads, kMessages);
}

// Checks that each line of a text is a greater number than the one before, and
// returns the last one.
int ExpectRisingNumbers(const std::string& text) {
  std::istringstream lines(text);
  int last = -1;
  for (std::string line; std::getline(lines, line);) {
    const auto number = orvo::ParseNumber<int>(line);
    EXPECT_TRUE(number && *number > last) << line << " after " << last;
    if (number) last = *number;
  }
  return last;
}

TEST(ScopedCoutCapture, BeginsAndEndsWhileOthersWrite) {
  const ScopedCoutCapture outer;
  orvo_test::Latch start(2);
  orvo_test::Latch given_back;
  std::thread writer([&] {
    start.Arrive();
    for (int i = 0; i < kMessages; ++i) CoutBuffer() << i << orvo::endl;
    given_back.Wait();
    CoutBuffer() << kMessages << orvo::endl;
  });
  start.Arrive();
  for (int i = 0; i < 100; ++i) {
    const ScopedCoutCapture inner;
    ExpectRisingNumbers(inner.Text());
  }
  given_back.CountDown();
  writer.join();
  EXPECT_EQ(ExpectRisingNumbers(outer.Text()), kMessages);
}

TEST(ScopedCoutCapture, WorksBehindARedirection) {
  const TemporaryFolder folder;
  const orvo_test::ProgramResult result = orvo_test::RunProgram(
      {orvo_test::ProgramPath("captured_output"), folder / "log", "before"});
  EXPECT_EQ(result.exit_status, 0);
  EXPECT_EQ(result.errors, "second\nthird\n");
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(ReadFile(folder / "log"), "first\nfourth\n");
}

TEST(ScopedCoutCapture, LeavesTheOutputToARedirectionMeanwhile) {
  const TemporaryFolder folder;
  const orvo_test::ProgramResult result = orvo_test::RunProgram(
      {orvo_test::ProgramPath("captured_output"), folder / "log", "meanwhile"});
  EXPECT_EQ(result.exit_status, 0);
  EXPECT_EQ(result.errors, "second\n");
  EXPECT_EQ(result.output, "first\n");
  EXPECT_EQ(ReadFile(folder / "log"), "third\nfourth\n");
}

}  // namespace

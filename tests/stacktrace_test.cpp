#include "orvo/stacktrace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <list>
#include <mutex>
#include <new>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include "tests/support/allocations.h"
#include "tests/support/capture.h"
#include "tests/support/interpose/calls.h"
#include "tests/support/latch.h"
#include "tests/support/standard_library.h"

namespace {

using orvo::Demangle;
using orvo::FrameParts;
using orvo::GetStackTrace;
using orvo::PrintStackTrace;
using orvo_test::ScopedAllocationFailure;
using orvo_test::ScopedFailure;
using orvo_test::ScopedHook;
using orvo_test::StdoutCapture;
using testing::ElementsAre;
using testing::IsEmpty;

static_assert(!std::is_polymorphic_v<FrameParts>);

// Arranges texts as backtrace_symbols() does: one block, pointers first.
char** MakeSymbols(const std::vector<std::string>& lines, std::size_t count) {
  std::size_t size = count * sizeof(char*);
  for (std::size_t i = 0; i < count; ++i) size += lines[i].size() + 1;
  char** const symbols = static_cast<char**>(std::malloc(size));
  char* text = reinterpret_cast<char*>(symbols + count);
  for (std::size_t i = 0; i < count; ++i) {
    symbols[i] = text;
    text += lines[i].copy(text, lines[i].size());
    *text++ = '\0';
  }
  return symbols;
}

// Lets the system describe every stack by the given lines while it lives; the
// first of them stands for the frame of GetStackTrace() itself.
class FakeStack {
 public:
  explicit FakeStack(const std::vector<std::string>& callers)
      : lines_({"0 own 0x0 own + 0"}) {
    lines_.insert(lines_.end(), callers.begin(), callers.end());
  }

  // The sizes of the buffers that were offered for return addresses, once the
  // threads that offered them have ended.
  const std::vector<int>& sizes() const { return sizes_; }

 private:
  void Note(int size) {
    const std::lock_guard<std::mutex> guard(mutex_);
    sizes_.push_back(size);
  }

  std::vector<std::string> lines_;
  std::mutex mutex_;
  std::vector<int> sizes_;  // guarded by mutex_
  ScopedHook<int(void**, int)> addresses_{
      orvo_test::backtrace_calls, [this](void** buffer, int size) {
        Note(size);
        const int count = std::min(size, static_cast<int>(lines_.size()));
        std::fill_n(buffer, count, nullptr);
        return count;
      }};
  ScopedHook<char**(void* const*, int)> symbols_{
      orvo_test::backtrace_symbols_calls, [this](void* const*, int count) {
        return MakeSymbols(lines_, static_cast<std::size_t>(count));
      }};
};

TEST(Demangle, ShowsSymbolsAsTheSourceHasThem) {
  ORVO_NEEDS_LIBSTDCXX();
  EXPECT_EQ(Demangle("_ZN4shop6AcceptEi"), "shop::Accept(int)");
  EXPECT_EQ(Demangle("_Z4swapIiEvRT_S1_"), "void swap<int>(int&, int&)");
  EXPECT_EQ(Demangle("St6vectorIiSaIiEE"),
            "std::vector<int, std::allocator<int> >");
}

TEST(Demangle, ReturnsWhatIsNoSymbolUnchanged) {
  for (const std::string& name :
       {std::string(), std::string("main"), std::string("??"),
        std::string("_Z"), std::string("_ZN4shop6Accept"),
        std::string("two words"), std::string(10000, '_')}) {
    EXPECT_EQ(Demangle(name), name);
  }
}

TEST(Demangle, TakesAbbreviatedTypesForSymbols) {
  EXPECT_EQ(Demangle("f"), "float");
  EXPECT_EQ(Demangle("Pc"), "char*");
}

TEST(Demangle, LetsTheRuntimeAllocate) {
  int calls = 0;
  const ScopedHook hook(
      orvo_test::cxa_demangle_calls,
      [&](const char* name, char* buffer, std::size_t* length, int* status) {
        ++calls;
        EXPECT_STREQ(name, "name");
        EXPECT_EQ(buffer, nullptr);
        EXPECT_EQ(length, nullptr);
        *status = 0;
        return strdup("demangled");
      });
  EXPECT_EQ(Demangle("name"), "demangled");
  EXPECT_EQ(calls, 1);
}

TEST(Demangle, ReturnsTheNameWhenTheRuntimeReportsAnError) {
  for (const int error : {-1, -2, -3}) {
    SCOPED_TRACE(error);
    const ScopedHook hook(orvo_test::cxa_demangle_calls,
                          [&](const char*, char*, std::size_t*, int* status) {
                            *status = error;
                            return strdup("not to be used");
                          });
    EXPECT_EQ(Demangle("_Z6Accepti"), "_Z6Accepti");
  }
}

TEST(Demangle, ReleasesTheRuntimesMemoryWhenItsOwnRunsOut) {
  const std::string name = "_ZN4shop6AcceptEiiiiiiiiiiii";
  const ScopedAllocationFailure failure;
  EXPECT_THROW(Demangle(name), std::bad_alloc);
}

TEST(FrameParts, CutsALineOfSixColumns) {
  const FrameParts parts(
      "4   shop   0x000000010f1a2b3c   _ZN4shop6AcceptEi + 41");
  EXPECT_TRUE(parts.GetSuccess());
  EXPECT_EQ(parts.GetFrameNumber(), "3");
  EXPECT_EQ(parts.GetImage(), "shop");
  EXPECT_EQ(parts.GetAddress(), "0x000000010f1a2b3c");
  EXPECT_EQ(parts.GetSymbol(), "shop::Accept(int)");
  EXPECT_EQ(parts.GetOffset(), "41");
}

TEST(FrameParts, JoinsASymbolOfTwoPieces) {
  const FrameParts parts("2 shop 0x1 _Z6Accepti   [clone] + 7");
  EXPECT_TRUE(parts.GetSuccess());
  EXPECT_EQ(parts.GetFrameNumber(), "1");
  EXPECT_EQ(parts.GetImage(), "shop");
  EXPECT_EQ(parts.GetAddress(), "0x1");
  EXPECT_EQ(parts.GetSymbol(), "_Z6Accepti [clone]");
  EXPECT_EQ(parts.GetOffset(), "7");
}

TEST(FrameParts, IgnoresBlanksAtBothEnds) {
  const FrameParts parts("  1 shop 0x1 main + 7  ");
  EXPECT_TRUE(parts.GetSuccess());
  EXPECT_EQ(parts.GetFrameNumber(), "0");
  EXPECT_EQ(parts.GetOffset(), "7");
}

TEST(FrameParts, SeparatesOnlyAtBlanks) {
  const FrameParts parts("1 a\tb 0x1\n main + 7\r");
  EXPECT_TRUE(parts.GetSuccess());
  EXPECT_EQ(parts.GetImage(), "a\tb");
  EXPECT_EQ(parts.GetAddress(), "0x1\n");
  EXPECT_EQ(parts.GetOffset(), "7\r");
}

TEST(FrameParts, KeepsEveryTextButTheFirstAndTheSymbol) {
  const FrameParts parts("1 i i main i i");
  EXPECT_TRUE(parts.GetSuccess());
  EXPECT_EQ(parts.GetImage(), "i");
  EXPECT_EQ(parts.GetAddress(), "i");
  EXPECT_EQ(parts.GetOffset(), "i");
}

TEST(FrameParts, IsCopiedAndMoved) {
  const FrameParts parts("1 shop 0x1 main + 7");
  FrameParts copy(parts);
  EXPECT_EQ(copy.GetSymbol(), "main");
  const FrameParts moved(std::move(copy));
  EXPECT_EQ(moved.GetImage(), "shop");
  FrameParts assigned("2 till 0x2 pay + 8");
  assigned = parts;
  EXPECT_EQ(assigned.GetImage(), "shop");
  assigned = FrameParts("2 till 0x2 pay + 8");
  EXPECT_EQ(assigned.GetImage(), "till");
  EXPECT_TRUE(assigned.GetSuccess());
}

TEST(FrameParts, CountsFramesFromTheOneBeforeTheSystems) {
  const struct {
    const char* token;
    const char* number;
  } cases[] = {
      {"0", "-1"},
      {"1", "0"},
      {"10", "9"},
      {"007", "6"},
      {"-3", "-4"},
      {"+3", "2"},
      {"3.9", "2"},
      {"12345678", "12345677"},
      {"2147483647", "2147483646"},
      {"99999999999", "2147483646"},
      {"-2147483648", "-2147483649"},
      {"-99999999999", "-2147483649"},
      {"number", "-1"},
      {"3x", "2"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.token);
    const FrameParts parts(std::string(c.token) + " shop 0x1 main + 7");
    EXPECT_TRUE(parts.GetSuccess());
    EXPECT_EQ(parts.GetFrameNumber(), c.number);
  }
}

TEST(FrameParts, ReportsALineWithAnotherNumberOfColumns) {
  const struct {
    const char* line;
    const char* output;
  } cases[] = {
      {"", "frameLineNoSpaces.size() = 0\n\n"},
      {"   ", "frameLineNoSpaces.size() = 0\n   \n"},
      {"main", "frameLineNoSpaces.size() = 1\nmain\n"},
      {"1  shop 0x1 main +",
       "frameLineNoSpaces.size() = 5\n1  shop 0x1 main +\n"},
      {"1 shop 0x1 a b c + 7 ",
       "frameLineNoSpaces.size() = 8\n1 shop 0x1 a b c + 7 \n"},
      {"shop(main+0x10) [0x5]",
       "frameLineNoSpaces.size() = 2\nshop(main+0x10) [0x5]\n"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.line);
    const StdoutCapture output;
    const FrameParts parts(c.line);
    EXPECT_FALSE(parts.GetSuccess());
    EXPECT_EQ(parts.GetFrameNumber(), "");
    EXPECT_EQ(parts.GetImage(), "");
    EXPECT_EQ(parts.GetAddress(), "");
    EXPECT_EQ(parts.GetSymbol(), "");
    EXPECT_EQ(parts.GetOffset(), "");
    EXPECT_EQ(output.Text(), c.output);
  }
}

TEST(FrameParts, CountsTheColumnsOfALongLine) {
  std::string line;
  for (int i = 0; i < 100000; ++i) line += "x ";
  const StdoutCapture output;
  EXPECT_FALSE(FrameParts(line).GetSuccess());
  EXPECT_EQ(output.Text(), "frameLineNoSpaces.size() = 100000\n" + line + "\n");
}

TEST(GetStackTrace, AlignsTheColumns) {
  const FakeStack stack({"1 shop 0x10f1a2b3c _Z6Accepti + 41",
                         "2  a-library.so    0x2   one two + 5",
                         "11 x 0x33 main + 12345"});
  EXPECT_THAT(GetStackTrace(20),
              ElementsAre("0   shop          0x10f1a2b3c  Accept(int) + 41",
                          "1   a-library.so  0x2          one two + 5",
                          "10  x             0x33         main + 12345"));
}

TEST(GetStackTrace, OffersRoomForItsOwnFrameToo) {
  const FakeStack stack({"1 shop 0x1 first + 1", "2 shop 0x2 second + 2"});
  EXPECT_THAT(GetStackTrace(0), IsEmpty());
  EXPECT_THAT(GetStackTrace(1), ElementsAre("0  shop  0x1  first + 1"));
  EXPECT_THAT(GetStackTrace(2), ElementsAre("0  shop  0x1  first + 1",
                                            "1  shop  0x2  second + 2"));
  EXPECT_EQ(GetStackTrace(1000).size(), 2U);
  EXPECT_THAT(stack.sizes(), ElementsAre(1, 2, 3, 1001));
}

TEST(GetStackTrace, CountsANegativeDepthAsZero) {
  const FakeStack stack({"1 shop 0x1 first + 1"});
  EXPECT_THAT(GetStackTrace(-1), IsEmpty());
  EXPECT_THAT(GetStackTrace(INT_MIN), IsEmpty());
  EXPECT_THAT(stack.sizes(), ElementsAre(1, 1));
}

TEST(GetStackTrace, BoundsTheDepth) {
  const FakeStack stack({"1 shop 0x1 first + 1"});
  EXPECT_EQ(GetStackTrace(65535).size(), 1U);
  EXPECT_EQ(GetStackTrace(65536).size(), 1U);
  EXPECT_EQ(GetStackTrace(INT_MAX).size(), 1U);
  EXPECT_THAT(stack.sizes(), ElementsAre(65536, 65536, 65536));
}

TEST(GetStackTrace, IsEmptyWithoutAddresses) {
  const ScopedHook symbols(orvo_test::backtrace_symbols_calls,
                           [](void* const*, int) -> char** {
                             ADD_FAILURE() << "There is nothing to ask for.";
                             return nullptr;
                           });
  const ScopedHook addresses(orvo_test::backtrace_calls,
                             [](void**, int) { return 0; });
  EXPECT_THAT(GetStackTrace(5), IsEmpty());
}

TEST(GetStackTrace, ThrowsWhenTheSystemIsOutOfMemory) {
  const ScopedFailure failure("backtrace_symbols", ENOMEM);
  EXPECT_THROW(GetStackTrace(5), std::bad_alloc);
}

TEST(GetStackTrace, TakesColumnsThatEndInABracket) {
  const FakeStack stack({"1 shop 0x1 main + [7]"});
  EXPECT_THAT(GetStackTrace(5), ElementsAre("0  shop  0x1  main + [7]"));
}

TEST(GetStackTrace, PassesOnThatMemoryRanOut) {
  const FakeStack stack({"1 shop 0x1 first + 1", "2 shop 0x2 second + 2"});
  int failures = 0;
  for (bool finished = false; !finished; ++failures) {
    // Each round fails later, and leaves the rest to the leak checkers.
    const ScopedAllocationFailure failure(failures);
    try {
      GetStackTrace(20);
      finished = true;
    } catch (const std::bad_alloc&) {
    }
  }
  EXPECT_GT(failures, 5);
}

// With these columns in front a name has the columns from 20 to 139.
const std::string kFrontOf20 = "1 shop 0x1234567 ";
const std::string kShownFrontOf20 = "0  shop  0x1234567  ";

TEST(GetStackTrace, LeavesASymbolWholeThatFitsIntoTheRoom) {
  const std::string name(120, '_');
  const FakeStack stack({kFrontOf20 + name + " + 41"});
  EXPECT_THAT(GetStackTrace(1), ElementsAre(kShownFrontOf20 + name + " + 41"));
}

TEST(GetStackTrace, FoldsALongSymbolBelowItsBeginning) {
  const std::string first(120, '1');
  const std::string second(120, '2');
  const std::string indentation(20, ' ');
  const struct {
    std::string symbol;
    std::string folded;
  } cases[] = {
      {first + "2", first + "\n" + indentation + "2"},
      {first + second, first + "\n" + indentation + second},
      {first + second + "3",
       first + "\n" + indentation + second + "\n" + indentation + "3"},
      {first + " " + second, first + "\n" + indentation + " " +
                                 second.substr(1) + "\n" + indentation + "2"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.symbol);
    const FakeStack stack({kFrontOf20 + c.symbol + " + 41"});
    EXPECT_THAT(GetStackTrace(1),
                ElementsAre(kShownFrontOf20 + c.folded + " + 41"));
  }
}

TEST(GetStackTrace, FoldsDemangledSymbols) {
  const std::string name(200, 'a');
  const FakeStack stack({kFrontOf20 + "_Z200" + name + "v + 41"});
  EXPECT_THAT(
      GetStackTrace(1),
      ElementsAre(kShownFrontOf20 + std::string(120, 'a') + "\n" +
                  std::string(20, ' ') + std::string(80, 'a') + "() + 41"));
}

// One number of one digit, an address of three characters and six blanks.
std::string LineWithNameAt(std::size_t position) {
  return "1 " + std::string(position - 10, 'i') + " 0x1 name + 41";
}

TEST(GetStackTrace, FoldsIntoOneColumnIfThatIsAllTheRoom) {
  const FakeStack stack({LineWithNameAt(139)});
  const std::string front = "0  " + std::string(129, 'i') + "  0x1  ";
  const std::string next = "\n" + std::string(139, ' ');
  EXPECT_THAT(GetStackTrace(1), ElementsAre(front + "n" + next + "a" + next +
                                            "m" + next + "e + 41"));
}

#if ORVO_ASSERTIONS

const char* const kTooWide =
    "stacktrace\\.cpp:185: .*GetStackTrace.*"
    "Assertion `positionOfName < 140' failed";

TEST(GetStackTraceDeathTest, EndsTheProcessWhenTheColumnsLeaveNoRoom) {
  const FakeStack stack({LineWithNameAt(140)});
  EXPECT_DEATH(GetStackTrace(1), kTooWide);
  EXPECT_DEATH(PrintStackTrace(1), kTooWide);
}

TEST(GetStackTraceDeathTest, ChecksTheColumnsBeforeItFallsBack) {
  const StdoutCapture output;
  const FakeStack stack({LineWithNameAt(140), "nonsense"});
  EXPECT_DEATH(GetStackTrace(2), kTooWide);
}

TEST(GetStackTraceDeathTest, AddsUpTheWidestFields) {
  const std::string wide(61, 'w');
  const FakeStack stack({"1 " + wide + " 0x1 name + 41",
                         "2 shop 0x" + wide + " name + 41",
                         "1234567890123456 shop 0x1 name + 41"});
  EXPECT_THAT(GetStackTrace(1), testing::SizeIs(1));
  EXPECT_THAT(GetStackTrace(2), testing::SizeIs(2));
  EXPECT_DEATH(GetStackTrace(3), kTooWide);
}

#else

TEST(GetStackTrace, FoldsIntoOneColumnIfThereIsNoRoom) {
  const FakeStack stack({LineWithNameAt(150)});
  const std::string front = "0  " + std::string(140, 'i') + "  0x1  ";
  const std::string next = "\n" + std::string(150, ' ');
  EXPECT_THAT(GetStackTrace(1), ElementsAre(front + "n" + next + "a" + next +
                                            "m" + next + "e + 41"));
}

#endif

TEST(GetStackTrace, ChecksNoColumnsBehindTheFirstFailure) {
  const StdoutCapture output;
  const FakeStack stack({"nonsense", LineWithNameAt(140)});
  EXPECT_THAT(GetStackTrace(2), ElementsAre("nonsense", LineWithNameAt(140)));
}

TEST(GetStackTrace, FallsBackToTheSystemsLines) {
  const FakeStack stack({"1   shop 0x1 _Z6Accepti + 1", "2 shop  0x2 main +",
                         "not read any more", "4 shop 0x4 main + 4"});
  const StdoutCapture output;
  EXPECT_THAT(GetStackTrace(20),
              ElementsAre("1   shop 0x1 _Z6Accepti + 1", "2 shop  0x2 main +",
                          "not read any more", "4 shop 0x4 main + 4"));
  EXPECT_EQ(output.Text(),
            "frameLineNoSpaces.size() = 5\n2 shop  0x2 main +\n");
}

TEST(GetStackTrace, DoesNotReadItsOwnFrame) {
  const ScopedHook addresses(orvo_test::backtrace_calls,
                             [](void**, int) { return 2; });
  const ScopedHook symbols(
      orvo_test::backtrace_symbols_calls, [](void* const*, int) {
        return MakeSymbols({"nonsense", "1 shop 0x1 main + 5"}, 2);
      });
  const StdoutCapture output;
  EXPECT_THAT(GetStackTrace(1), ElementsAre("0  shop  0x1  main + 5"));
  EXPECT_EQ(output.Text(), "");
}

TEST(GetStackTrace, BringsLinesOfLinuxIntoColumns) {
  const struct {
    const char* line;
    const char* shown;
  } cases[] = {
      {"/usr/bin/shop(_Z6Accepti+0x29) [0x55d0c7a4f1e9]",
       "0  shop  0x55d0c7a4f1e9  Accept(int) + 41"},
      {"./shop(main+0x0) [0x1]", "0  shop  0x1  main + 0"},
      {"shop(main+0) [0x1]", "0  shop  0x1  main + 0"},
      {"shop(main+0xffffffffffffffff) [0xFFFFFFFFFFFFFFFF]",
       "0  shop  0xFFFFFFFFFFFFFFFF  main + 18446744073709551615"},
      {"/lib/libc.so.6(+0x2724a) [0x7f3e5c62924a]",
       "0  libc.so.6  0x7f3e5c62924a  ?? + 160330"},
      {"/lib/libc.so.6(+0) [0x7f3e5c600000]",
       "0  libc.so.6  0x7f3e5c600000  ?? + 0"},
      {"shop(f+0x1) [0x2]", "0  shop  0x2  float + 1"},
      {"shop(a+b+0x10) [0x2]", "0  shop  0x2  a+b + 16"},
      {"/a(b) [0x1]/shop(main+0x1) [0x2]", "0  shop  0x2  main + 1"},
      {"/a b/c d/shop(main+0x1) [0x2]", "0  shop  0x2  main + 1"},
      {"/a/my own  shop(main+0x1) [0x2]", "0  my own  shop  0x2  main + 1"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.line);
    const StdoutCapture output;
    const FakeStack stack({c.line});
    EXPECT_THAT(GetStackTrace(1), ElementsAre(c.shown));
    EXPECT_EQ(output.Text(), "");
  }
}

TEST(GetStackTrace, NumbersLinesOfLinuxAsTheSystemWould) {
  const std::vector<std::string> lines(11, "shop(main+0x5) [0x1]");
  const FakeStack stack(lines);
  const std::list<std::string> trace = GetStackTrace(20);
  EXPECT_EQ(trace.front(), "0   shop  0x1  main + 5");
  EXPECT_EQ(trace.back(), "10  shop  0x1  main + 5");
}

TEST(GetStackTrace, AlignsLinesOfBothKinds) {
  const FakeStack stack({"/bin/shop(main+0x5) [0x1]",
                         "2 library 0x22 start + 4",
                         "/bin/a-shop(+0x6) [0x333]"});
  EXPECT_THAT(GetStackTrace(20), ElementsAre("0  shop     0x1    main + 5",
                                             "1  library  0x22   start + 4",
                                             "2  a-shop   0x333  ?? + 6"));
}

TEST(GetStackTrace, LeavesLinesOfOtherShapesAsTheyAre) {
  for (const char* const line : {
           "[0x5]",
           "[(nil)]",
           "]",
           "shop [0x5]",
           "shop(main+0x5)",
           "shop(main+0x5)[0x5]",
           "shop(main+0x5) [0x5",
           "shop(main+0x5) [0x5] ",
           "shop(main+0x5) [0x]",
           "shop(main+0x5) [5]",
           "shop(main+0x5) [0x5g]",
           "shop(main+0x5) [0x-5]",
           "shop(main+0x5) [0x10000000000000000]",
           "shop(main+0x10000000000000000) [0x5]",
           "shop(main-0x5) [0x5]",
           "shop(main+5) [0x5]",
           "shop(main+0x) [0x5]",
           "shop(main+) [0x5]",
           "shop(main) [0x5]",
           "shop() [(nil)]",
           "shop() [0x401136]",
           "(main+0x5) [0x5]",
           "/bin/(main+0x5) [0x5]",
           "shop(shop.(*T).m+0x5) [0x5]",
           "shop(operator new+0x5) [0x5]",
       }) {
    SCOPED_TRACE(line);
    const StdoutCapture output;
    const FakeStack stack({line});
    EXPECT_THAT(GetStackTrace(1), ElementsAre(line));
    EXPECT_THAT(output.Text(), testing::EndsWith(line + std::string("\n")));
  }
}

TEST(GetStackTrace, NeverTakesALineOfLinuxForColumns) {
  // Six pieces, the second of which is long enough to end the process.
  const std::string line =
      "/a " + std::string(200, 'b') + " c d f(odd)+0x1) [0x5]";
  const StdoutCapture output;
  const FakeStack stack({line});
  EXPECT_THAT(GetStackTrace(1), ElementsAre(line));
  EXPECT_EQ(output.Text(), "frameLineNoSpaces.size() = 6\n" + line + "\n");
}

TEST(GetStackTrace, FallsBackWhenAnImageIsTooLongForTheColumns) {
  const std::string fits(129, 'i');
  const std::string line = fits + "(main+0x5) [0x1]";
  {
    const FakeStack stack({line});
    EXPECT_THAT(GetStackTrace(1), testing::SizeIs(1));
    EXPECT_THAT(GetStackTrace(1).front(), testing::StartsWith("0  " + fits));
  }
  for (const std::string& longer : {"i" + line, std::string(5000, 'i') + line,
                                    fits + "(main+0x5) [0x12]"}) {
    const StdoutCapture output;
    const FakeStack stack({longer});
    EXPECT_THAT(GetStackTrace(1), ElementsAre(longer));
    EXPECT_EQ(output.Text(), "frameLineNoSpaces.size() = 2\n" + longer + "\n");
  }
}

TEST(GetStackTrace, FallsBackWhenTheImagesOfAllLinesNeedTooMuchRoom) {
  // The address of the second line pushes the name of the first too far.
  const std::string first = std::string(120, 'i') + "(main+0x5) [0x1]";
  const std::string second = "libc.so.6(+0x2724a) [0x7f3e5c62924a]";
  const StdoutCapture output;
  const FakeStack stack({first, second});
  EXPECT_THAT(GetStackTrace(2), ElementsAre(first, second));
  EXPECT_EQ(output.Text(), "frameLineNoSpaces.size() = 2\n" + second + "\n");
}

// The frames with their parts between bars.
std::vector<std::string> Frames(int depth) {
  std::vector<std::string> frames;
  for (const orvo::StackFrame& frame : orvo::GetStackFrames(depth)) {
    frames.push_back(frame.number + "|" + frame.image + "|" + frame.address +
                     "|" + frame.symbol + "|" + frame.offset + "|" +
                     frame.text);
  }
  return frames;
}

TEST(GetStackFrames, CutsLinesOfBothKinds) {
  const FakeStack stack({"1 shop 0x10f1a2b3c _Z6Accepti + 41",
                         "2 a.so  0x2   one two + 5",
                         "/usr/bin/shop(_Z6Accepti+0x29) [0x55d0c7a4f1e9]",
                         "/lib/libc.so.6(+0x2724a) [0x7f3e5c62924a]"});
  const StdoutCapture output;
  EXPECT_THAT(Frames(20),
              ElementsAre("0|shop|0x10f1a2b3c|Accept(int)|41|"
                          "1 shop 0x10f1a2b3c _Z6Accepti + 41",
                          "1|a.so|0x2|one two|5|2 a.so  0x2   one two + 5",
                          "2|shop|0x55d0c7a4f1e9|Accept(int)|41|"
                          "/usr/bin/shop(_Z6Accepti+0x29) [0x55d0c7a4f1e9]",
                          "3|libc.so.6|0x7f3e5c62924a|??|160330|"
                          "/lib/libc.so.6(+0x2724a) [0x7f3e5c62924a]"));
  EXPECT_EQ(output.Text(), "");
}

TEST(GetStackFrames, LeavesAFrameThatCannotBeReadToItsText) {
  const FakeStack stack({"nonsense", "2 shop 0x1 main +", "", "[0x5]",
                         "shop(main+5) [0x5]", "6 shop 0x6 main + 6"});
  const StdoutCapture output;
  EXPECT_THAT(Frames(20),
              ElementsAre("|||||nonsense", "|||||2 shop 0x1 main +", "|||||",
                          "|||||[0x5]", "|||||shop(main+5) [0x5]",
                          "5|shop|0x6|main|6|6 shop 0x6 main + 6"));
  EXPECT_EQ(output.Text(), "");
}

TEST(GetStackFrames, TakesNamesOfAnyLength) {
  const std::string name(5000, 'i');
  const FakeStack stack(
      {"1 " + name + " 0x1 main + 2", name + "(" + name + "+0x5) [0x1]"});
  const StdoutCapture output;
  EXPECT_THAT(Frames(20), ElementsAre("0|" + name + "|0x1|main|2|1 " + name +
                                          " 0x1 main + 2",
                                      "1|" + name + "|0x1|" + name + "|5|" +
                                          name + "(" + name + "+0x5) [0x1]"));
  EXPECT_EQ(output.Text(), "");
}

TEST(GetStackFrames, OffersRoomForItsOwnFrameTooWithinBounds) {
  const FakeStack stack({"1 shop 0x1 first + 1", "2 shop 0x2 second + 2"});
  EXPECT_THAT(Frames(INT_MIN), IsEmpty());
  EXPECT_THAT(Frames(-1), IsEmpty());
  EXPECT_THAT(Frames(0), IsEmpty());
  EXPECT_THAT(Frames(1),
              ElementsAre("0|shop|0x1|first|1|1 shop 0x1 first + 1"));
  EXPECT_EQ(Frames(65536).size(), 2U);
  EXPECT_EQ(Frames(INT_MAX).size(), 2U);
  EXPECT_THAT(stack.sizes(), ElementsAre(1, 1, 1, 2, 65536, 65536));
}

TEST(GetStackFrames, IsEmptyWithoutAddresses) {
  const ScopedHook addresses(orvo_test::backtrace_calls,
                             [](void**, int) { return 0; });
  EXPECT_THAT(Frames(5), IsEmpty());
}

TEST(GetStackFrames, ThrowsWhenTheSystemIsOutOfMemory) {
  const ScopedFailure failure("backtrace_symbols", ENOMEM);
  EXPECT_THROW(Frames(5), std::bad_alloc);
}

TEST(GetStackFrames, PassesOnThatMemoryRanOut) {
  const FakeStack stack({"1 shop 0x1 first_function_of_the_stack + 1"});
  int failures = 0;
  for (bool finished = false; !finished; ++failures) {
    const ScopedAllocationFailure failure(failures);
    try {
      orvo::GetStackFrames(20);
      finished = true;
    } catch (const std::bad_alloc&) {
    }
  }
  EXPECT_GT(failures, 3);
}

TEST(PrintStackTrace, LeavesItsOwnFrameOut) {
  const FakeStack stack({"1 orvo 0x1 PrintStackTrace + 1",
                         "2 shop 0x2 main + 2", "13 shop 0x333 start + 3"});
  const StdoutCapture output;
  PrintStackTrace(20);
  EXPECT_EQ(output.Text(),
            "\nstack trace:\n"
            "1   shop  0x2    main + 2\n"
            "12  shop  0x333  start + 3\n");
  EXPECT_THAT(stack.sizes(), ElementsAre(22));
}

TEST(PrintStackTrace, PrintsAsManyFramesAsAskedFor) {
  const FakeStack stack({"1 orvo 0x1 PrintStackTrace + 1",
                         "2 shop 0x2 main + 2", "3 shop 0x333 start + 3"});
  const StdoutCapture output;
  PrintStackTrace(1);
  EXPECT_EQ(output.Text(), "\nstack trace:\n1  shop  0x2  main + 2\n");
  EXPECT_THAT(stack.sizes(), ElementsAre(3));
}

TEST(PrintStackTrace, KeepsTheTracesOfSeveralThreadsWhole) {
  constexpr int kThreads = 8;
  constexpr int kRounds = 100;
  const FakeStack stack({"1 orvo 0x1 PrintStackTrace + 1",
                         "2 shop 0x2 main + 2", "3 shop 0x333 start + 3"});
  const StdoutCapture output;
  orvo_test::Latch start(kThreads);
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] {
      start.Arrive();
      for (int round = 0; round < kRounds; ++round) PrintStackTrace(20);
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::string expected;
  for (int i = 0; i < kThreads * kRounds; ++i) {
    expected +=
        "\nstack trace:\n"
        "1  shop  0x2    main + 2\n"
        "2  shop  0x333  start + 3\n";
  }
  EXPECT_EQ(output.Text(), expected);
}

TEST(PrintStackTrace, SaysThatThereAreNoFrames) {
  const FakeStack stack(
      {"1 orvo 0x1 PrintStackTrace + 1", "2 shop 0x2 main + 2"});
  for (const int depth : {0, -1, INT_MIN}) {
    SCOPED_TRACE(depth);
    const StdoutCapture output;
    PrintStackTrace(depth);
    EXPECT_EQ(output.Text(), "\nstack trace:\n  no frames found.\n");
  }
  EXPECT_THAT(stack.sizes(), ElementsAre(2, 2, 2));
}

TEST(PrintStackTrace, SaysThatThereAreNoFramesWhenTheSystemFindsNone) {
  const ScopedHook addresses(orvo_test::backtrace_calls,
                             [](void**, int) { return 0; });
  const StdoutCapture output;
  PrintStackTrace(20);
  EXPECT_EQ(output.Text(), "\nstack trace:\n  no frames found.\n");
}

TEST(PrintStackTrace, BoundsTheDepth) {
  const FakeStack stack({"1 orvo 0x1 PrintStackTrace + 1"});
  const StdoutCapture output;
  PrintStackTrace(INT_MAX);
  EXPECT_THAT(stack.sizes(), ElementsAre(65536));
}

TEST(PrintStackTrace, PrintsTheSystemsLinesBehindTheReport) {
  const FakeStack stack({"1 orvo 0x1 PrintStackTrace + 1", "[0x5]", "[0x6]"});
  const StdoutCapture output;
  PrintStackTrace(20);
  EXPECT_EQ(output.Text(),
            "frameLineNoSpaces.size() = 1\n[0x5]\n"
            "\nstack trace:\n[0x5]\n[0x6]\n");
}

TEST(StacktraceSource, CountsItsLinesRightBehindTheAssertion) {
  std::ifstream source(orvo_test::SourcePath("src/stacktrace.cpp"));
  std::vector<int> stated;
  std::vector<int> real;
  int number = 1;
  for (std::string line; std::getline(source, line); ++number) {
    if (line.rfind("#line ", 0) != 0) continue;
    stated.push_back(std::stoi(line.substr(6)));
    real.push_back(number + 1);
  }
  ASSERT_EQ(stated.size(), 2U);
  EXPECT_EQ(stated.front(), 185);
  EXPECT_EQ(stated.back(), real.back());
}

}  // namespace

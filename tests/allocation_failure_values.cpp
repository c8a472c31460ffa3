// The exported functions of everything but locks and conditions, each with what
// it does when memory runs out.
#include <algorithm>
#include <chrono>
#include <cstdarg>
#include <cstdint>
#include <ctime>
#include <functional>
#include <iostream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "orvo/orvo.h"
#include "tests/support/allocation_sweep.h"
#include "tests/support/files.h"
#include "tests/support/id3_writer.h"

namespace orvo_test {
namespace {

using Cases = std::vector<AllocationCase>;

constexpr auto kNeverMatters = OutOfMemory::kNeverMatters;
constexpr auto kThrows = OutOfMemory::kThrows;
constexpr auto kMayBeKept = OutOfMemory::kMayBeKept;
constexpr auto kEnds = OutOfMemory::kEnds;

// For what only streams ask for: those of libc++ have room for short texts.
#ifdef __GLIBCXX__
constexpr auto kStreamThrows = kThrows;
#else
constexpr auto kStreamThrows = kNeverMatters;
#endif

// No string holds it without memory of its own.
const std::string kLong = "a text that takes more room than a string has";

// Executes a call that has an error of its own; lets std::bad_alloc pass.
template <typename Error, typename Call>
void Expecting(Call call) {
  try {
    call();
  } catch (const Error&) {
  }
}

// A class of errors: both of its functions.
template <typename Error>
AllocationCase ErrorCase(const std::string& prefix) {
  return {{{prefix, 2}}, kThrows, Just([] {
            const Error error(kLong);
            if (error.what() != kLong) throw std::logic_error("lost");
          })};
}

void AddErrors(Cases* cases) {
  cases->push_back(ErrorCase<orvo::RuntimeError>("orvo::RuntimeError::"));
  cases->push_back(
      ErrorCase<orvo::OrvoRuntimeError>("orvo::OrvoRuntimeError::"));
  cases->push_back(ErrorCase<orvo::TimeError>("orvo::TimeError::"));
  cases->push_back(ErrorCase<orvo::TimeValueError>("orvo::TimeValueError::"));
  cases->push_back(ErrorCase<orvo::LockError>("orvo::LockError::"));
  cases->push_back(ErrorCase<orvo::ListDirError>("orvo::ListDirError::"));
  cases->push_back(ErrorCase<orvo::BadDir>("orvo::BadDir::"));
  cases->push_back(ErrorCase<orvo::NotACOMM>("orvo::NotACOMM::"));
  cases->push_back(ErrorCase<orvo::NoID3Found>("orvo::NoID3Found::"));
  cases->push_back(ErrorCase<orvo::path::PathError>("orvo::path::PathError::"));
  cases->push_back(ErrorCase<orvo::midi::MidiError>("orvo::midi::MidiError::"));
  cases->push_back(
      ErrorCase<orvo::midi::InvalidNoteName>("orvo::midi::InvalidNoteName::"));
}

ORVO_PRINTF_LIKE(3, 4)
int CallVformat(char* buffer, unsigned long size, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const int length = orvo::vformat(buffer, size, fmt, args);
  va_end(args);
  return length;
}

void AddFormat(Cases* cases) {
  cases->push_back({{{"orvo::vformat(", 1}}, kNeverMatters, Just([] {
                      char buffer[8];
                      CallVformat(buffer, sizeof buffer, "%s", kLong.c_str());
                    })});
  cases->push_back({{{"orvo::format[", 1}}, kThrows, Just([] {
                      orvo::format("%s%300d", kLong.c_str(), 1);
                    })});
  cases->push_back({{{"orvo::format(", 1}}, kThrows, Just([] {
                      orvo::format(kLong + "%300d", 1);
                    })});
  cases->push_back(
      {{{"orvo::errmsg[", 1}}, kThrows, Just([] { orvo::errmsg(1); })});
  cases->push_back({{{"std::string FastFormatter<", 1}}, kThrows, Just([] {
                      Expecting<std::logic_error>(
                          [] { FastFormatter<10>("%s", kLong.c_str()); });
                    })});
  cases->push_back(
      {{{"std::string* Concatenate<", 5}}, kThrows, [](Attempt& attempt) {
         std::string text = "kept";
         std::string piece = kLong;
         attempt([&] {
           Concatenate(&text, "a", piece, "b");
           Concatenate(&text, "a", std::string(kLong), "b");
           Concatenate(&text, piece, "b");
           Concatenate(&text, std::string(kLong), "b");
           Concatenate(&text, "b");
         });
         attempt.Check(text.compare(0, 4, "kept") == 0);
       }});
}

void AddOutput(Cases* cases) {
  cases->push_back(
      {{{"orvo::ThreadSafeOStream& orvo::ThreadSafeOStream::operator<<", 1}},
       kMayBeKept,
       [](Attempt& attempt) {
         std::ostringstream target;
         orvo::ThreadSafeOStream stream(target);
         attempt([&] { stream << kLong; });
         attempt.Check(attempt.failures() == 0
                           ? target.str() == kLong
                           : !attempt.returned() || target.bad());
         target.clear();
         target.str("");
         stream << std::string("usable");
         attempt.Check(target.str() == "usable");
       }});
  cases->push_back(
      {{{"orvo::ThreadSafeOStream::", 4}},
       kStreamThrows,
       [folder = std::make_shared<TemporaryFolder>()](Attempt& attempt) {
         const std::string path = *folder / kLong;
         std::ostringstream target;
         {
           orvo::ThreadSafeOStream stream(target);
           attempt([&] { stream.redirect(path); });
           stream << std::string("one");
           stream.flush();
           attempt.Check(attempt.returned() ? ReadFile(path) == "one"
                                            : target.str() == "one");
           if (!attempt.returned()) stream.redirect(path);
           stream << std::string("two");
         }
         attempt.Check(ReadFile(path) ==
                       (attempt.returned() ? "onetwo" : "two"));
         target << "back";
         attempt.Check(target.str() ==
                       (attempt.returned() ? "back" : "oneback"));
       }});
  cases->push_back({{{"orvo::RedirectCout(", 1}}, kEnds, [](Attempt& attempt) {
                      attempt([] {
                        orvo::RedirectCout("/dev/null");
                        orvo::CoutBuffer() << kLong << orvo::endl;
                      });
                    }});
  cases->push_back({{{"orvo::OutBuffer<orvo::ThreadSafeOStream>& ", 3},
                     {"orvo::OutBuffer<orvo::ThreadSafeOStream>::", 5}},
                    kEnds,
                    [](Attempt& attempt) {
                      std::ostringstream target;
                      orvo::ThreadSafeOStream stream(target);
                      attempt([&] {
                        orvo::OutBuffer<orvo::ThreadSafeOStream> buffer(stream);
                        buffer << kLong.c_str() << 7 << kLong << std::endl;
                        buffer.commit();
                        buffer.flush();
                      });
                    }});
  cases->push_back({{{"orvo::CoutBuffer& ", 3},
                     {"orvo::CoutBuffer::", 4},
                     {"orvo::operator<<(orvo::CoutBuffer&&", 1}},
                    kEnds,
                    [](Attempt& attempt) {
                      attempt([] {
                        orvo::CoutBuffer()
                            << kLong.c_str() << 7 << kLong << orvo::endl;
                        orvo::CoutBuffer() << std::endl;
                      });
                    }});
  cases->push_back(
      {{{"orvo::ScopedCoutCapture::", 4}}, kThrows, [](Attempt& attempt) {
         {
           const orvo::ScopedCoutCapture outer;
           attempt([] {
             const orvo::ScopedCoutCapture capture;
             orvo::thread_safe_cout << 'x';
             const bool kept = std::cout.good();
             // A stream only notes that it had no memory.
             if (!kept || capture.Text() + kLong != "x" + kLong) {
               throw std::bad_alloc();
             }
           });
           orvo::thread_safe_cout << 'y';
           attempt.Check(outer.Text() == "y");
         }
         attempt.Check(std::cout.good());
       }});
}

void AddOperationLog(Cases* cases) {
  static constexpr char kFile[] = "a file with a name that is long";
  cases->push_back({{{"orvo::LogAttempt(", 1}}, kThrows, Just([] {
                      orvo::LogAttempt(kFile, 1, kLong);
                    })});
  cases->push_back({{{"orvo::LogSuccess(", 1}}, kThrows, Just([] {
                      orvo::LogSuccess(kFile, 1, kLong);
                    })});
  cases->push_back({{{"orvo::LogFilter(", 1}}, kThrows, Just([] {
                      orvo::LogFilter(orvo::LogAttempt, kFile, 1, kLong, true);
                    })});
  cases->push_back({{{"orvo::CreateFailureMessage(", 1}}, kThrows, Just([] {
                      orvo::CreateFailureMessage(kFile, 1, kLong, kLong);
                    })});
}

void AddTime(Cases* cases) {
  cases->push_back(
      {{{"orvo::TimeValue::", 38},
        {"orvo::operator<<(std::basic_ostream<char, std::char_traits<char> >&, "
         "orvo::TimeValue",
         1}},
       kNeverMatters,
       Just([] {
         using orvo::TimeValue;
         using std::chrono::duration;
         TimeValue sum;
         for (const TimeValue& time :
              {TimeValue(1.5), TimeValue(1.5F), TimeValue(1), TimeValue(1L),
               TimeValue(1LL), TimeValue(1U), TimeValue(1UL), TimeValue(1ULL),
               TimeValue(duration<long long>(1)),
               TimeValue(duration<long long, std::milli>(1)),
               TimeValue(duration<long long, std::micro>(1)),
               TimeValue(duration<long long, std::nano>(1))}) {
           sum += time + time - time;
           sum -= time;
           sum.AddOffset(time);
           if (time == sum || time != sum || time < sum || time > sum ||
               time <= sum || time >= sum) {
             sum.GetOffset(time);
           }
         }
         sum.GetAsDouble();
         sum.GetAsFloat();
         sum.GetAsDuration();
         sum.GetAsMicroseconds();
         sum.GetAsSeconds();
         sum.GetAsTimespec();
         sum.GetAsTimeval();
         sum.SetAsMicroseconds(1);
         sum.SetAsSeconds(1);
         sum.SetToNow();
         TimeValue::GetNow();
         TimeValue::GetNowDouble();
         static_cast<void>(static_cast<std::chrono::nanoseconds>(sum));
         std::ostream nowhere(nullptr);
         nowhere << sum;
       })});
  cases->push_back({{{"orvo::TimeValue::GetAsIso8601", 4},
                     {"orvo::GetNowIso8601[", 1},
                     {"orvo::current_time[", 1}},
                    kThrows,
                    Just([] {
                      const orvo::TimeValue time(1.5);
                      time.GetAsIso8601();
                      time.GetAsIso8601WithColonTimeSeparator();
                      time.GetAsIso8601Precise(9);
                      // With a sign in the fraction.
                      orvo::TimeValue(-1.5).GetAsIso8601Precise(9);
                      orvo::GetNowIso8601();
                      orvo::current_time();
                    })});
  cases->push_back({{{"orvo::MonotonicSystemClock_::", 2},
                     {"orvo::Deadline::", 3},
                     {"orvo::Sleep(", 1},
                     {"orvo::GmtimeSafe(", 1},
                     {"orvo::LocaltimeSafe(", 1}},
                    kNeverMatters,
                    Just([] {
                      orvo::MonotonicSystemClock_().GetNow();
                      using orvo::Deadline;
                      Deadline::After(std::chrono::seconds(1)).GetAsTimespec();
                      Deadline::At(std::chrono::steady_clock::now());
                      orvo::Sleep(0);
                      std::tm fields;
                      orvo::GmtimeSafe(0, &fields);
                      orvo::LocaltimeSafe(0, &fields);
                    })});
}

template <typename Number>
void ReadNumbers() {
  Number number = 0;
  if (!orvo::StringToNumber("  +00000000000000000000000000000000000012",
                            number) ||
      number != 12 || orvo::StringToNumber<Number>(kLong) != 0) {
    throw std::logic_error("read wrong");
  }
}

void AddNumbers(Cases* cases) {
  cases->push_back({{{"bool orvo::ReadCheckedInteger_<", 8},
                     {"void orvo::ReadInteger_<", 8},
                     {"bool orvo::StringToNumber<int>", 1},
                     {"int orvo::StringToNumber<int>", 1}},
                    kThrows,
                    Just([] {
                      ReadNumbers<short>();
                      ReadNumbers<unsigned short>();
                      ReadNumbers<int>();
                      ReadNumbers<unsigned>();
                      ReadNumbers<long>();
                      ReadNumbers<unsigned long>();
                      ReadNumbers<long long>();
                      ReadNumbers<unsigned long long>();
                    })});
  // Compiled by the caller.
  cases->push_back(
      {{{"orvo::StringToNumber<double>", 0}}, kStreamThrows, Just([] {
         double number = 0;
         if (!orvo::StringToNumber("1.5", number) || number != 1.5 ||
             orvo::StringToNumber<double>(" 2.5 ") != 2.5) {
           throw std::logic_error("read wrong");
         }
       })});
  cases->push_back({{{"orvo::ParseSigned_(", 1}, {"orvo::ParseUnsigned_(", 1}},
                    kNeverMatters,
                    Just([] {
                      orvo::ParseNumber<int>(kLong);
                      orvo::ParseNumber<unsigned long long>("12");
                    })});
  cases->push_back({{{"orvo::StringIs", 5}, {"orvo::endswith(", 1}},
                    kNeverMatters,
                    [](Attempt& attempt) {
                      std::string text = kLong;
                      attempt([&] {
                        orvo::StringIsAlpha(text);
                        orvo::StringIsAlphaNumeric(text);
                        orvo::StringIsDigits(text);
                        orvo::StringIsFloat(text);
                        orvo::StringIsInteger(text);
                        orvo::endswith(text, text);
                      });
                    }});
  cases->push_back({{{"unsigned short orvo::HexStringToNumber<", 1},
                     {"unsigned int orvo::HexStringToNumber<", 1},
                     {"unsigned long orvo::HexStringToNumber<", 1},
                     {"unsigned long long orvo::HexStringToNumber<", 1},
                     {"unsigned short orvo::reverse_byte_order", 1},
                     {"unsigned int orvo::reverse_byte_order", 2},
                     {"orvo::NodeT orvo::reverse_byte_order", 1},
                     {"orvo::hash(", 1}},
                    kNeverMatters,
                    Just([] {
                      orvo::HexStringToNumber<unsigned short>(kLong);
                      orvo::HexStringToNumber<unsigned>(kLong);
                      orvo::HexStringToNumber<unsigned long>(kLong);
                      orvo::HexStringToNumber<unsigned long long>(kLong);
                      std::uint16_t two = 1;
                      std::uint32_t four = 1;
                      orvo::NodeT six = {};
                      orvo::reverse_byte_order(two);
                      orvo::reverse_byte_order(four);
                      orvo::reverse_byte_order_const(four);
                      orvo::reverse_byte_order(six);
                      orvo::hash(kLong.data(), kLong.size());
                    })});
}

void AddStrings(Cases* cases) {
  cases->push_back({{{"std::string orvo::strip<", 1}, {"orvo::strip[", 1}},
                    kThrows,
                    Just([] {
                      orvo::strip(kLong);
                      orvo::strip(kLong.c_str());
                    })});
  cases->push_back(
      {{{"orvo::to_lower(", 1}}, kThrows, Just([] { orvo::to_lower(kLong); })});
  cases->push_back(
      {{{"orvo::to_upper(", 1}}, kThrows, Just([] { orvo::to_upper(kLong); })});
  cases->push_back(
      {{{"std::vector<std::string, std::allocator<std::string > > "
         "orvo::SplitString<char>",
         1},
        {"orvo::GetTokenSize_(", 1}},
       kThrows,
       Just([] { orvo::SplitString(kLong + "," + kLong, ',', -1); })});
  cases->push_back({{{"orvo::JoinString(", 1},
                     {"orvo::JoinArray_(", 1},
                     {"std::string orvo::JoinString<", 3}},
                    kThrows,
                    [](Attempt& attempt) {
                      std::vector<std::string> texts = {kLong, kLong};
                      const auto& constant = texts;
                      attempt([&] {
                        orvo::JoinString(texts, kLong);
                        orvo::JoinString(texts.begin(), texts.end(), ',');
                        orvo::JoinString(constant.begin(), constant.end(), ',');
                        const std::string* const first = texts.data();
                        orvo::JoinString(first, first + 2, ',');
                      });
                    }});
  cases->push_back(
      {{{"orvo::Tokenizer_::", 3},
        {"orvo::tokenize_string(", 2},
        {"std::deque<std::string, std::allocator<std::string > > "
         "orvo::tokenize_string<",
         3}},
       kThrows,
       [](Attempt& attempt) {
         std::vector<std::string> tokens = {"x", " "};
         const auto& constant = tokens;
         attempt([&] {
           orvo::tokenize_string("text", kLong);
           orvo::tokenize_string({"text", "x"}, kLong);
           orvo::tokenize_string(tokens.begin(), tokens.end(), kLong);
           orvo::tokenize_string(constant.begin(), constant.end(), kLong);
           const std::string* const first = tokens.data();
           orvo::tokenize_string(first, first + 2, kLong);
         });
       }});
  cases->push_back({{{"orvo::SingleLine::", 5}}, kThrows, [](Attempt& attempt) {
                      orvo::SingleLine line;
                      line.AddWord(kLong);
                      attempt([&] {
                        line.AddWord(kLong);
                        line.GetLine();
                      });
                      // With the second word or without it, not with half of
                      // it.
                      const int words = line.GetLine() == kLong ? 1 : 2;
                      const int width =
                          words * static_cast<int>(kLong.size()) + words - 1;
                      attempt.Check(line.GetLineLength() == width);
                      attempt.Check(line.PredictLength("x") == width + 2);
                      line.Reset();
                      attempt.Check(line.GetLineLength() == -1);
                    }});
  cases->push_back({{{"orvo::format_paragraph(", 1}}, kThrows, Just([] {
                      orvo::format_paragraph(kLong + " \n" + kLong, 4, 30);
                    })});
}

void AddNaturalOrder(Cases* cases) {
  static const std::string kNumbered = kLong + "12345" + kLong + "6";
  cases->push_back({{{"orvo::Chunk::Chunk(", 2},
                     {"orvo::Chunk::", 5},
                     {"orvo::NumericString::", 6}},
                    kThrows,
                    Just([] {
                      const orvo::Chunk text(kLong, false);
                      const orvo::Chunk number("12345678901234567890", 20,
                                               true);
                      const orvo::NumericString a(kNumbered);
                      const orvo::NumericString b(kNumbered);
                      if (text < number || number > text || a < b ||
                          !(a == b) || a.chunks()[1].value() != 12345 ||
                          a.chunks()[1].text() != "12345" ||
                          a.text() != kNumbered || !number.numeric() ||
                          static_cast<const std::string&>(a) != kNumbered) {
                        throw std::logic_error("compares wrong");
                      }
                    })});
  cases->push_back({{{"orvo::NumericStringCompare::", 2},
                     {"orvo::NaturalLess::operator()(", 1}},
                    kNeverMatters,
                    Just([] {
                      orvo::NumericStringCompare()(kNumbered, kLong);
                      orvo::NaturalLess()(kNumbered, kLong);
                    })});
  cases->push_back(
      {{{"operator<<(std::basic_ostream<char, std::char_traits<char> >&, "
         "orvo::NumericString",
         1}},
       kMayBeKept,
       [](Attempt& attempt) {
         const orvo::NumericString text(kLong);
         std::ostringstream stream;
         attempt([&] { stream << text; });
         attempt.Check(attempt.failures() != 0 ? stream.bad()
                                               : stream.str() == kLong);
       }});
}

void AddCharacters(Cases* cases) {
  cases->push_back({{{"orvo::create_ascii_chars[", 1}}, kThrows, Just([] {
                      orvo::create_ascii_chars();
                    })});
  cases->push_back(
      {{{"orvo::StrGen::", 15}}, kThrows, Just([] {
         for (std::string (*const make)() :
              {orvo::StrGen::alnum, orvo::StrGen::alpha,
               orvo::StrGen::ascii_chars, orvo::StrGen::cntrl,
               orvo::StrGen::digit, orvo::StrGen::graph, orvo::StrGen::lower,
               orvo::StrGen::lower_or_digit, orvo::StrGen::print,
               orvo::StrGen::punct, orvo::StrGen::space, orvo::StrGen::upper,
               orvo::StrGen::upper_or_digit, orvo::StrGen::xdigit}) {
           make();
         }
         const auto all = [](int) { return 1; };
         orvo::StrGen::subset(orvo::Pred(all));
       })});
  cases->push_back({{{"orvo::Pred::", 2},
                     {"orvo::StrGen::is_lower_or_digit(", 1},
                     {"orvo::StrGen::is_upper_or_digit(", 1}},
                    kNeverMatters,
                    Just([] {
                      const auto all = [](int) { return 1; };
                      orvo::Pred pred(all);
                      pred('x');
                      orvo::StrGen::is_lower_or_digit('x');
                      orvo::StrGen::is_upper_or_digit('x');
                    })});
}

void AddPaths(Cases* cases) {
  static const std::string kPath = "/" + kLong + "//" + kLong + ".extension";
  for (const auto& [prefix, cut] :
       std::vector<std::pair<std::string, std::string (*)(const std::string&)>>{
           {"orvo::path::basename(", orvo::path::basename},
           {"orvo::path::basename_no_ext(", orvo::path::basename_no_ext},
           {"orvo::path::dirname(", orvo::path::dirname},
       }) {
    cases->push_back(
        {{{prefix, 1}}, kThrows, Just([part = cut] { part(kPath); })});
  }
  cases->push_back({{{"orvo::path::extension(", 1}}, kThrows, Just([] {
                      orvo::path::extension("a." + kLong);
                    })});
  cases->push_back({{{"orvo::path::split(", 1}}, kThrows, Just([] {
                      orvo::path::split(kPath);
                      orvo::path::split(kLong);
                    })});
  cases->push_back({{{"orvo::path::splitext(", 1}}, kThrows, Just([] {
                      orvo::path::splitext(kPath);
                    })});
  cases->push_back({{{"orvo::path::split_to_vector(", 1}}, kThrows, Just([] {
                      orvo::path::split_to_vector(kPath);
                    })});
  cases->push_back({{{"orvo::path::relpath(", 1}}, kThrows, Just([] {
                      orvo::path::relpath(kPath, "/" + kLong);
                      orvo::path::relpath("other", kPath);
                      orvo::path::relpath("/" + kLong + "/" + kLong, "/other");
                    })});
  cases->push_back({{{"orvo::path::Join(", 2},
                     {"std::string orvo::path::Join<", 3},
                     {"orvo::path::CollapseSlashes_(", 1}},
                    kThrows,
                    [](Attempt& attempt) {
                      std::vector<std::string> parts = {kLong, "/" + kLong};
                      const auto& constant = parts;
                      attempt([&] {
                        orvo::path::Join(kLong + "/", "/" + kLong);
                        orvo::path::Join({kLong, "/" + kLong, kLong});
                        orvo::path::Join(parts.begin(), parts.end());
                        orvo::path::Join(constant.begin(), constant.end());
                        const std::string* const first = parts.data();
                        orvo::path::Join(first, first + 2);
                      });
                    }});
}

void AddFiles(Cases* cases) {
  const auto folder = std::make_shared<TemporaryFolder>();
  cases->push_back({{{"orvo::path::isdir(", 1}, {"orvo::path::isfile(", 1}},
                    kNeverMatters,
                    [folder](Attempt& attempt) {
                      attempt([&] {
                        orvo::path::isdir(folder->path());
                        orvo::path::isfile(folder->path());
                      });
                    }});
  cases->push_back({{{"orvo::path::MakeDirectory(", 1}},
                    kThrows,
                    [folder](Attempt& attempt) {
                      const std::string missing = *folder / "missing/a";
                      attempt([&] {
                        Expecting<orvo::path::PathError>(
                            [&] { orvo::path::MakeDirectory(missing); });
                      });
                      orvo::path::MakeDirectory(*folder / "made");
                    }});
  cases->push_back({{{"orvo::path::MakeDirectories(", 1}},
                    kThrows,
                    [folder](Attempt& attempt) {
                      const std::string path = *folder / "a/b/" + kLong;
                      attempt([&] { orvo::path::MakeDirectories(path); });
                      orvo::path::MakeDirectories(path);
                      attempt.Check(orvo::path::isdir(path));
                    }});
  WriteFile(*folder / kLong, "");
  WriteFile(*folder / (kLong + "2"), "");
  cases->push_back(
      {{{"orvo::path::entries(", 1}}, kMayBeKept, [folder](Attempt& attempt) {
         const int before = CountOpenDescriptors();
         std::vector<std::string> names;
         attempt([&] { names = orvo::path::entries(folder->path()); });
         attempt.Check(CountOpenDescriptors() == before);
         // The sort makes do without memory.
         attempt.Check(names.empty() == !attempt.returned());
         attempt.Check(std::is_sorted(names.begin(), names.end()));
       }});
  cases->push_back(
      {{{"orvo::listdir(", 1}}, kThrows, [folder](Attempt& attempt) {
         attempt([&] { orvo::listdir(folder->path()); });
       }});
}

void AddDiagnostics(Cases* cases) {
  cases->push_back(
      {{{"orvo::ThreadNames::", 3}}, kThrows, [](Attempt& attempt) {
         orvo::ThreadNames names;
         attempt([&] { names.SetNameOfCurrentThread(kLong); });
         const std::string name = attempt.returned() ? kLong : "Unnamed thread";
         attempt.Check(names.GetNameOfCurrentThread() == name);
         attempt.Check(names.GetThreadName(std::this_thread::get_id()) == name);
       }});
  cases->push_back(
      {{{"orvo::ThreadNames::Get", 2}}, kThrows, [](Attempt& attempt) {
         orvo::ThreadNames names;
         names.SetNameOfCurrentThread(kLong);
         attempt([&] {
           names.GetNameOfCurrentThread();
           names.GetThreadName(std::this_thread::get_id());
         });
         names.SetNameOfCurrentThread(kLong + kLong);
       }});
  cases->push_back(
      {{{"orvo::SetThreadExceptionLogPath(", 1}},
       kThrows,
       [](Attempt& attempt) {
         orvo::SetThreadExceptionLogPath("/dev/null");
         attempt([] { orvo::SetThreadExceptionLogPath("/dev/" + kLong); });
         orvo::SetThreadExceptionLogPath(std::string());
       }});
  cases->push_back({{{"orvo::LogException(", 1}}, kThrows, Just([] {
                      orvo::SetThreadExceptionLogPath("/dev/null");
                      orvo::LogException(kLong, kLong, 1);
                      orvo::SetThreadExceptionLogPath("/missing/log");
                      orvo::LogException(kLong, kLong, 1);
                    })});
  static const std::string kFrame =
      "1 image 0x00007fff5fbff000 _ZN4orvo13GetStackTraceB5cxx11Ei + 12";
  cases->push_back({{{"orvo::Demangle(", 1}}, kThrows, Just([] {
                      orvo::Demangle("_ZN4orvo13GetStackTraceB5cxx11Ei");
                      orvo::Demangle(kLong);
                    })});
  cases->push_back(
      {{{"orvo::FrameParts::", 12}}, kThrows, Just([] {
         orvo::FrameParts parts(kFrame);
         orvo::FrameParts copy(parts);
         copy = parts;
         orvo::FrameParts moved(std::move(copy));
         moved = orvo::FrameParts(kLong + kLong);
         if (!parts.GetSuccess() || moved.GetSuccess() ||
             parts.GetFrameNumber() != "0" || parts.GetImage() != "image" ||
             parts.GetAddress() != "0x00007fff5fbff000" ||
             parts.GetSymbol().empty() || parts.GetOffset() != "12") {
           throw std::logic_error("read wrong");
         }
       })});
  cases->push_back({{{"orvo::GetStackTrace[", 1}}, kThrows, Just([] {
                      orvo::GetStackTrace(20);
                    })});
  cases->push_back({{{"orvo::GetStackFrames(", 1}}, kThrows, Just([] {
                      orvo::GetStackFrames(20);
                    })});
  cases->push_back({{{"orvo::PrintStackTrace(", 1}}, kEnds, Just([] {
                      orvo::PrintStackTrace(20);
                    })});
}

void AddMidi(Cases* cases) {
  cases->push_back(
      {{{"orvo::midi::LookupBaseNoteIndex(", 1},
        {"orvo::midi::LookupOffset(", 1},
        {"orvo::midi::GetOctaveFromString(", 1},
        {"orvo::midi::GetNoteIndex(", 1},
        {"orvo::midi::Note::Note(std::string", 1}},
       kThrows,
       Just([] {
         using orvo::midi::InvalidNoteName;
         Expecting<InvalidNoteName>(
             [] { orvo::midi::LookupBaseNoteIndex(kLong); });
         Expecting<InvalidNoteName>([] { orvo::midi::LookupOffset(kLong); });
         Expecting<InvalidNoteName>(
             [] { orvo::midi::GetOctaveFromString(kLong); });
         Expecting<InvalidNoteName>(
             [] { orvo::midi::GetNoteIndex("C" + kLong); });
         Expecting<InvalidNoteName>([] { orvo::midi::Note("C" + kLong); });
       })});
  cases->push_back({{{"orvo::midi::GetSharpSpelling[", 1},
                     {"orvo::midi::GetFlatSpelling[", 1},
                     {"orvo::midi::GetNoteName[", 1},
                     {"orvo::midi::Note::", 5},
                     {"orvo::midi::ParseNote(", 1}},
                    kNeverMatters,
                    Just([] {
                      orvo::midi::GetSharpSpelling(255);
                      orvo::midi::GetFlatSpelling(255);
                      orvo::midi::GetNoteName(255);
                      const orvo::midi::Note note(255);
                      note.GetName();
                      note.GetEnharmonicName();
                      note.GetOctave();
                      note.GetIndex();
                      orvo::midi::ParseNote(kLong);
                      orvo::midi::ParseNote("C3");
                    })});
  cases->push_back({{{"orvo::midi::GetAllMidiNotes(", 1}}, kThrows, Just([] {
                      orvo::midi::GetAllMidiNotes();
                    })});
  cases->push_back({{{"orvo::midi::PrintAllMidiNotes(", 1}}, kThrows, Just([] {
                      orvo::midi::PrintAllMidiNotes();
                    })});
}

void AddId3(Cases* cases) {
  static const std::string kComment = Id3Comment(kLong, kLong + kLong);
  cases->push_back({{{"orvo::COMMFrame::", 9}}, kThrows, [](Attempt& attempt) {
                      std::istringstream stream(kComment);
                      std::istringstream other(Id3Frame("TIT2", kLong));
                      attempt([&] {
                        orvo::COMMFrame frame(stream);
                        orvo::COMMFrame copy(frame);
                        copy = frame;
                        orvo::COMMFrame moved(std::move(copy));
                        moved = std::move(frame);
                        moved.id_str();
                        Expecting<orvo::NotACOMM>(
                            [&] { orvo::COMMFrame{other}; });
                      });
                    }});
  cases->push_back({{{"orvo::ID3Header::", 5},
                     {"orvo::ExtendedHeader::", 2},
                     {"orvo::FrameHeader::", 3}},
                    kNeverMatters,
                    [](Attempt& attempt) {
                      std::istringstream stream(kComment + kComment);
                      attempt([&] {
                        orvo::FrameHeader frame(stream);
                        frame.id_str();
                        frame.size();
                        orvo::ExtendedHeader(stream).size();
                        const orvo::ID3Header header;
                        header.id_str();
                        header.get_size();
                        header.unsynchronisation();
                        header.extended_header();
                        header.experimental();
                      });
                    }});
  cases->push_back(
      {{{"orvo::get_comm[", 1}}, kThrows, [](Attempt& attempt) {
         std::istringstream stream(Id3Tag(Id3Frame("TIT2", kLong) +
                                          Id3Comment("", kLong, 1) + kComment));
         std::istringstream wrong(kLong);
         attempt([&] {
           orvo::get_comm(stream);
           Expecting<orvo::NoID3Found>([&] { orvo::get_comm(wrong); });
         });
       }});
}

void AddUuids(Cases* cases) {
  static const std::string kText = "12345678-9abc-def0-0123-456789abcdef";
  cases->push_back(
      {{{"orvo::UUID::", 12}}, kNeverMatters, [](Attempt& attempt) {
         std::istringstream stream(kText);
         attempt([&] {
           orvo::UUID uuid;
           const orvo::UUID read(stream, true);
           static const unsigned char kBytes[16] = {1};
           const orvo::UUID other(kBytes);
           uuid.bytes(kBytes);
           uuid.bytes_le(kBytes);
           uuid.change_endianness();
           if (uuid == other || uuid != other || uuid < other) {
             uuid = orvo::UUID(kText);
           }
           orvo::UUID::Parse(kText);
           std::ostream nowhere(nullptr);
           uuid.WriteBinary(nowhere, true);
         });
       }});
  cases->push_back({{{"orvo::UUID::uuid_string", 2}}, kThrows, Just([] {
                      orvo::UUID uuid;
                      uuid.uuid_string(" " + kText);
                      Expecting<std::out_of_range>(
                          [&] { uuid.uuid_string("1-2-3"); });
                      uuid.uuid_string();
                    })});
  cases->push_back(
      {{{"orvo::operator<<(std::basic_ostream<char, std::char_traits<char> >&, "
         "orvo::UUID",
         1}},
       kMayBeKept,
       [](Attempt& attempt) {
         std::ostringstream stream;
         attempt([&] { stream << orvo::UUID(); });
         attempt.Check(attempt.failures() == 0 || !attempt.returned() ||
                       stream.bad());
       }});
}

}  // namespace

std::vector<AllocationCase> ValueCases() {
  Cases cases;
  AddErrors(&cases);
  AddFormat(&cases);
  AddOutput(&cases);
  AddOperationLog(&cases);
  AddTime(&cases);
  AddNumbers(&cases);
  AddStrings(&cases);
  AddNaturalOrder(&cases);
  AddCharacters(&cases);
  AddPaths(&cases);
  AddFiles(&cases);
  AddDiagnostics(&cases);
  AddMidi(&cases);
  AddId3(&cases);
  AddUuids(&cases);
  return cases;
}

}  // namespace orvo_test

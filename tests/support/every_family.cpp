#include "tests/support/every_family.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "orvo/orvo.h"

namespace orvo_test {
namespace {

// Keeps the first wrong answer.
class Answers {
 public:
  void Expect(bool good, const char* what) {
    if (!good && wrong_.empty()) wrong_ = what;
  }
  const std::string& wrong() const { return wrong_; }

 private:
  std::string wrong_;
};

void UseTexts(Answers& answers) {
  answers.Expect(orvo::format("%s %d", "seven", 7) == "seven 7", "format()");
  answers.Expect(orvo::errmsg(ENOENT).find("No such file") == 0, "errmsg()");
  std::string text = orvo::to_upper(orvo::strip("  text "));
  answers.Expect(*Concatenate(&text, "!") == "TEXT!", "Concatenate()");
  answers.Expect(FastFormatter<10>("%d", 42) == "42", "FastFormatter()");
  answers.Expect(
      orvo::JoinString(orvo::SplitString("a,b,c", ',', -1), "-") == "a-b-c",
      "SplitString() and JoinString()");
  answers.Expect(orvo::tokenize_string({"(", ")"}, "f(x)").size() > 2,
                 "tokenize_string()");
  answers.Expect(orvo::StringToNumber<int>("12") == 12, "StringToNumber()");
  answers.Expect(orvo::NumericStringCompare()("file9", "file10"),
                 "NumericStringCompare");
  answers.Expect(orvo::NumericString("file9") < orvo::NumericString("file10"),
                 "NumericString");
  answers.Expect(!orvo::format_paragraph("one two three", 0, 8).empty(),
                 "format_paragraph()");
  answers.Expect(orvo::StrGen::digit() == "0123456789", "StrGen");
}

void UseOutput(Answers& answers) {
  orvo::CoutBuffer() << "number " << 7 << orvo::endl;
  orvo::LogAttempt("file.cpp", 7, "to write");
  orvo::LogSuccess("file.cpp", 7, "to write");
  answers.Expect(
      !orvo::CreateFailureMessage("file.cpp", 7, "to write", "none").empty(),
      "CreateFailureMessage()");
  orvo::LogException("an exception", "file.cpp", 7);
}

template <typename Handle>
void UseLock(Handle lock, Answers& answers) {
  { const orvo::DebugScopeLock scope(lock, "UseLock", "file.cpp", 7); }
  orvo::Condition condition;
  {
    const orvo::ScopeLock scope(lock);
    answers.Expect(!condition.TimedWaitWhileLocked(lock, 0),
                   "TimedWaitWhileLocked()");
    answers.Expect(!condition.WaitFor(lock, std::chrono::microseconds(10)),
                   "WaitFor()");
  }
  condition.Signal(lock);
  condition.Broadcast(lock);
  answers.Expect(lock.TimedLock(0), "TimedLock()");
  lock.unlock();
  answers.Expect(lock.TryLockFor(std::chrono::seconds(1)), "TryLockFor()");
  lock.unlock();
  answers.Expect(lock.try_lock(), "try_lock()");
  lock.unlock();
}

void MisuseLock(Answers& answers) {
  orvo::DebugLock lock("misused");
  try {
    lock.unlock();
    answers.Expect(false, "unlock() of a free lock");
  } catch (const orvo::LockError& error) {
    answers.Expect(
        error.what() == orvo::threadNames.GetNameOfCurrentThread() +
                            " tried to release lock misused without first "
                            "acquiring it.",
        "LockError");
  }
}

void UseTime(Answers& answers) {
  const orvo::TimeValue now = orvo::TimeValue::GetNow();
  answers.Expect(now <= orvo::TimeValue::GetNow(), "GetNow()");
  answers.Expect(
      orvo::TimeValue(1.5).GetAsIso8601Precise(3) == "1970-01-01T00-00-01.500Z",
      "GetAsIso8601Precise()");
  answers.Expect(orvo::current_time().size() == 25, "current_time()");
  answers.Expect(orvo::GetNowIso8601().size() == 20, "GetNowIso8601()");
  orvo::Sleep(0);
}

void UsePaths(const std::string& folder, Answers& answers) {
  namespace path = orvo::path;
  const std::string deep = path::Join(folder, "a/b");
  path::MakeDirectories(deep);
  answers.Expect(path::isdir(deep) && !path::isfile(deep), "isdir()");
  answers.Expect(
      path::entries(path::dirname(deep)) == std::vector<std::string>{"b"},
      "entries()");
  answers.Expect(path::relpath(deep, folder) == "a/b", "relpath()");
  try {
    path::MakeDirectory(folder + "/missing/c");
    answers.Expect(false, "MakeDirectory() in a missing folder");
  } catch (const path::PathError&) {
    // As it should be.
  }
}

void UseThreads(Answers& answers) {
  std::string name;
  std::thread([&name] {
    orvo::threadNames.SetNameOfCurrentThread("guest");
    name = orvo::threadNames.GetNameOfCurrentThread();
  }).join();
  answers.Expect(name == "guest", "threadNames");
  answers.Expect(orvo::GetStackTrace(5).size() > 1, "GetStackTrace()");
  answers.Expect(
      orvo::Demangle("_ZN4orvo5SleepEj") == "orvo::Sleep(unsigned int)",
      "Demangle()");
  orvo::PrintStackTrace(2);
}

void UseBinaryData(Answers& answers) {
  answers.Expect(orvo::midi::Note("C4").GetName() == "C4", "Note");
  answers.Expect(orvo::midi::GetAllMidiNotes().size() == 128,
                 "GetAllMidiNotes()");
  answers.Expect(
      orvo::reverse_byte_order_const(std::uint32_t{0x01020304}) == 0x04030201,
      "reverse_byte_order_const()");
  answers.Expect(orvo::HexStringToNumber<unsigned>("ff") == 255,
                 "HexStringToNumber()");
  const std::string text = "12345678-9abc-def0-0123-456789abcdef";
  answers.Expect(orvo::UUID(text).uuid_string() == text, "UUID");
  // A tag of one comment frame: "text" in English, without a description.
  std::istringstream tag(std::string("ID3\3\0\0\0\0\0\x13", 10) +
                         std::string("COMM\0\0\0\x9\0\0\0eng\0text", 19));
  answers.Expect(orvo::get_comm(tag) == "text", "get_comm()");
}

}  // namespace

std::string UseEveryFamily(const std::string& folder) {
  Answers answers;
  UseTexts(answers);
  UseOutput(answers);
  UseLock(orvo::Lock("plain"), answers);
  UseLock(orvo::RLock("recursive"), answers);
  UseLock(orvo::DebugLock("debug"), answers);
  UseLock(orvo::DebugRLock("recursive debug"), answers);
  MisuseLock(answers);
  UseTime(answers);
  UsePaths(folder, answers);
  UseThreads(answers);
  UseBinaryData(answers);
  return answers.wrong();
}

}  // namespace orvo_test

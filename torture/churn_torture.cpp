// Many short threads, each with a name and a visit to the debug locks: the
// books may grow with the threads that live at once, not with those that ever
// lived.
//
//   churn_torture [--threads=N] [--twin=keeps_threads]
//
// --twin=keeps_threads leaves threads behind, which is a fault to be found.
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "orvo/debug_locks.h"
#include "orvo/scope_lock.h"
#include "orvo/thread_names.h"
#include "torture/support.h"

namespace {

using orvo_torture::Faults;
using orvo_torture::Options;

constexpr long kBatch = 50;
constexpr long kMebibyte = 1024 * 1024;

class Churn {
 public:
  // Threads of these numbers, all at once.
  void RunBatch(long first) {
    std::vector<std::thread> threads;
    std::vector<std::thread::id> ids;
    for (long number = first; number < first + kBatch; ++number) {
      threads.emplace_back([this, number] { Visit(number); });
    }
    for (const std::thread& thread : threads) ids.push_back(thread.get_id());
    for (std::thread& thread : threads) thread.join();
    CheckNames(first, ids);
  }

  Faults& faults() { return faults_; }
  long visits() const { return visits_; }

 private:
  static std::string NameOf(long number) {
    return "thread " + std::to_string(number);
  }

  void Visit(long number) {
    const std::string name = NameOf(number);
    orvo::threadNames.SetNameOfCurrentThread(name);
    faults_.Check(orvo::threadNames.GetNameOfCurrentThread() == name,
                  "a thread has its name");
    const orvo::DebugScopeLock scope(lock_, "Visit", "churn.cpp", 1);
    const orvo::DebugScopeLock inner(rlock_, "Visit", "churn.cpp", 2);
    faults_.Check(lock_.GetOwnerName() == name && rlock_.GetOwnerName() == name,
                  "the books name the holder");
    ++visits_;
  }

  // An ended thread keeps its name until another one gets its id.
  void CheckNames(long first, const std::vector<std::thread::id>& ids) {
    for (std::size_t i = 0; i < ids.size(); ++i) {
      bool last = true;
      for (std::size_t j = i + 1; j < ids.size(); ++j) {
        if (ids[j] == ids[i]) last = false;
      }
      const std::string name = orvo::threadNames.GetThreadName(ids[i]);
      faults_.Check(!last || name == NameOf(first + static_cast<long>(i)),
                    "an ended thread keeps its name");
    }
  }

  orvo::DebugLock lock_{"plain"};
  orvo::DebugRLock rlock_{"recursive"};
  long visits_ = 0;  // guarded by lock_
  Faults faults_;
};

// They live until the end of the process.
void KeepThreads() {
  for (int i = 0; i < 3; ++i) {
    std::thread([] {
      orvo::threadNames.SetNameOfCurrentThread("kept");
      for (;;) std::this_thread::sleep_for(std::chrono::hours(1));
    }).detach();
  }
}

}  // namespace

int main(int argc, char** argv) {
  const Options options(argc, argv);
  const orvo_torture::Stopwatch watch;
  const long goal = options.Number("threads", 10000);
  const bool keep = options.Text("twin") == "keeps_threads";
  Churn churn;
  long warm = 0;
  for (long number = 0; number < goal; number += kBatch) {
    churn.RunBatch(number);
    if (keep) KeepThreads();
    if (warm == 0 && number >= goal / 5) warm = orvo_torture::ResidentBytes();
  }
  const long growth = orvo_torture::ResidentBytes() - warm;
  churn.faults().Check(growth <= kMebibyte, "the memory stays flat");
  orvo_torture::Report("churn",
                       std::to_string(churn.visits()) +
                           " named threads, memory grew by " +
                           std::to_string(growth / 1024) + " KiB",
                       churn.faults(), watch);
  return orvo_torture::ExitStatus();
}

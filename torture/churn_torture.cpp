// Many short threads, each with a name and a visit to the debug locks: the
// books may grow with the threads that live at once, not with those that ever
// lived.
//
//   churn_torture [--threads=N] [--any-growth] [--limit=SECONDS]
//                 [--twin=NAME]
//
// --any-growth is for sanitizers, which need memory of their own.
// The twins are faults to be found: keeps_threads leaves threads behind,
// keeps_entries loses the smallest entry of a book with each thread.
#include <atomic>
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
// Less than any entry of a book takes, more than the heap wanders by.
constexpr long kBytesPerThread = 16;

class Churn {
 public:
  explicit Churn(bool keep_entries) : keep_entries_(keep_entries) {}

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
    if (keep_entries_) lost_ = new char[kSmallestEntry];
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

  // A node of a tree without any value.
  static constexpr std::size_t kSmallestEntry = 32;

  const bool keep_entries_;
  std::atomic<char*> lost_{nullptr};
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
  const orvo_torture::TimeLimit limit(options.Number("limit", 600),
                                      "the short threads");
  const orvo_torture::Stopwatch watch;
  const long goal = options.Number("threads", 10000);
  const std::string twin = options.Text("twin");
  Churn churn(twin == "keeps_entries");
  long warm = 0;
  long visits_when_warm = 0;
  for (long number = 0; number < goal; number += kBatch) {
    churn.RunBatch(number);
    if (twin == "keeps_threads") KeepThreads();
    if (warm == 0 && number >= goal / 5) {
      warm = orvo_torture::ResidentBytes();
      visits_when_warm = churn.visits();
    }
  }
  const long growth = orvo_torture::ResidentBytes() - warm;
  const long allowed = kBytesPerThread * (churn.visits() - visits_when_warm);
  churn.faults().Check(options.Has("any-growth") || growth <= allowed,
                       "the memory stays flat");
  orvo_torture::Report("churn",
                       std::to_string(churn.visits()) +
                           " named threads, memory grew by " +
                           std::to_string(growth / 1024) + " KiB",
                       churn.faults(), watch);
  return orvo_torture::ExitStatus();
}

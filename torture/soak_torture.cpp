// Uses all families from several threads for as long as it is told: the memory
// has to stay flat, and the open descriptors as well, except for the one that
// each listdir() keeps.
//
//   soak_torture [--seconds=N] [--any-growth] [--limit=SECONDS]
//                [--twin=NAME]
//
// --limit is for what comes after the seconds.
// --any-growth is for sanitizers, which need memory of their own.
// The twins are faults to be found: leaks_memory loses four kilobytes in each
// round, leaks_descriptors opens a file now and then.
#include <fcntl.h>
#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include "orvo/exception_log.h"
#include "orvo/path.h"
#include "orvo/thread_names.h"
#include "orvo/thread_safe_ostream.h"
#include "tests/support/every_family.h"
#include "torture/support.h"

namespace {

using orvo_torture::Faults;
using orvo_torture::Options;

constexpr int kThreads = 4;
constexpr int kListings = 8;  // each keeps a buffer of the system's, too
constexpr long kMebibyte = 1024 * 1024;

// Without the ones that somebody opens just for now.
long LastingDescriptors() {
  long least = orvo_torture::OpenDescriptors();
  for (int i = 0; i < 100; ++i) {
    least = std::min(least, orvo_torture::OpenDescriptors());
  }
  return least;
}

class Soak {
 public:
  Soak(double seconds, const std::string& twin)
      : seconds_(seconds), twin_(twin) {}

  void Run() {
    orvo::RedirectCout("/dev/null");
    orvo::SetThreadExceptionLogPath("/dev/null");
    orvo_torture::InThreads(kThreads + 1, [this](int player) {
      if (player == 0) {
        Observe();
        over_ = true;
      } else {
        UseAll(player);
      }
    });
  }

  void Report(bool any_growth) {
    faults_.Check(any_growth || growth_ <= kMebibyte, "the memory stays flat");
    faults_.Check(descriptors_ == listings_,
                  "nothing but listdir() keeps descriptors");
    orvo_torture::Report(
        "soak",
        std::to_string(rounds_) + " rounds of all families, memory grew by " +
            std::to_string(growth_ / 1024) + " KiB, descriptors by " +
            std::to_string(descriptors_) + " in " + std::to_string(listings_) +
            " listings",
        faults_, watch_);
  }

 private:
  void UseAll(int player) {
    const std::string name = "soak " + std::to_string(player);
    orvo::threadNames.SetNameOfCurrentThread(name);
    const orvo_torture::Folder folder;
    while (!over_) {
      const std::string wrong = orvo_test::UseEveryFamily(folder / name);
      if (!wrong.empty()) faults_.Add(wrong);
      if (twin_ == "leaks_memory") lost_ = new char[4096];
      ++rounds_;
    }
  }

  // The first fifth of the time warms up: everybody's stacks, buffers and books
  // reach their size.
  void Observe() {
    SleepUntil(seconds_ / 5);
    const long descriptors = LastingDescriptors();
    const long resident = orvo_torture::ResidentBytes();
    for (listings_ = 0; listings_ < kListings; ++listings_) {
      orvo::listdir("/proc/self/task");
      if (twin_ == "leaks_descriptors") open("/dev/null", O_RDONLY | O_CLOEXEC);
      SleepUntil(seconds_ * (2 + listings_) / (2 + kListings));
      growth_ = std::max(growth_, orvo_torture::ResidentBytes() - resident);
    }
    SleepUntil(seconds_);
    growth_ = std::max(growth_, orvo_torture::ResidentBytes() - resident);
    descriptors_ = LastingDescriptors() - descriptors;
  }

  void SleepUntil(double seconds) const {
    std::this_thread::sleep_for(
        std::chrono::duration<double>(seconds - watch_.Seconds()));
  }

  const double seconds_;
  const std::string twin_;
  const orvo_torture::Stopwatch watch_;
  Faults faults_;
  std::atomic<bool> over_{false};
  std::atomic<long> rounds_{0};
  std::atomic<char*> lost_{nullptr};
  long growth_ = 0;
  long descriptors_ = 0;
  int listings_ = 0;
};

}  // namespace

int main(int argc, char** argv) {
  const Options options(argc, argv);
  const long seconds = options.Number("seconds", 10);
  const orvo_torture::TimeLimit limit(seconds + options.Number("limit", 600),
                                      "the rounds of all families");
  // Threads come and go; as many heaps as there are at once would wander.
  mallopt(M_ARENA_MAX, 2);
  Soak soak(static_cast<double>(seconds), options.Text("twin"));
  soak.Run();
  soak.Report(options.Has("any-growth"));
  return orvo_torture::ExitStatus();
}

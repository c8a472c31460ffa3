#include "torture/support.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <vector>

namespace orvo_torture {
namespace {

int exitStatus = 0;

void Ignore(int) {}

// Without SA_RESTART each tick interrupts the system call it meets.
void StartTicks() {
  struct sigaction action {};
  action.sa_handler = Ignore;
  sigaction(SIGALRM, &action, nullptr);
  const itimerval millisecond{{0, 1000}, {0, 1000}};
  setitimer(ITIMER_REAL, &millisecond, nullptr);
}

void EndWithParent(pid_t parent) {
  if (prctl(PR_SET_PDEATHSIG, SIGKILL) != 0) Fail("prctl");
  // It may have ended before.
  if (getppid() != parent) std::_Exit(2);
}

}  // namespace

Options::Options(int argc, char** argv) : arguments_(argv + 1, argv + argc) {
  if (Has("ticks")) StartTicks();
}

std::string Options::Text(const std::string& name) const {
  const std::string prefix = "--" + name + "=";
  for (const std::string& argument : arguments_) {
    if (argument.compare(0, prefix.size(), prefix) == 0) {
      return argument.substr(prefix.size());
    }
  }
  return std::string();
}

long Options::Number(const std::string& name, long otherwise) const {
  const std::string text = Text(name);
  return text.empty() ? otherwise : std::stol(text);
}

bool Options::Has(const std::string& name) const {
  return arguments_.count("--" + name) != 0;
}

void Faults::Add(const std::string& what) {
  ++count_;
  const std::lock_guard<std::mutex> guard(mutex_);
  if (shown_.size() < 10 && shown_.insert(what).second) {
    std::fprintf(stderr, "fault: %s\n", what.c_str());
  }
}

TimeLimit::TimeLimit(long seconds, const char* what)
    : thread_([this, seconds, what] {
        // Signals are for those who work.
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_BLOCK, &all, nullptr);
        std::unique_lock<std::mutex> guard(mutex_);
        if (changed_.wait_for(guard, std::chrono::seconds(seconds),
                              [this] { return over_; })) {
          return;
        }
        std::fprintf(stderr, "fault: not done after %ld s: %s\n", seconds,
                     what);
        std::_Exit(1);
      }) {}

TimeLimit::~TimeLimit() {
  {
    const std::lock_guard<std::mutex> guard(mutex_);
    over_ = true;
  }
  changed_.notify_all();
  thread_.join();
}

void Fail(const char* what) {
  std::perror(what);
  std::_Exit(2);
}

void InThreads(int count, const std::function<void(int)>& function) {
  std::mutex mutex;
  std::condition_variable changed;
  bool go = false;  // guarded by mutex
  std::vector<std::thread> threads;
  for (int i = 0; i < count; ++i) {
    threads.emplace_back([&, i] {
      {
        std::unique_lock<std::mutex> guard(mutex);
        changed.wait(guard, [&] { return go; });
      }
      function(i);
    });
  }
  {
    const std::lock_guard<std::mutex> guard(mutex);
    go = true;
  }
  changed.notify_all();
  for (std::thread& thread : threads) thread.join();
}

// The finaliser of splitmix64.
std::uint64_t Scatter(std::uint64_t a, std::uint64_t b, std::uint64_t c) {
  std::uint64_t x =
      (a + 1) * 0x9E3779B97F4A7C15u ^ (b + 1) * 0xD1B54A32D192ED03u ^ c;
  x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9u;
  x = (x ^ (x >> 27)) * 0x94D049BB133111EBu;
  return x ^ (x >> 31);
}

pid_t StartChild(int standard_output, const std::function<void()>& function) {
  std::fflush(stdout);
  const pid_t parent = getpid();
  const pid_t child = fork();
  if (child < 0) Fail("fork");
  if (child == 0) {
    EndWithParent(parent);
    if (standard_output >= 0 && dup2(standard_output, STDOUT_FILENO) < 0) {
      Fail("dup2");
    }
    function();
    std::exit(0);
  }
  return child;
}

bool EndsWell(pid_t child) {
  int status = -1;
  while (waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) return false;
  }
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

Folder::Folder() {
  std::string path = std::filesystem::temp_directory_path() / "orvo.XXXXXX";
  if (mkdtemp(path.data()) == nullptr) Fail("mkdtemp");
  path_ = path;
}

Folder::~Folder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::string Folder::operator/(const std::string& name) const {
  return path_ + "/" + name;
}

long ResidentBytes() {
  std::ifstream statm("/proc/self/statm");
  long total = 0;
  long resident = 0;
  statm >> total >> resident;
  return resident * sysconf(_SC_PAGESIZE);
}

long OpenDescriptors() {
  // One of them reads the folder.
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                       std::filesystem::directory_iterator()) -
         1;
}

void Report(const std::string& check, const std::string& details,
            const Faults& faults, const Stopwatch& watch) {
  std::printf("%s: %s, %ld faults, %.1f s\n", check.c_str(), details.c_str(),
              faults.count(), watch.Seconds());
  std::fflush(stdout);
  if (faults.count() != 0) exitStatus = 1;
}

int ExitStatus() {
  return exitStatus;
}

}  // namespace orvo_torture

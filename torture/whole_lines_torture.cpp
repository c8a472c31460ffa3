// Many threads write messages, and each has to arrive whole, once and in the
// order of its thread: in a file, through a pipe and after a redirection.
//
//   whole_lines_torture [--threads=N] [--messages=N] [--limit=SECONDS]
//                       [--twin=pieces]
//
// --twin=pieces writes each message to std::cout in pieces, which is a fault
// to be found.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include "orvo/thread_safe_ostream.h"
#include "torture/support.h"

namespace {

using orvo_torture::Faults;
using orvo_torture::InThreads;
using orvo_torture::Options;
using orvo_torture::Scatter;

struct Size {
  int threads;
  int messages;  // of each thread
};

// What follows the numbers of a message: mostly short, seldom longer than the
// buffers of the stream and of a pipe.
std::string Filler(int thread, int message) {
  const std::uint64_t number = Scatter(static_cast<std::uint64_t>(thread),
                                       static_cast<std::uint64_t>(message));
  const std::uint64_t length = number % 2048 == 0  ? 70000
                               : number % 128 == 0 ? 5000
                                                   : number % 60;
  return std::string(length, static_cast<char>('a' + number / 7 % 26));
}

// Some messages have two lines, which must stay together.
bool HasSecondLine(int message) {
  return message % 8 == 0;
}

void WriteMessage(int thread, int message) {
  orvo::CoutBuffer text;
  text << thread << " " << message << " " << Filler(thread, message)
       << orvo::endl;
  if (HasSecondLine(message)) {
    text << "of " << thread << " " << message << orvo::endl;
  }
}

void WriteInPieces(int thread, int message) {
  std::cout << thread << " " << message << " " << Filler(thread, message)
            << std::endl;
  if (HasSecondLine(message)) {
    std::cout << "of " << thread << " " << message << std::endl;
  }
}

// Counts the messages in a text that comes in blocks.
class Checker {
 public:
  explicit Checker(const Size& size)
      : size_(size), next_(static_cast<std::size_t>(size.threads), 0) {}

  void Add(std::string_view block) {
    for (;;) {
      const std::size_t end = block.find('\n');
      line_.append(block.substr(0, end));
      if (end == std::string_view::npos) return;
      AddLine(line_);
      line_.clear();
      block.remove_prefix(end + 1);
    }
  }

  void Finish(Faults& faults) {
    if (!line_.empty() || !second_line_.empty()) ++torn_;
    for (const int next : next_) lost_ += size_.messages - next;
    faults.Check(torn_ == 0, "no message is torn");
    faults.Check(lost_ == 0, "no message is lost");
    faults.Check(repeated_ == 0, "no message comes twice");
    faults.Check(disordered_ == 0, "the messages of a thread keep their order");
  }

  std::string Summary() const {
    return std::to_string(whole_) + " whole, " + std::to_string(torn_) +
           " torn, " + std::to_string(lost_) + " lost, " +
           std::to_string(repeated_) + " repeated, " +
           std::to_string(disordered_) + " out of order";
  }

 private:
  void AddLine(const std::string& line) {
    if (!second_line_.empty()) {
      if (line != second_line_) ++torn_;
      second_line_.clear();
      if (line.compare(0, 3, "of ") == 0) return;
    }
    int thread = -1;
    int message = -1;
    if (std::sscanf(line.c_str(), "%d %d ", &thread, &message) != 2 ||
        thread < 0 || thread >= size_.threads || message < 0 ||
        message >= size_.messages ||
        line != std::to_string(thread) + " " + std::to_string(message) + " " +
                    Filler(thread, message)) {
      ++torn_;
      return;
    }
    Count(thread, message);
  }

  void Count(int thread, int message) {
    ++whole_;
    int& next = next_[static_cast<std::size_t>(thread)];
    if (message < next) ++repeated_;
    if (message > next) {
      ++disordered_;
      lost_ += message - next;
    }
    if (message >= next) next = message + 1;
    if (HasSecondLine(message)) {
      second_line_ =
          "of " + std::to_string(thread) + " " + std::to_string(message);
    }
  }

  Size size_;
  std::string line_;         // as far as it has come
  std::string second_line_;  // the one that has to follow, or empty
  std::vector<int> next_;    // message of each thread
  long whole_ = 0;
  long torn_ = 0;
  long lost_ = 0;
  long repeated_ = 0;
  long disordered_ = 0;
};

void ReadAll(int descriptor, Checker& checker) {
  std::vector<char> block(1 << 16);
  for (;;) {
    const ssize_t size = read(descriptor, block.data(), block.size());
    if (size > 0) {
      checker.Add({block.data(), static_cast<std::size_t>(size)});
    } else if (size == 0 || errno != EINTR) {
      return;
    }
  }
}

using Writer = void (*)(int thread, int message);

void WriteAll(const Size& size, Writer write) {
  InThreads(size.threads, [&](int thread) {
    for (int message = 0; message < size.messages; ++message) {
      write(thread, message);
    }
  });
}

enum class Way {
  kFile,
  kPipe,
  kRedirection
};

void Torture(Way way, const Size& size, Writer write, long seconds) {
  const orvo_torture::Stopwatch watch;
  const orvo_torture::Folder folder;
  const std::string path = folder / "output";
  int ends[2] = {-1, -1};
  if (way == Way::kPipe) {
    if (pipe2(ends, O_CLOEXEC) != 0) orvo_torture::Fail("pipe2");
  } else {
    ends[1] = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
    ends[0] = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (ends[0] < 0 || ends[1] < 0) orvo_torture::Fail("open");
  }
  const int output = way == Way::kRedirection ? -1 : ends[1];
  const pid_t child = orvo_torture::StartChild(output, [&] {
    close(ends[1]);
    if (way == Way::kRedirection) orvo::RedirectCout(path);
    WriteAll(size, write);
  });
  close(ends[1]);
  // A thread of its own, which must not be there at a fork.
  const orvo_torture::TimeLimit limit(seconds, "the messages");

  Faults faults;
  Checker checker(size);
  if (way == Way::kPipe) ReadAll(ends[0], checker);
  faults.Check(orvo_torture::EndsWell(child), "the writer ends well");
  if (way != Way::kPipe) ReadAll(ends[0], checker);
  close(ends[0]);
  checker.Finish(faults);

  const char* const names[] = {"file", "pipe", "redirection"};
  orvo_torture::Report(
      std::string("whole lines, ") + names[static_cast<int>(way)],
      std::to_string(size.threads) + " threads x " +
          std::to_string(size.messages) + " messages, " + checker.Summary(),
      faults, watch);
}

}  // namespace

int main(int argc, char** argv) {
  const Options options(argc, argv);
  const Size size{static_cast<int>(options.Number("threads", 64)),
                  static_cast<int>(options.Number("messages", 1000))};
  const Writer write =
      options.Text("twin") == "pieces" ? WriteInPieces : WriteMessage;
  for (const Way way : {Way::kFile, Way::kPipe, Way::kRedirection}) {
    Torture(way, size, write, options.Number("limit", 600));
  }
  return orvo_torture::ExitStatus();
}

// Three threads report at once; no line of theirs is ever torn.
#include <iostream>
#include <string>
#include <thread>
#include <vector>

#include "orvo/strings.h"
#include "orvo/thread_safe_ostream.h"

namespace {

void Work(int worker) {
  for (int job = 1; job <= 100; ++job) {
    orvo::CoutBuffer() << "worker " << worker << " did job " << job
                       << orvo::endl;
  }
}

// What the threads print, kept from the screen.
std::string CaptureThreads() {
  const orvo::ScopedCoutCapture capture;
  std::vector<std::thread> threads;
  for (int worker = 1; worker <= 3; ++worker)
    threads.emplace_back(Work, worker);
  for (std::thread& thread : threads) thread.join();
  return capture.Text();
}

bool IsWhole(const std::string& line) {
  const std::vector<std::string> words = orvo::SplitString(line, ' ', -1);
  return words.size() == 5 && words[0] == "worker" && words[3] == "job" &&
         orvo::ParseNumber<int>(words[4]);
}

}  // namespace

int main() {
  std::vector<std::string> lines =
      orvo::SplitString(CaptureThreads(), '\n', -1);
  lines.pop_back();  // what follows the last line feed: nothing
  int torn = 0;
  for (const std::string& line : lines) torn += IsWhole(line) ? 0 : 1;
  std::cout << lines.size() << " lines, " << torn << " of them torn\n";
}

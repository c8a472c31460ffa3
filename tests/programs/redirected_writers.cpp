// redirected_writers FILE THREADS MESSAGES: redirects the standard output and
// writes MESSAGES lines from each of THREADS threads, or with 0 threads one
// plain and one buffered line.
#include <cstdlib>
#include <iostream>
#include <thread>
#include <vector>

#include "orvo/thread_safe_ostream.h"

int main(int, char** argv) {
  const int thread_count = std::atoi(argv[2]);
  const int messages = std::atoi(argv[3]);
  orvo::RedirectCout(argv[1]);
  if (thread_count == 0) {
    std::cout << "plain\n";
    orvo::CoutBuffer() << "buffered" << orvo::endl;
  }
  std::vector<std::thread> threads;
  for (int i = 0; i < thread_count; ++i) {
    threads.emplace_back([i, messages] {
      for (int j = 0; j < messages; ++j) {
        orvo::CoutBuffer() << "thread " << i << " message " << j << orvo::endl;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

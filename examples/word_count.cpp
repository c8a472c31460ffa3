// Counts lines, words and bytes of files, a thread for each file.
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "orvo/format.h"
#include "orvo/lock.h"
#include "orvo/operation_log.h"

namespace {

struct Counts {
  long lines = 0;
  long words = 0;
  long bytes = 0;
};

struct Totals {
  orvo::Lock lock{"totals"};
  Counts counts;        // guarded by lock
  bool failed = false;  // guarded by lock
};

void Count(const char* text, std::streamsize size, bool* in_word,
           Counts* counts) {
  counts->bytes += size;
  for (const char* c = text; c != text + size; ++c) {
    const bool is_space = std::isspace(static_cast<unsigned char>(*c)) != 0;
    counts->lines += *c == '\n' ? 1 : 0;
    counts->words += !is_space && !*in_word ? 1 : 0;
    *in_word = !is_space;
  }
}

Counts CountFile(const std::string& path) {
  errno = 0;
  std::ifstream file(path, std::ios_base::binary);
  Counts counts;
  bool in_word = false;
  char part[65536];
  while (file.read(part, sizeof part), file.gcount() > 0) {
    Count(part, file.gcount(), &in_word, &counts);
  }
  if (!file.is_open() || file.bad()) {
    throw std::runtime_error(orvo::errmsg(errno).c_str());
  }
  return counts;
}

void CountInThread(const std::string& path, std::optional<Counts>* counts,
                   Totals* totals) {
  const std::string what = "count " + path;
  orvo::LogAttempt(__FILE__, __LINE__, what);
  try {
    *counts = CountFile(path);
    orvo::LogSuccess(__FILE__, __LINE__, what);
    const std::lock_guard<orvo::Lock> guard(totals->lock);
    totals->counts.lines += (*counts)->lines;
    totals->counts.words += (*counts)->words;
    totals->counts.bytes += (*counts)->bytes;
  } catch (const std::exception& error) {
    std::cerr << orvo::CreateFailureMessage(__FILE__, __LINE__, what,
                                            error.what()) +
                     "\n";
    const std::lock_guard<orvo::Lock> guard(totals->lock);
    totals->failed = true;
  }
}

void PrintRow(const Counts& counts, const std::string& name) {
  std::cout << orvo::format("%9ld %9ld %11ld  %s\n", counts.lines, counts.words,
                            counts.bytes, name.c_str());
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::cerr << "usage: word_count FILE...\n";
    return 2;
  }
  const std::vector<std::string> paths(argv + 1, argv + argc);
  std::vector<std::optional<Counts>> counts(paths.size());
  Totals totals;

  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < paths.size(); ++i) {
    threads.emplace_back(CountInThread, paths[i], &counts[i], &totals);
  }
  for (std::thread& thread : threads) thread.join();

  std::cout << "    lines     words       bytes  file\n";
  for (std::size_t i = 0; i < paths.size(); ++i) {
    if (counts[i]) PrintRow(*counts[i], paths[i]);
  }
  PrintRow(totals.counts, "total");
  return totals.failed ? EXIT_FAILURE : EXIT_SUCCESS;
}

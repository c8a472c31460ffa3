// Counts lines, words and bytes of files, a thread for each file; with -v, the
// threads say what they are about.
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
  bool verbose = false;  // set before there are threads
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
  orvo::LogFilter(orvo::LogAttempt, __FILE__, __LINE__, what, totals->verbose);
  try {
    *counts = CountFile(path);
    orvo::LogFilter(orvo::LogSuccess, __FILE__, __LINE__, what,
                    totals->verbose);
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
  const bool verbose = argc > 1 && argv[1] == std::string("-v");
  const std::vector<std::string> paths(argv + (verbose ? 2 : 1), argv + argc);
  if (paths.empty()) {
    std::cerr << "usage: word_count [-v] FILE...\n";
    return 2;
  }
  std::vector<std::optional<Counts>> counts(paths.size());
  Totals totals;
  totals.verbose = verbose;

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

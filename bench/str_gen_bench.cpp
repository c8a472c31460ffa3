// Character sets beside the plain loop over the classifier.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <iostream>
#include <iterator>
#include <string>

#include "orvo/str_gen.h"

namespace {

const char* const kAlnum =
    "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";

std::string CopyOfTheSet() {
  return std::string(kAlnum, 62);
}

// What a program without the library writes.
std::string CopyIf(int (*classifier)(int)) {
  const std::string all = orvo::StrGen::ascii_chars_;
  std::string chosen;
  std::copy_if(all.begin(), all.end(), std::back_inserter(chosen),
               [=](char c) { return classifier(c) != 0; });
  return chosen;
}

// The calls that have to be made and one copy of what they let through.
std::string CallsAndOneCopy(int (*classifier)(int)) {
  char chosen[128];
  std::size_t size = 0;
  for (int c = 0; c < 128; ++c) {
    if (classifier(c) != 0) chosen[size++] = static_cast<char>(c);
  }
  return std::string(chosen, size);
}

void BM_Alnum(benchmark::State& state, std::string (*make)()) {
  for (auto _ : state) benchmark::DoNotOptimize(make());
}

void BM_Subset(benchmark::State& state, std::string (*make)(int (*)(int))) {
  int (*classifier)(int) = isalnum;
  benchmark::DoNotOptimize(classifier);
  for (auto _ : state) benchmark::DoNotOptimize(make(classifier));
}

std::string Subset(int (*classifier)(int)) {
  return orvo::StrGen::subset(classifier);
}

const bool registered = [] {
  if (orvo::StrGen::alnum() != kAlnum || Subset(isalnum) != kAlnum ||
      CopyIf(isalnum) != kAlnum || CallsAndOneCopy(isalnum) != kAlnum) {
    std::cerr << "str_gen_bench: the sets differ\n";
    std::abort();
  }
  benchmark::RegisterBenchmark("strings/strgen_alnum/orvo/62", BM_Alnum,
                               orvo::StrGen::alnum);
  benchmark::RegisterBenchmark("strings/strgen_alnum/limit/62", BM_Alnum,
                               CopyOfTheSet);
  benchmark::RegisterBenchmark("strings/strgen_subset/orvo/128", BM_Subset,
                               Subset);
  benchmark::RegisterBenchmark("strings/strgen_subset/std/128", BM_Subset,
                               CopyIf);
  benchmark::RegisterBenchmark("strings/strgen_subset/limit/128", BM_Subset,
                               CallsAndOneCopy);
  return true;
}();

}  // namespace

// Natural order beside the C library's strverscmp() and ICU's numeric
// collation, for names without leading zeros, on which all of them agree.

#include <benchmark/benchmark.h>
#include <unicode/coll.h>
#include <unicode/stringpiece.h>
#include <unicode/ucol.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "orvo/numeric_string.h"

namespace {

using Pair = std::pair<std::string, std::string>;
using Names = std::vector<std::string>;

void Require(bool holds, const char* what) {
  if (holds) return;
  std::cerr << "numeric_string_bench: " << what << '\n';
  std::abort();
}

const icu::Collator& NumericCollator() {
  static const std::unique_ptr<icu::Collator> collator = [] {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::Collator> made(
        icu::Collator::createInstance(icu::Locale::getRoot(), status));
    made->setAttribute(UCOL_NUMERIC_COLLATION, UCOL_ON, status);
    Require(U_SUCCESS(status), "ICU has no numeric collation");
    return made;
  }();
  return *collator;
}

struct Orvo {
  bool operator()(const std::string& a, const std::string& b) const {
    return orvo::NumericStringCompare()(a, b);
  }
};

struct Strverscmp {
  bool operator()(const std::string& a, const std::string& b) const {
    return strverscmp(a.c_str(), b.c_str()) < 0;
  }
};

struct Icu {
  bool operator()(const std::string& a, const std::string& b) const {
    UErrorCode status = U_ZERO_ERROR;
    return NumericCollator().compareUTF8(a, b, status) == UCOL_LESS;
  }
};

// Not the same order: a bare comparison of the bytes.
struct Limit {
  bool operator()(const std::string& a, const std::string& b) const {
    return std::memcmp(a.data(), b.data(), std::min(a.size(), b.size())) < 0;
  }
};

struct PlainOrder {
  bool operator()(const std::string& a, const std::string& b) const {
    return a < b;
  }
};

// A name of words and numbers in turn, ending in a letter.
std::string MakeText(std::size_t size) {
  std::string text;
  for (int number = 7; text.size() < size; number = number * 13 % 9973) {
    text += "img" + std::to_string(number) + ".";
  }
  text.resize(size - 1);
  return text + "x";
}

Pair DifferentAtTheEnd(std::size_t size) {
  const std::string common = MakeText(size - 2);
  return {common + "19", common + "23"};
}

Pair DifferentAtTheStart(std::size_t size) {
  const std::string common = MakeText(size - 1);
  return {"a" + common, "b" + common};
}

Pair Equal(std::size_t size) {
  return {MakeText(size), MakeText(size)};
}

Names MakeNames(std::size_t count) {
  Names names;
  for (std::size_t i = 1; i <= count; ++i) {
    names.push_back("track" + std::to_string(i * 7) + ".flac");
  }
  std::shuffle(names.begin(), names.end(), std::mt19937(1));
  return names;
}

template <typename Less>
void BM_Compare(benchmark::State& state, const Pair& pair) {
  const Less less;
  for (auto _ : state) {
    benchmark::DoNotOptimize(pair.first.data());
    benchmark::DoNotOptimize(less(pair.first, pair.second));
  }
}

void BM_ConstructOrvo(benchmark::State& state, const std::string& text) {
  for (auto _ : state) benchmark::DoNotOptimize(orvo::NumericString(text));
}

std::string SortKey(const std::string& text) {
  const auto unicode = icu::UnicodeString::fromUTF8(text);
  std::uint8_t key[16384];
  const auto size = NumericCollator().getSortKey(unicode, key, sizeof key);
  return std::string(key, key + size);
}

void BM_ConstructIcu(benchmark::State& state, const std::string& text) {
  for (auto _ : state) benchmark::DoNotOptimize(SortKey(text));
}

template <typename Less>
Names Sorted(Names names) {
  std::sort(names.begin(), names.end(), Less());
  return names;
}

template <typename Less>
void BM_Sort(benchmark::State& state, const Names& names) {
  for (auto _ : state) benchmark::DoNotOptimize(Sorted<Less>(names));
}

std::vector<orvo::NumericString> CutAndSorted(const Names& names) {
  std::vector<orvo::NumericString> cut(names.begin(), names.end());
  std::sort(cut.begin(), cut.end());
  return cut;
}

void BM_SortCutOnce(benchmark::State& state, const Names& names) {
  for (auto _ : state) benchmark::DoNotOptimize(CutAndSorted(names));
}

// Sort keys with the names that they stand for.
std::vector<Pair> SortedByKeys(const Names& names) {
  std::vector<Pair> keyed;
  keyed.reserve(names.size());
  for (const std::string& name : names) {
    keyed.emplace_back(SortKey(name), name);
  }
  std::sort(keyed.begin(), keyed.end());
  return keyed;
}

void BM_SortByKeys(benchmark::State& state, const Names& names) {
  for (auto _ : state) benchmark::DoNotOptimize(SortedByKeys(names));
}

void RegisterCompare(const std::string& operation, const Pair& pair) {
  for (const auto& [a, b] : {pair, Pair(pair.second, pair.first)}) {
    const bool less = Orvo()(a, b);
    Require(Strverscmp()(a, b) == less, "strverscmp() has another order");
    Require(Icu()(a, b) == less, "ICU has another order");
  }
  const std::string size = "/" + std::to_string(pair.first.size());
  const auto add = [&](const char* who, auto* run) {
    benchmark::RegisterBenchmark((operation + who + size).c_str(), run, pair);
  };
  add("/orvo", BM_Compare<Orvo>);
  add("/strverscmp", BM_Compare<Strverscmp>);
  add("/icu", BM_Compare<Icu>);
  add("/limit", BM_Compare<Limit>);
}

void RegisterConstruct(std::size_t size) {
  const std::string text = MakeText(size);
  const std::string end = "/" + std::to_string(size);
  benchmark::RegisterBenchmark(("natural/construct/orvo" + end).c_str(),
                               BM_ConstructOrvo, text);
  benchmark::RegisterBenchmark(("natural/construct/icu" + end).c_str(),
                               BM_ConstructIcu, text);
}

void RegisterSort(std::size_t count) {
  const Names names = MakeNames(count);
  const Names sorted = Sorted<Orvo>(names);
  Require(Sorted<Strverscmp>(names) == sorted, "strverscmp() sorts otherwise");
  Require(Sorted<Icu>(names) == sorted, "ICU sorts otherwise");
  const auto cut = CutAndSorted(names);
  Require(Names(cut.begin(), cut.end()) == sorted, "cut names sort otherwise");
  const auto keyed = SortedByKeys(names);
  Require(std::equal(keyed.begin(), keyed.end(), sorted.begin(), sorted.end(),
                     [](const Pair& a, const std::string& b) {
                       return a.second == b;
                     }),
          "ICU's keys sort otherwise");

  const std::string size = "/" + std::to_string(count);
  const auto add = [&](const std::string& name, auto* run) {
    benchmark::RegisterBenchmark((name + size).c_str(), run, names);
  };
  for (const std::string operation :
       {"natural/sort", "natural/sort_cut_once"}) {
    add(operation + "/strverscmp", BM_Sort<Strverscmp>);
    add(operation + "/limit", BM_Sort<PlainOrder>);
  }
  add("natural/sort/orvo", BM_Sort<Orvo>);
  add("natural/sort/icu", BM_Sort<Icu>);
  add("natural/sort_cut_once/orvo", BM_SortCutOnce);
  add("natural/sort_cut_once/icu", BM_SortByKeys);
}

const bool registered = [] {
  for (const std::size_t size : {8UL, 32UL, 256UL, 4096UL}) {
    RegisterCompare("natural/compare", DifferentAtTheEnd(size));
    RegisterCompare("natural/compare_early", DifferentAtTheStart(size));
    RegisterCompare("natural/compare_equal", Equal(size));
    RegisterConstruct(size);
  }
  for (const std::size_t count : {16UL, 256UL, 4096UL}) RegisterSort(count);
  return true;
}();

}  // namespace

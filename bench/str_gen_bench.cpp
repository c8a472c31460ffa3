// Character sets beside the plain loop over the classifier.

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <iterator>
#include <string>

#include "bench/compare.h"
#include "orvo/str_gen.h"

namespace {

using orvo_bench::Compare;
using orvo_bench::Contender;
using orvo_bench::Keep;

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

const bool registered = [] {
  Compare("strings/strgen_alnum", 62,
          Contender{"orvo", [] { return orvo::StrGen::alnum(); }},
          Contender{"limit", CopyOfTheSet});
  for (int (*const set)(int) : {isdigit, isalnum, isprint}) {
    int (** const classifier)(int) = Keep(set);
    Compare(
        "strings/strgen_subset", CopyIf(set).size(),
        Contender{"orvo", [=] { return orvo::StrGen::subset(*classifier); }},
        Contender{"std", [=] { return CopyIf(*classifier); }},
        Contender{"limit", [=] { return CallsAndOneCopy(*classifier); }});
  }
  return true;
}();

}  // namespace

#include <algorithm>
#include <climits>

#include "fuzz/fuzz.h"
#include "fuzz/models.h"
#include "orvo/numeric_string.h"

namespace {

using orvo_fuzz::Expect;
using orvo_fuzz::model::IsDigit;

using Runs = std::vector<std::string>;

Runs Cut(const std::string& text) {
  Runs runs;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (i == 0 || IsDigit(text[i]) != IsDigit(text[i - 1])) runs.emplace_back();
    runs.back() += text[i];
  }
  return runs;
}

// A number beyond the range of int counts as the largest one.
int ValueOf(const std::string& digits) {
  long long value = 0;
  for (const char c : digits) {
    value = std::min<long long>(value * 10 + (c - '0'), INT_MAX);
  }
  return static_cast<int>(value);
}

std::string WithoutZeros(const std::string& digits) {
  return digits.substr(std::min(digits.find_first_not_of('0'), digits.size()));
}

int Compare(const std::string& a, const std::string& b, bool full_values) {
  if (!IsDigit(a[0]) || !IsDigit(b[0])) return a.compare(b);
  if (!full_values) return ValueOf(a) - ValueOf(b);
  const std::string x = WithoutZeros(a);
  const std::string y = WithoutZeros(b);
  if (x.size() != y.size()) return x.size() < y.size() ? -1 : 1;
  return x.compare(y);
}

bool ComesBefore(const Runs& a, const Runs& b, bool full_values) {
  for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
    const int order = Compare(a[i], b[i], full_values);
    if (order != 0) return order < 0;
  }
  return a.size() < b.size();
}

void TestChunks(const orvo::NumericString& text, const Runs& runs) {
  Expect(text.chunks().size() == runs.size());
  for (std::size_t i = 0; i < runs.size(); ++i) {
    const orvo::Chunk& chunk = text.chunks()[i];
    const bool numeric = IsDigit(runs[i][0]);
    Expect(chunk.text() == runs[i] && chunk.numeric() == numeric);
    Expect(chunk.value() == (numeric ? ValueOf(runs[i]) : 0));
  }
}

void TestPair(const std::string& a, const std::string& b) {
  const orvo::NumericString x(a);
  const orvo::NumericString y(b);
  const Runs runs_of_a = Cut(a);
  const Runs runs_of_b = Cut(b);
  TestChunks(x, runs_of_a);
  const bool before = ComesBefore(runs_of_a, runs_of_b, false);
  const bool behind = ComesBefore(runs_of_b, runs_of_a, false);
  Expect((x < y) == before && (y < x) == behind && !(before && behind));
  Expect((x == y) == (a == b));
  Expect(orvo::NumericStringCompare()(a, b) == before);
  Expect(orvo::NumericStringCompare()(b, a) == behind);
  Expect(orvo::NaturalLess()(a, b) == ComesBefore(runs_of_a, runs_of_b, true));
  Expect(orvo::NaturalLess()(b, a) == ComesBefore(runs_of_b, runs_of_a, true));
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  orvo_fuzz::Input input(data, size);
  // Texts that differ nowhere would be rare without a common part.
  const std::string common = input.TakeText(input.Take<std::uint8_t>() % 32);
  const std::string a = common + std::string(input.TakeLine('\n'));
  const std::string b = common + input.TakeRest();
  TestPair(a, b);
  return 0;
}

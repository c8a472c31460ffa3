#include <algorithm>

#include "fuzz/fuzz.h"
#include "orvo/path.h"

namespace {

using orvo_fuzz::Expect;

using Texts = std::vector<std::string>;
using Pair = std::pair<std::string, std::string>;

namespace model {

std::string Join(const Texts& parts) {
  std::string path;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    for (const char c : (i == 0 ? "" : "/") + parts[i]) {
      if (c != '/' || path.empty() || path.back() != '/') path += c;
    }
  }
  return path;
}

// In front of the last such character and from it on; in front is all if there
// is none.
Pair CutAtLast(const std::string& text, char mark) {
  for (std::size_t i = text.size(); i-- != 0;) {
    if (text[i] == mark) return {text.substr(0, i), text.substr(i)};
  }
  return {text, ""};
}

std::string Basename(const std::string& path) {
  const Pair cut = CutAtLast(path, '/');
  return cut.second.empty() ? path : cut.second.substr(1);
}

std::string Dirname(const std::string& path) {
  const Pair cut = CutAtLast(path, '/');
  return cut.second.empty() ? "" : cut.first;
}

Pair Split(const std::string& path) {
  const Pair cut = CutAtLast(path, '/');
  return {cut.first, cut.second.empty() ? "" : cut.second.substr(1)};
}

Texts SplitToVector(const std::string& path) {
  Texts components;
  Pair cut = Split(path);
  while (!cut.second.empty()) {
    components.push_back(cut.second);
    cut = Split(cut.first);
  }
  components.push_back(cut.first);
  std::reverse(components.begin(), components.end());
  return components;
}

std::string Relpath(const std::string& path, const std::string& start) {
  const Texts of_path = SplitToVector(path);
  const Texts of_start = SplitToVector(start);
  if (of_path[0] != of_start[0] || of_path.size() < of_start.size()) {
    return path;
  }
  std::size_t shared = 0;
  while (shared < of_start.size() && of_path[shared] == of_start[shared]) {
    ++shared;
  }
  return Join(Texts(of_path.begin() + static_cast<std::ptrdiff_t>(shared),
                    of_path.end()));
}

}  // namespace model

void TestCuts(const std::string& path) {
  const std::string base = model::Basename(path);
  const Pair base_cut = model::CutAtLast(base, '.');
  Expect(orvo::path::basename(path) == base);
  Expect(orvo::path::dirname(path) == model::Dirname(path));
  Expect(orvo::path::split(path) == model::Split(path));
  Expect(orvo::path::splitext(path) == model::CutAtLast(path, '.'));
  Expect(orvo::path::basename_no_ext(path) == base_cut.first);
  Expect(orvo::path::extension(path) == base_cut.second);
  Expect(orvo::path::split_to_vector(path) == model::SplitToVector(path));
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  orvo_fuzz::Input input(data, size);
  const std::string common = input.TakeText(input.Take<std::uint8_t>() % 16);
  const std::string a = common + std::string(input.TakeLine('\n'));
  const std::string b = common + input.TakeRest();
  const Texts parts = {a, common, b};
  TestCuts(a);
  Expect(orvo::path::Join(a, b) == model::Join({a, b}));
  Expect(orvo::path::Join(parts.begin(), parts.end()) == model::Join(parts));
  Expect(orvo::path::relpath(a, b) == model::Relpath(a, b));
  return 0;
}

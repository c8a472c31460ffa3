#ifndef ORVO_TESTS_SUPPORT_TEXTS_H_
#define ORVO_TESTS_SUPPORT_TEXTS_H_

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace orvo_test {

/// Visits every text over an alphabet up to a length, the empty one first,
/// until a visit fails its test.
template <typename Visit>
void ForEachText(std::string_view alphabet, std::size_t longest, Visit visit) {
  std::string text;
  visit(text);
  while (!testing::Test::HasFailure()) {
    // Counts upwards; a text of last letters becomes a longer one of first
    // letters.
    std::size_t i = 0;
    for (; i < text.size() && text[i] == alphabet.back(); ++i) {
      text[i] = alphabet.front();
    }
    if (i < text.size()) {
      text[i] = alphabet[alphabet.find(text[i]) + 1];
    } else if (text.size() < longest) {
      text.push_back(alphabet.front());
    } else {
      return;
    }
    visit(text);
  }
}

}  // namespace orvo_test

#endif  // ORVO_TESTS_SUPPORT_TEXTS_H_

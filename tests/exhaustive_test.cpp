// Questions and conversions for all texts of up to two bytes, and the
// reversals of all numbers of two bytes.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <optional>
#include <string>

#include "fuzz/memory_stream.h"
#include "fuzz/models.h"
#include "orvo/byte_order.h"
#include "orvo/midi.h"
#include "orvo/strings.h"

namespace {

namespace model = orvo_fuzz::model;

template <typename Visit>
void ForAllTexts(Visit visit) {
  visit(std::string());
  for (int first = 0; first < 256; ++first) {
    std::string text(1, static_cast<char>(first));
    visit(text);
    text += ' ';
    for (int second = 0; second < 256; ++second) {
      text[1] = static_cast<char>(second);
      visit(text);
      if (testing::Test::HasFatalFailure()) return;
    }
  }
}

bool IsUpper(char c) {
  return c >= 'A' && c <= 'Z';
}

bool IsLower(char c) {
  return c >= 'a' && c <= 'z';
}

TEST(AllShortTexts, AreStrippedOfSpaces) {
  ForAllTexts([](const std::string& text) {
    ASSERT_EQ(orvo::strip(text), model::Strip(text));
  });
}

TEST(AllShortTexts, ChangeTheCaseOfLetters) {
  ForAllTexts([](const std::string& text) {
    std::string lower = text;
    std::string upper = text;
    for (char& c : lower) c = static_cast<char>(c + (IsUpper(c) ? 32 : 0));
    for (char& c : upper) c = static_cast<char>(c - (IsLower(c) ? 32 : 0));
    ASSERT_EQ(orvo::to_lower(text), lower);
    ASSERT_EQ(orvo::to_upper(text), upper);
  });
}

TEST(AllShortTexts, AreClassified) {
  ForAllTexts([](std::string text) {
    std::size_t digits = 0;
    std::size_t letters = 0;
    for (const char c : text) {
      if (model::IsDigit(c)) ++digits;
      if (IsUpper(c) || IsLower(c)) ++letters;
    }
    const std::size_t size = text.size();
    ASSERT_EQ(orvo::StringIsDigits(text), digits == size) << text;
    ASSERT_EQ(orvo::StringIsAlpha(text), letters == size) << text;
    ASSERT_EQ(orvo::StringIsAlphaNumeric(text), digits + letters == size)
        << text;
    ASSERT_EQ(orvo::StringIsInteger(text), model::IsInteger(text)) << text;
    ASSERT_EQ(orvo::StringIsFloat(text), model::IsFloat(text)) << text;
  });
}

TEST(AllShortTexts, EndWithTheirOwnEnds) {
  ForAllTexts([](const std::string& text) {
    ASSERT_TRUE(orvo::endswith(text, text)) << text;
    ASSERT_TRUE(orvo::endswith(text, "")) << text;
    ASSERT_EQ(orvo::endswith(text, "\n"),
              !text.empty() && text[text.size() - 1] == '\n')
        << text;
  });
}

template <typename Number>
void ExpectToReadLikeAStream(const std::string& text) {
  Number expected = 0;
  orvo_fuzz::ReadFromStream(model::Strip(text), &expected);
  ASSERT_EQ(orvo::StringToNumber<Number>(text), expected) << text;

  expected = 77;
  const bool valid = model::IsInteger(text) || model::IsFloat(text);
  if (valid) orvo_fuzz::ReadFromStream(model::Strip(text), &expected);
  Number number = 77;
  ASSERT_EQ(orvo::StringToNumber(text, number), valid) << text;
  ASSERT_EQ(number, expected) << text;
}

TEST(AllShortTexts, AreReadAsNumbersLikeByAStream) {
  ForAllTexts(ExpectToReadLikeAStream<int>);
  ForAllTexts(ExpectToReadLikeAStream<unsigned short>);
  ForAllTexts(ExpectToReadLikeAStream<long long>);
  ForAllTexts(ExpectToReadLikeAStream<float>);
}

template <typename Number>
void ExpectToReadHexLikeAStream(const std::string& text) {
  Number expected = 0;
  orvo_fuzz::ReadFromStream(model::Strip(text), &expected, std::hex);
  ASSERT_EQ(orvo::HexStringToNumber<Number>(text), expected) << text;
}

TEST(AllShortTexts, AreReadAsHexadecimalLikeByAStream) {
  ForAllTexts(ExpectToReadHexLikeAStream<std::uint16_t>);
  ForAllTexts(ExpectToReadHexLikeAStream<std::uint64_t>);
}

TEST(AllShortTexts, AreIntegersOnlyAsDigitsBehindAMinus) {
  ForAllTexts([](const std::string& text) {
    const std::string digits = text.substr(text[0] == '-' ? 1 : 0);
    std::optional<int> expected;
    if (!digits.empty() && model::IsInteger(digits) &&
        model::IsDigit(digits.front()) && model::IsDigit(digits.back())) {
      expected = std::stoi(text);
    }
    ASSERT_EQ(orvo::ParseNumber<int>(text), expected) << text;
    if (expected && text[0] != '-') {
      ASSERT_EQ(orvo::ParseNumber<unsigned char>(text), *expected) << text;
    } else {
      ASSERT_EQ(orvo::ParseNumber<unsigned char>(text), std::nullopt) << text;
    }
  });
}

// What follows the letter of a note adds, or nothing for what it cannot be.
std::optional<int> SemitonesOf(char c) {
  if (c == 'b') return 23;
  if (c == '#') return 25;
  if (c == 'x') return 26;
  if (c == ' ' || c == '+' || c == '-' || c == '.') return 24;
  if (model::IsDigit(c)) return (c - '0' + 2) * 12;
  return std::nullopt;
}

TEST(AllShortTexts, AreReadAsNotes) {
  const std::string letters = "C D EF G A B";
  ForAllTexts([&](const std::string& text) {
    const std::size_t base = text.empty() || text[0] == ' '
                                 ? std::string::npos
                                 : letters.find(text[0]);
    std::string error;
    if (base == std::string::npos) {
      error = text.substr(0, 1) + " is not a valid note name.";
    } else if (text.size() == 2 && !SemitonesOf(text[1])) {
      error = text.substr(1) + " is not a valid octave.";
    }
    try {
      const int index = orvo::midi::GetNoteIndex(text);
      ASSERT_EQ(error, "") << text;
      const int semitones = text.size() < 2 ? 0 : *SemitonesOf(text[1]);
      ASSERT_EQ(index, static_cast<int>(base) + semitones) << text;
    } catch (const orvo::midi::InvalidNoteName& thrown) {
      ASSERT_STREQ(thrown.what(), error.c_str());
    }
    const auto note = orvo::midi::ParseNote(text);
    const bool strict = error.empty() && text.size() == 2 &&
                        model::IsDigit(text[1]) && text[1] <= '8' &&
                        (text[1] < '8' || base <= 7);
    ASSERT_EQ(note.has_value(), strict) << text;
    if (note) {
      ASSERT_EQ(note->GetIndex(), orvo::midi::GetNoteIndex(text));
    }
  });
}

TEST(AllShortTexts, AreHashed) {
  ForAllTexts([](const std::string& text) {
    std::uint64_t hash = 5381;
    for (const char c : text) hash = 33 * hash + static_cast<unsigned char>(c);
    ASSERT_EQ(orvo::hash(text.data(), text.size()), hash);
  });
}

TEST(AllNumbersOfTwoBytes, AreReversed) {
  for (unsigned number = 0; number <= 65535; ++number) {
    const auto original = static_cast<std::uint16_t>(number);
    std::uint16_t value = original;
    ASSERT_EQ(orvo::reverse_byte_order_const(value),
              number % 256 * 256 + number / 256);
    ASSERT_EQ(orvo::reverse_byte_order(value),
              number % 256 * 256 + number / 256);
    ASSERT_EQ(orvo::reverse_byte_order(value), original);
  }
}

}  // namespace

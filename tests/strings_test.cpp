#include "orvo/strings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <forward_list>
#include <iterator>
#include <limits>
#include <list>
#include <locale>
#include <map>
#include <new>
#include <optional>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "tests/support/allocations.h"
#include "tests/support/grouped_digits.h"
#include "tests/support/standard_library.h"
#include "tests/support/texts.h"

namespace {

using orvo_test::CountAllocations;
using orvo_test::ForEachText;
using testing::ElementsAre;
using testing::Eq;
using testing::ThrowsMessage;

using Texts = std::vector<std::string>;

std::string WithNul(const char* front, const char* back) {
  return std::string(front).append(1, '\0').append(back);
}

TEST(Strip, RemovesTheSpacesAtBothEnds) {
  const struct {
    const char* text;
    const char* stripped;
  } cases[] = {
      {"", ""},        {" ", ""},        {"    ", ""},       {"a", "a"},
      {" a", "a"},     {"a ", "a"},      {"  a b  ", "a b"}, {"a  b", "a  b"},
      {" a b", "a b"}, {"a b  ", "a b"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(orvo::strip<std::string>(c.text), c.stripped) << c.text;
  }
}

TEST(Strip, TakesALiteral) {
  static_assert(std::is_same_v<decltype(orvo::strip("")), std::string>);
  EXPECT_EQ(orvo::strip("  a b  "), "a b");
}

TEST(Strip, KeepsOtherWhiteSpace) {
  EXPECT_EQ(orvo::strip<std::string>("\ta\t"), "\ta\t");
  EXPECT_EQ(orvo::strip<std::string>(" \t a\n "), "\t a\n");
  EXPECT_EQ(orvo::strip<std::string>(" \v\f\r "), "\v\f\r");
}

TEST(Strip, KeepsNuls) {
  EXPECT_EQ(orvo::strip(WithNul(" a", "b ")), WithNul("a", "b"));
  EXPECT_EQ(orvo::strip(WithNul(" ", " ")), WithNul("", ""));
}

TEST(Strip, LeavesItsArgumentAlone) {
  const std::string text = " a ";
  EXPECT_EQ(orvo::strip(text), "a");
  EXPECT_EQ(text, " a ");
}

TEST(Strip, MakesAViewOfAView) {
  const std::string_view stripped = orvo::strip(std::string_view("  a b "));
  EXPECT_EQ(stripped, "a b");
}

TEST(LetterCase, ChangesTheAsciiLettersAmongAllBytes) {
  for (int code = 0; code < 256; ++code) {
    const char c = static_cast<char>(code);
    const bool upper = code >= 65 && code <= 90;
    const bool lower = code >= 97 && code <= 122;
    // Long enough for any fast path, with a remainder.
    const std::string text(35, c);
    EXPECT_EQ(orvo::to_lower(text),
              std::string(35, static_cast<char>(upper ? code + 32 : code)));
    EXPECT_EQ(orvo::to_upper(text),
              std::string(35, static_cast<char>(lower ? code - 32 : code)));
  }
}

TEST(LetterCase, KeepsTheLengthAndTheOrder) {
  const std::string text = "The Quick bROWN fOX, 123 [\\]^_`{|}~@ jumps OVER.";
  for (std::size_t size = 0; size <= text.size(); ++size) {
    const std::string_view lower =
        "the quick brown fox, 123 [\\]^_`{|}~@ jumps over.";
    const std::string_view upper =
        "THE QUICK BROWN FOX, 123 [\\]^_`{|}~@ JUMPS OVER.";
    EXPECT_EQ(orvo::to_lower(text.substr(0, size)), lower.substr(0, size));
    EXPECT_EQ(orvo::to_upper(text.substr(0, size)), upper.substr(0, size));
  }
}

TEST(LetterCase, LooksAtNothingInFrontOfAText) {
  std::string text;
  text.reserve(100);
  EXPECT_EQ(orvo::to_lower(text), "");
  EXPECT_EQ(orvo::to_upper(text), "");
}

TEST(LetterCase, KeepsNuls) {
  EXPECT_EQ(orvo::to_lower(WithNul("A", "B")), WithNul("a", "b"));
  EXPECT_EQ(orvo::to_upper(WithNul("a", "b")), WithNul("A", "B"));
}

TEST(Endswith, ComparesTheEndOfTheText) {
  const struct {
    const char* text;
    const char* suffix;
    bool answer;
  } cases[] = {
      {"abc", "c", true},    {"abc", "bc", true},   {"abc", "abc", true},
      {"abc", "ab", false},  {"abc", "b", false},   {"abab", "ab", true},
      {"aaa", "aa", true},   {"bc", "abc", false},  {"", "a", false},
      {"abc", "ABC", false}, {"abc", "abd", false}, {"abca", "abc", false},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(orvo::endswith(c.text, c.suffix), c.answer)
        << c.text << " " << c.suffix;
  }
}

TEST(Endswith, FindsTheEmptySuffixEverywhere) {
  EXPECT_TRUE(orvo::endswith("abc", ""));
  EXPECT_TRUE(orvo::endswith("", ""));
}

TEST(Endswith, ComparesNuls) {
  EXPECT_TRUE(orvo::endswith(WithNul("a", "b"), WithNul("", "b")));
  EXPECT_FALSE(orvo::endswith(WithNul("a", ""),
                              ""
                              "a"));
}

TEST(Classifiers, TakeANonConstText) {
  static_assert(
      std::is_same_v<decltype(orvo::StringIsDigits), bool(std::string&)>);
  static_assert(
      std::is_same_v<decltype(orvo::StringIsAlpha), bool(std::string&)>);
  static_assert(
      std::is_same_v<decltype(orvo::StringIsAlphaNumeric), bool(std::string&)>);
  std::string text = "a1";
  orvo::StringIsAlphaNumeric(text);
  EXPECT_EQ(text, "a1");
}

TEST(Classifiers, AcceptTheEmptyText) {
  std::string text;
  EXPECT_TRUE(orvo::StringIsDigits(text));
  EXPECT_TRUE(orvo::StringIsAlpha(text));
  EXPECT_TRUE(orvo::StringIsAlphaNumeric(text));
}

TEST(Classifiers, DoNotTrim) {
  for (std::string text : {" 1", "1 ", " a", "a ", " "}) {
    EXPECT_FALSE(orvo::StringIsDigits(text)) << text;
    EXPECT_FALSE(orvo::StringIsAlpha(text)) << text;
    EXPECT_FALSE(orvo::StringIsAlphaNumeric(text)) << text;
  }
}

// One odd byte at every position of texts of every length up to a few blocks.
TEST(Classifiers, LookAtEveryByte) {
  for (std::size_t size = 1; size <= 50; ++size) {
    for (std::size_t odd = 0; odd < size; ++odd) {
      std::string digits(size, '7');
      std::string letters(size, 'q');
      ASSERT_TRUE(orvo::StringIsDigits(digits));
      ASSERT_TRUE(orvo::StringIsAlpha(letters));
      ASSERT_TRUE(orvo::StringIsAlphaNumeric(digits));
      digits[odd] = 'x';
      letters[odd] = '5';
      ASSERT_FALSE(orvo::StringIsDigits(digits)) << size << " " << odd;
      ASSERT_FALSE(orvo::StringIsAlpha(letters)) << size << " " << odd;
      ASSERT_TRUE(orvo::StringIsAlphaNumeric(digits)) << size << " " << odd;
      letters[odd] = '-';
      ASSERT_FALSE(orvo::StringIsAlphaNumeric(letters)) << size << " " << odd;
    }
  }
}

TEST(Classifiers, KnowAsciiAmongAllBytes) {
  for (int code = 0; code < 256; ++code) {
    const bool digit = code >= 48 && code <= 57;
    const bool letter =
        (code >= 65 && code <= 90) || (code >= 97 && code <= 122);
    for (const std::size_t size : {1u, 8u, 20u, 40u}) {
      std::string text(size, static_cast<char>(code));
      EXPECT_EQ(orvo::StringIsDigits(text), digit) << code;
      EXPECT_EQ(orvo::StringIsAlpha(text), letter) << code;
      EXPECT_EQ(orvo::StringIsAlphaNumeric(text), digit || letter) << code;
    }
  }
}

TEST(StringIsInteger, AcceptsDigitsBehindASign) {
  for (const char* text : {"0", "42", " +42 ", "-7", "007",
                           "99999999999999999999999999999999999999"}) {
    EXPECT_TRUE(orvo::StringIsInteger(text)) << text;
  }
}

TEST(StringIsInteger, AcceptsTextWithoutDigits) {
  for (const char* text : {"", "   ", "-", "+", " - "}) {
    EXPECT_TRUE(orvo::StringIsInteger(text)) << text;
  }
}

TEST(StringIsInteger, RejectsEverythingElse) {
  for (const char* text : {"4-2", "--1", "+-1", "1 2", "- 1", "1-", "4x", "0x1",
                           "1.5", ".", "5.", "\t1", "1\n", "1e3", "\xb2"}) {
    EXPECT_FALSE(orvo::StringIsInteger(text)) << text;
  }
  EXPECT_FALSE(orvo::StringIsInteger(WithNul("1", "")));
}

TEST(StringIsFloat, IgnoresOnePoint) {
  for (const char* text : {"1.5", "-.5", "5.", " +1.5 ", "12", "", " ", ".",
                           "-.", "+.", " .-5", ".-5", ". 5", "5 .", " . "}) {
    EXPECT_TRUE(orvo::StringIsFloat(text)) << text;
  }
}

TEST(StringIsFloat, RejectsEverythingElse) {
  for (const char* text :
       {"1.2.3", "..", "1e3", "1e5", "inf", "nan", "-inf", "1 .5", "5. 5",
        "-. 5", "1,5", ".x", "--.5", "0x1.", " . . ", "\t.5"}) {
    EXPECT_FALSE(orvo::StringIsFloat(text)) << text;
  }
}

// The questions, as they are meant: one step after the other.
bool ModelIsInteger(const std::string& text) {
  std::string trimmed = text;
  while (!trimmed.empty() && trimmed.front() == ' ') trimmed.erase(0, 1);
  while (!trimmed.empty() && trimmed.back() == ' ') trimmed.pop_back();
  for (std::size_t i = 0; i < trimmed.size(); ++i) {
    const char c = trimmed[i];
    if (c >= '0' && c <= '9') continue;
    if (i == 0 && (c == '-' || c == '+')) continue;
    return false;
  }
  return true;
}

bool ModelIsFloat(const std::string& text) {
  std::string copy;
  for (const char c : text) {
    if (c != '.') copy += c;
  }
  return text.size() - copy.size() < 2 && ModelIsInteger(copy);
}

TEST(NumberQuestions, AnswerLikeTheModelForAllShortTexts) {
  ForEachText(" .+-1x\t", 6, [](const std::string& text) {
    ASSERT_EQ(orvo::StringIsInteger(text), ModelIsInteger(text)) << text;
    ASSERT_EQ(orvo::StringIsFloat(text), ModelIsFloat(text)) << text;
  });
}

TEST(StringToNumber, ReadsNumbersThatAreNothingElse) {
  const struct {
    const char* text;
    int value;
  } cases[] = {
      {" 42 ", 42},
      {"-3.9", -3},
      {"12.75", 12},
      {"+7", 7},
      {"-0", 0},
      {"007", 7},
      {"5.", 5},
      {"2147483647", 2147483647},
      {"-2147483648", INT_MIN},
  };
  for (const auto& c : cases) {
    int value = -1;
    EXPECT_TRUE(orvo::StringToNumber<int>(c.text, value)) << c.text;
    EXPECT_EQ(value, c.value) << c.text;
    EXPECT_EQ(orvo::StringToNumber<int>(c.text), c.value) << c.text;
  }
}

TEST(StringToNumber, RejectsOtherTextAndLeavesTheValueAlone) {
  for (const char* text : {"4x", "x", "1e3", "1.2.3", "0x10", "1 2", "\t1"}) {
    int value = 77;
    EXPECT_FALSE(orvo::StringToNumber<int>(text, value)) << text;
    EXPECT_EQ(value, 77) << text;
  }
}

TEST(StringToNumber, StoresZeroForTextWithoutDigits) {
  for (const char* text : {"-", "+", ".", "-.", ".5", " .-5"}) {
    int value = 77;
    EXPECT_TRUE(orvo::StringToNumber<int>(text, value)) << text;
    EXPECT_EQ(value, 0) << text;
  }
}

TEST(StringToNumber, AcceptsBlankTextAndLeavesTheValueAlone) {
  for (const char* text : {"", " ", "    "}) {
    int value = 77;
    EXPECT_TRUE(orvo::StringToNumber<int>(text, value));
    EXPECT_EQ(value, 77);
    double number = 7.5;
    EXPECT_TRUE(orvo::StringToNumber<double>(text, number));
    EXPECT_EQ(number, 7.5);
  }
}

TEST(StringToNumber, ReturnsZeroForBlankText) {
  for (const char* text : {"", " ", "\t", " \n "}) {
    EXPECT_EQ(orvo::StringToNumber<int>(text), 0);
    EXPECT_EQ(orvo::StringToNumber<unsigned long>(text), 0u);
    EXPECT_EQ(orvo::StringToNumber<double>(text), 0.0);
    EXPECT_EQ(orvo::StringToNumber<char>(text), '\0');
  }
}

TEST(StringToNumber, ReturnsTheNumberAtTheFront) {
  const struct {
    const char* text;
    int value;
  } cases[] = {
      {"x", 0},
      {"4x", 4},
      {"12 34", 12},
      {"0x10", 0},
      {"--1", 0},
      {"- 1", 0},
      {"\t42", 42},
      {" \n\v\f\r -42\t", -42},
      {"1e3", 1},
      {"1,234", 1},
      {"+-1", 0},
      {"\x85"
       "1",
       0},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(orvo::StringToNumber<int>(c.text), c.value) << c.text;
  }
  EXPECT_EQ(orvo::StringToNumber<int>(WithNul("12", "3")), 12);
}

TEST(StringToNumber, StoresTheNearestLimitForANumberOutOfRange) {
  int value = 0;
  EXPECT_TRUE(orvo::StringToNumber<int>("2147483648", value));
  EXPECT_EQ(value, INT_MAX);
  EXPECT_TRUE(orvo::StringToNumber<int>("-2147483649", value));
  EXPECT_EQ(value, INT_MIN);
  EXPECT_EQ(orvo::StringToNumber<int>(std::string(100, '9')), INT_MAX);
  EXPECT_EQ(orvo::StringToNumber<int>("-" + std::string(100, '9')), INT_MIN);
  EXPECT_EQ(orvo::StringToNumber<int>("18446744073709551616"), INT_MAX);
  EXPECT_EQ(orvo::StringToNumber<int>(std::string(100, '0') + "5"), 5);
}

TEST(StringToNumber, PassesOnThatMemoryRunsOut) {
  ORVO_NEEDS_LIBSTDCXX();
  const std::string text = "1.5";
  {
    const orvo_test::ScopedAllocationFailure failure;
    EXPECT_THROW(orvo::StringToNumber<double>(text), std::bad_alloc);
  }
  EXPECT_EQ(orvo::StringToNumber<double>(text), 1.5);
}

TEST(StringToNumber, ServesOtherNumberTypes) {
  ORVO_NEEDS_LIBSTDCXX();
  EXPECT_EQ(orvo::StringToNumber<short>("40000"), 32767);
  EXPECT_EQ(orvo::StringToNumber<unsigned short>("-1"), 65535);
  EXPECT_EQ(orvo::StringToNumber<unsigned>("-1"), 4294967295u);
  EXPECT_EQ(orvo::StringToNumber<long>("-9223372036854775808"), LONG_MIN);
  EXPECT_EQ(orvo::StringToNumber<unsigned long long>("-99999999999999999999"),
            ULLONG_MAX);
  EXPECT_EQ(orvo::StringToNumber<double>(" -1.5e3x"), -1500.0);
  EXPECT_EQ(orvo::StringToNumber<float>("0.25"), 0.25F);
  EXPECT_EQ(orvo::StringToNumber<bool>("1"), true);
  EXPECT_EQ(orvo::StringToNumber<char>(" 42"), '4');
  EXPECT_EQ(orvo::StringToNumber<signed char>("42"), '4');

  double number = 0;
  EXPECT_TRUE(orvo::StringToNumber<double>(" -.5 ", number));
  EXPECT_EQ(number, -0.5);
  EXPECT_FALSE(orvo::StringToNumber<double>("1e3", number));
  EXPECT_EQ(number, -0.5);
}

TEST(StringToNumber, IgnoresTheLocaleOfTheApplication) {
  const orvo_test::ScopedGroupedDigits locale;
  EXPECT_EQ(orvo::StringToNumber<double>("1.5"), 1.5);
  EXPECT_EQ(orvo::StringToNumber<double>("1,5"), 1.0);
  EXPECT_EQ(orvo::StringToNumber<int>("1.234"), 1);
}

// Reads as a string stream does; the value stays where the stream stores none.
template <typename Number>
void ModelRead(const std::string& text, Number& value) {
  static std::stringstream stream;
  stream.clear();
  stream.imbue(std::locale::classic());
  stream.str(orvo::strip(text));
  stream >> value;
}

template <typename Number>
void ExpectToReadLikeAStream(const std::string& text) {
  Number expected{};
  ModelRead(text, expected);
  ASSERT_EQ(orvo::StringToNumber<Number>(text), expected) << text;

  expected = 77;
  Number value = 77;
  const bool valid = ModelIsInteger(text) || ModelIsFloat(text);
  if (valid) ModelRead(text, expected);
  ASSERT_EQ(orvo::StringToNumber<Number>(text, value), valid) << text;
  ASSERT_EQ(value, expected) << text;
}

void ExpectAllTypesToReadLikeAStream(const std::string& text) {
  ExpectToReadLikeAStream<short>(text);
  ExpectToReadLikeAStream<unsigned short>(text);
  ExpectToReadLikeAStream<int>(text);
  ExpectToReadLikeAStream<unsigned>(text);
  ExpectToReadLikeAStream<long>(text);
  ExpectToReadLikeAStream<unsigned long>(text);
  ExpectToReadLikeAStream<long long>(text);
  ExpectToReadLikeAStream<unsigned long long>(text);
}

TEST(StringToNumber, ReadsAllShortTextsLikeAStream) {
  ForEachText("+-09x. \t", 5, ExpectToReadLikeAStream<int>);
  ForEachText("+-09x. \t", 4, ExpectToReadLikeAStream<unsigned short>);
  ForEachText("+-09x. \t", 4, ExpectToReadLikeAStream<long long>);
  ForEachText("+-09x. \t", 4, ExpectToReadLikeAStream<double>);
  ForEachText("+-9x. ", 3, ExpectAllTypesToReadLikeAStream);
}

TEST(StringToNumber, ReadsTextsAroundTheLimitsLikeAStream) {
  for (const char* const digits : {"32767",
                                   "32768",
                                   "32769",
                                   "65535",
                                   "65536",
                                   "65537",
                                   "2147483647",
                                   "2147483648",
                                   "2147483649",
                                   "4294967295",
                                   "4294967296",
                                   "4294967297",
                                   "9223372036854775807",
                                   "9223372036854775808",
                                   "9223372036854775809",
                                   "18446744073709551615",
                                   "18446744073709551616",
                                   "18446744073709551617",
                                   "36893488147419103233",
                                   "184467440737095516160"}) {
    for (const char* const sign : {"", "+", "-"}) {
      ExpectAllTypesToReadLikeAStream(sign + std::string(digits));
    }
  }
}

TEST(StringToNumber, ReadsRandomNumbersLikeAStream) {
  constexpr unsigned kSeed = 20241117;
  SCOPED_TRACE(testing::Message() << "seed " << kSeed);
  std::mt19937 random(kSeed);
  for (int round = 0; round < 5000; ++round) {
    std::string text(random() % 3, ' ');
    text.append(random() % 2, "+-"[random() % 2]);
    text.append(random() % 3, '0');
    for (std::size_t digits = random() % 22; digits > 0; --digits) {
      text += static_cast<char>('0' + random() % 10);
    }
    if (random() % 4 == 0) text += ". x\n"[random() % 4];
    ExpectAllTypesToReadLikeAStream(text);
  }
}

template <typename Integer>
void ExpectLimits() {
  using Limits = std::numeric_limits<Integer>;
  const std::string lowest = std::to_string(Limits::min());
  const std::string highest = std::to_string(Limits::max());
  EXPECT_EQ(orvo::ParseNumber<Integer>(lowest), Limits::min());
  EXPECT_EQ(orvo::ParseNumber<Integer>(highest), Limits::max());
  // The last digit of a limit is never 9.
  std::string above = highest;
  ++above.back();
  EXPECT_EQ(orvo::ParseNumber<Integer>(above), std::nullopt) << above;
  std::string below = lowest == "0" ? "-1" : lowest;
  if (lowest != "0") ++below.back();
  EXPECT_EQ(orvo::ParseNumber<Integer>(below), std::nullopt) << below;
  EXPECT_EQ(orvo::ParseNumber<Integer>(highest + "0"), std::nullopt);
  EXPECT_EQ(orvo::ParseNumber<Integer>(std::string(1000, '9')), std::nullopt);
}

TEST(ParseNumber, KnowsTheLimitsOfEveryIntegerType) {
  ExpectLimits<char>();
  ExpectLimits<signed char>();
  ExpectLimits<unsigned char>();
  ExpectLimits<short>();
  ExpectLimits<unsigned short>();
  ExpectLimits<int>();
  ExpectLimits<unsigned>();
  ExpectLimits<long>();
  ExpectLimits<unsigned long>();
  ExpectLimits<long long>();
  ExpectLimits<unsigned long long>();
  ExpectLimits<wchar_t>();
  ExpectLimits<char16_t>();
  ExpectLimits<char32_t>();
}

template <typename Type, typename = void>
constexpr bool kIsParsed = false;
template <typename Type>
constexpr bool kIsParsed<
    Type, std::void_t<decltype(orvo::ParseNumber<Type>(std::string_view()))>> =
    true;

TEST(ParseNumber, IsForIntegersOnly) {
  static_assert(kIsParsed<int> && kIsParsed<char>);
  static_assert(!kIsParsed<bool> && !kIsParsed<double> &&
                !kIsParsed<std::string>);
}

TEST(ParseNumber, TakesDigitsBehindAtMostAMinus) {
  EXPECT_EQ(orvo::ParseNumber<int>("-42"), -42);
  EXPECT_EQ(orvo::ParseNumber<int>(std::string("42")), 42);
  EXPECT_EQ(orvo::ParseNumber<int>("-0"), 0);
  EXPECT_EQ(orvo::ParseNumber<int>("007"), 7);
  EXPECT_EQ(orvo::ParseNumber<int>("-" + std::string(1000, '0') + "7"), -7);
  EXPECT_EQ(orvo::ParseNumber<unsigned>("0"), 0U);
}

TEST(ParseNumber, TakesNoMinusForUnsignedTypes) {
  EXPECT_EQ(orvo::ParseNumber<unsigned>("-0"), std::nullopt);
  EXPECT_EQ(orvo::ParseNumber<unsigned>("-1"), std::nullopt);
}

TEST(ParseNumber, ReadsTypesOfOneByteAsNumbers) {
  EXPECT_EQ(orvo::ParseNumber<char>("65"), 'A');
  EXPECT_EQ(orvo::ParseNumber<char>("A"), std::nullopt);
  EXPECT_EQ(orvo::ParseNumber<signed char>("-128"), -128);
  EXPECT_EQ(orvo::ParseNumber<unsigned char>("256"), std::nullopt);
}

TEST(ParseNumber, RejectsEverythingElse) {
  using std::string_view_literals::operator""sv;
  for (const std::string_view text :
       {""sv,    " "sv,   "-"sv,     "+1"sv,  " 1"sv,   "1 "sv,  "42 "sv,
        "1\n"sv, "1.0"sv, "1."sv,    "1e3"sv, "0x10"sv, "--1"sv, "-+1"sv,
        "- 1"sv, "1-"sv,  "1,000"sv, "1\0"sv, "\0"sv,   "x"sv,   "\xb2"sv}) {
    SCOPED_TRACE(testing::PrintToString(text));
    EXPECT_EQ(orvo::ParseNumber<int>(text), std::nullopt);
    EXPECT_EQ(orvo::ParseNumber<unsigned long long>(text), std::nullopt);
  }
  EXPECT_EQ(orvo::ParseNumber<int>(std::string_view()), std::nullopt);
}

TEST(ParseNumber, TakesAllShortTextsThatAModelTakes) {
  ForEachText("-+019 .x", 4, [](const std::string& text) {
    const bool negative = !text.empty() && text[0] == '-';
    const std::string digits = text.substr(negative ? 1 : 0);
    if (digits.empty() ||
        digits.find_first_not_of("0123456789") != std::string::npos) {
      ASSERT_EQ(orvo::ParseNumber<short>(text), std::nullopt) << text;
    } else {
      ASSERT_EQ(orvo::ParseNumber<short>(text), std::stoi(text)) << text;
    }
  });
}

TEST(GetTokenSize, IsTheLengthOfASeparator) {
  EXPECT_EQ(orvo::GetTokenSize_('/'), 1u);
  EXPECT_EQ(orvo::GetTokenSize_('\0'), 1u);
}

TEST(GetTokenSize, IsOneFunctionOnly) {
  const auto get_token_size = &orvo::GetTokenSize_;
  EXPECT_EQ(get_token_size('/'), 1u);
}

TEST(SplitString, LooksAtNothingBehindAText) {
  std::string text = "a,b,c,d,e,f,g";
  text.resize(2);
  EXPECT_THAT(orvo::SplitString(text, ',', -1), ElementsAre("a", ""));
}

TEST(SplitString, CutsAtEverySeparator) {
  EXPECT_THAT(orvo::SplitString("a/b/c", '/', -1), ElementsAre("a", "b", "c"));
  EXPECT_THAT(orvo::SplitString<char>("ab", '/', -1), ElementsAre("ab"));
  EXPECT_THAT(orvo::SplitString("a/b", '/', INT_MIN), ElementsAre("a", "b"));
}

TEST(SplitString, KeepsEmptyParts) {
  EXPECT_THAT(orvo::SplitString("", '/', -1), ElementsAre(""));
  EXPECT_THAT(orvo::SplitString("/a/", '/', -1), ElementsAre("", "a", ""));
  EXPECT_THAT(orvo::SplitString("a//b", '/', -1), ElementsAre("a", "", "b"));
  EXPECT_THAT(orvo::SplitString("/", '/', -1), ElementsAre("", ""));
}

TEST(SplitString, StopsAfterTheLargestNumberOfCuts) {
  EXPECT_THAT(orvo::SplitString("a/b/c", '/', 1), ElementsAre("a", "b/c"));
  EXPECT_THAT(orvo::SplitString("a/b/c", '/', 0), ElementsAre("a/b/c"));
  EXPECT_THAT(orvo::SplitString("a/b/c", '/', 2), ElementsAre("a", "b", "c"));
  EXPECT_THAT(orvo::SplitString("a/b/c", '/', 3), ElementsAre("a", "b", "c"));
  EXPECT_THAT(orvo::SplitString("a/b/", '/', 1), ElementsAre("a", "b/"));
  EXPECT_THAT(orvo::SplitString("a/b", '/', INT_MAX), ElementsAre("a", "b"));
  EXPECT_THAT(orvo::SplitString("", '/', 0), ElementsAre(""));
}

TEST(SplitString, CutsAtNuls) {
  EXPECT_THAT(orvo::SplitString(WithNul("a", "b"), '\0', -1),
              ElementsAre("a", "b"));
  EXPECT_THAT(orvo::SplitString(WithNul("a", "/b"), '/', -1),
              ElementsAre(WithNul("a", ""), "b"));
}

TEST(SplitString, CutsAtAnyByte) {
  for (int code = 0; code < 256; ++code) {
    const char separator = static_cast<char>(code);
    const char other = static_cast<char>(code ^ 1);
    const std::string first(3, other);
    const std::string last(6, other);
    std::string text = first + separator;
    text += last;
    EXPECT_THAT(orvo::SplitString(text, separator, -1),
                ElementsAre(first, last))
        << code;
  }
}

// A separator of the caller's own.
struct LongSeparator : std::string {
  using std::string::string;
};
std::size_t GetTokenSize_(const LongSeparator& separator) {
  return separator.size();
}

TEST(SplitString, TakesALongerSeparator) {
  EXPECT_THAT(orvo::SplitString("a, b,c, ", LongSeparator(", "), -1),
              ElementsAre("a", "b,c", ""));
  EXPECT_THAT(orvo::SplitString("aaaaa", LongSeparator("aa"), -1),
              ElementsAre("", "", "a"));
  EXPECT_THAT(orvo::SplitString("a, b, c", LongSeparator(", "), 1),
              ElementsAre("a", "b, c"));
}

TEST(SplitString, ThrowsForAnEmptySeparator) {
  EXPECT_THAT([] { orvo::SplitString("a/b", LongSeparator(), -1); },
              ThrowsMessage<std::invalid_argument>(
                  Eq("token must have non-zero length.")));
}

Texts ModelSplit(const std::string& text, char separator, int maxsplit) {
  Texts parts(1);
  for (const char c : text) {
    const bool cut =
        maxsplit < 0 || parts.size() <= static_cast<std::size_t>(maxsplit);
    if (c == separator && cut) {
      parts.emplace_back();
    } else {
      parts.back() += c;
    }
  }
  return parts;
}

TEST(SplitString, CutsAllShortTextsLikeTheModel) {
  ForEachText("ab/", 8, [](const std::string& text) {
    for (const int maxsplit : {-1, 0, 1, 2, 5}) {
      ASSERT_EQ(orvo::SplitString(text, '/', maxsplit),
                ModelSplit(text, '/', maxsplit))
          << text << " " << maxsplit;
    }
  });
}

TEST(SplitString, CutsLongTextsLikeTheModel) {
  constexpr unsigned kSeed = 4711;
  SCOPED_TRACE(testing::Message() << "seed " << kSeed);
  std::mt19937 random(kSeed);
  for (int round = 0; round < 300; ++round) {
    std::string text(random() % 300, 'x');
    for (char& c : text) {
      if (random() % (1 + static_cast<unsigned>(round) % 40) == 0) c = '/';
    }
    for (const int maxsplit : {-1, 1, 7}) {
      ASSERT_EQ(orvo::SplitString(text, '/', maxsplit),
                ModelSplit(text, '/', maxsplit))
          << text << " " << maxsplit;
    }
  }
}

TEST(SplitString, AllocatesTheListOnce) {
  const std::string text = "a/b/c/d/e/f/g/h/i/j/k/l/m/n/o/p";
  const long before = CountAllocations();
  const Texts parts = orvo::SplitString(text, '/', -1);
  EXPECT_EQ(CountAllocations() - before, 1);
  EXPECT_EQ(parts.size(), 16u);
}

TEST(JoinString, PutsTheSeparatorBetweenItems) {
  EXPECT_EQ(orvo::JoinString({"a", "b"}, ", "), "a, b");
  EXPECT_EQ(orvo::JoinString({"a", "", "b"}, "-"), "a--b");
  EXPECT_EQ(orvo::JoinString({"a"}, ", "), "a");
  EXPECT_EQ(orvo::JoinString({"", ""}, "/"), "/");
}

TEST(JoinString, TakesEmptyLists) {
  EXPECT_EQ(orvo::JoinString({}, ", "), "");
  EXPECT_EQ(orvo::JoinString({""}, "-"), "");
  EXPECT_EQ(orvo::JoinString(Texts(), "-"), "");
}

TEST(JoinString, ConcatenatesWithAnEmptySeparator) {
  EXPECT_EQ(orvo::JoinString({"a", "", "bc"}, ""), "abc");
}

TEST(JoinString, KeepsNuls) {
  EXPECT_EQ(orvo::JoinString({WithNul("a", ""), "b"}, WithNul("", "")),
            std::string("a\0\0b", 4));
}

TEST(JoinString, JoinsARange) {
  Texts items = {"a", "", "b"};
  const std::string& one = "x";
  EXPECT_EQ(orvo::JoinString(items.begin(), items.end(), '/'), "a//b");
  EXPECT_EQ(orvo::JoinString(items.cbegin(), items.cend(), '/'), "a//b");
  EXPECT_EQ(orvo::JoinString(&one, &one + 1, '/'), "x");
  EXPECT_EQ(orvo::JoinString(&one, &one, '/'), "");
  EXPECT_EQ(orvo::JoinString(items.begin(), items.begin(), '/'), "");
  using Iterator = Texts::const_iterator;
  EXPECT_EQ((orvo::JoinString<Iterator, char>(items.begin(), items.end(), '/')),
            "a//b");
}

TEST(JoinString, JoinsRangesOfOtherTexts) {
  const std::array<const char*, 3> literals = {"a", "b", "c"};
  const std::forward_list<std::string_view> views = {"a", "b", "c"};
  EXPECT_EQ(orvo::JoinString(literals.begin(), literals.end(), '/'), "a/b/c");
  EXPECT_EQ(orvo::JoinString(views.begin(), views.end(), '/'), "a/b/c");
  EXPECT_EQ(orvo::JoinString(views.begin(), views.end(), LongSeparator(", ")),
            "a, b, c");
}

TEST(JoinString, JoinsARangeThatIsReadOnce) {
  using Words = std::istream_iterator<std::string>;
  for (const auto& [text, joined] : std::map<std::string, std::string>{
           {"one", "one"}, {"one two three", "one/two/three"}}) {
    std::istringstream words(text);
    words.imbue(std::locale::classic());
    EXPECT_EQ(orvo::JoinString(Words(words), Words(), '/'), joined);
  }
}

TEST(JoinString, AllocatesTheResultOnce) {
  for (const std::size_t length : {1u, 15u, 16u, 40u, 400u}) {
    const Texts items(20, std::string(length, 'x'));
    const std::string separator = ", ";
    long before = CountAllocations();
    EXPECT_EQ(orvo::JoinString(items, separator).size(), 20 * length + 38);
    EXPECT_EQ(CountAllocations() - before, 1);
    before = CountAllocations();
    EXPECT_EQ(orvo::JoinString(items.begin(), items.end(), '/').size(),
              20 * length + 19);
    EXPECT_EQ(CountAllocations() - before, 1);
  }
}

TEST(JoinString, MendsWhatSplitStringCut) {
  ForEachText("ab/", 6, [](const std::string& text) {
    const Texts parts = orvo::SplitString(text, '/', -1);
    ASSERT_EQ(orvo::JoinString(parts, "/"), text);
    ASSERT_EQ(orvo::JoinString(parts.begin(), parts.end(), '/'), text);
  });
}

// Items of many lengths, around those that a fast path copies as a block.
TEST(JoinString, JoinsItemsOfEveryLength) {
  const std::size_t sizes[] = {0,  1,  2,  3,  4,  7,  8,  9,  15,
                               16, 17, 31, 32, 33, 63, 64, 65, 100};
  std::string letters;
  for (int i = 0; i < 100; ++i) letters += static_cast<char>('!' + i % 94);
  for (std::size_t separator_size = 0; separator_size < 20; ++separator_size) {
    const std::string separator = letters.substr(0, separator_size);
    for (const std::size_t a_size : sizes) {
      for (const std::size_t b_size : sizes) {
        const std::string first = letters.substr(0, a_size);
        const std::string last = letters.substr(letters.size() - b_size);
        std::string joined = last + separator;
        joined.append(first).append(separator).append(last);
        ASSERT_EQ(orvo::JoinString({last, first, last}, separator), joined);
      }
    }
  }
}

TEST(TokenizeString, KeepsTheTokenBetweenThePieces) {
  EXPECT_THAT(orvo::tokenize_string("+", "1 + 2"), ElementsAre("1", "+", "2"));
  EXPECT_THAT(orvo::tokenize_string("+", "+1"), ElementsAre("+", "1"));
  EXPECT_THAT(orvo::tokenize_string("+", "1+"), ElementsAre("1", "+", ""));
  EXPECT_THAT(orvo::tokenize_string("+", "1++2"),
              ElementsAre("1", "+", "+", "2"));
  EXPECT_THAT(orvo::tokenize_string("+", "+"), ElementsAre("+", ""));
  EXPECT_THAT(orvo::tokenize_string("ab", "aabb"), ElementsAre("a", "ab", "b"));
}

TEST(TokenizeString, ReturnsTheStrippedTextWithoutTokens) {
  EXPECT_THAT(orvo::tokenize_string("+", " a b "), ElementsAre("a b"));
  EXPECT_THAT(orvo::tokenize_string("+", ""), ElementsAre(""));
  EXPECT_THAT(orvo::tokenize_string({}, " a "), ElementsAre("a"));
}

TEST(TokenizeString, StripsEachPieceOfSpacesOnly) {
  EXPECT_THAT(orvo::tokenize_string("+", " + \t+  "),
              ElementsAre("", "+", "\t", "+", ""));
  EXPECT_THAT(orvo::tokenize_string(" + ", "1 + 2"),
              ElementsAre("1", "+", "2"));
  EXPECT_THAT(orvo::tokenize_string(" ", "a b"), ElementsAre("a", "", "b"));
}

TEST(TokenizeString, TakesSeveralTokens) {
  EXPECT_THAT(orvo::tokenize_string({"(", ")"}, "f(x)"),
              ElementsAre("f", "(", "x", ")", ""));
  EXPECT_THAT(orvo::tokenize_string({"+"}, "1+2"), ElementsAre("1", "+", "2"));
  EXPECT_THAT(orvo::tokenize_string({"+", "-", "*"}, "1+2-3*4"),
              ElementsAre("1", "+", "2", "-", "3", "*", "4"));
}

TEST(TokenizeString, SearchesTokensInsideEarlierTokens) {
  EXPECT_THAT(orvo::tokenize_string({"==", "="}, "a==b"),
              ElementsAre("a", "=", "=", "", "b"));
  EXPECT_THAT(orvo::tokenize_string({"=", "=="}, "a==b"),
              ElementsAre("a", "=", "=", "b"));
  EXPECT_THAT(orvo::tokenize_string({"abc", "b"}, "abc"),
              ElementsAre("a", "b", "c", ""));
}

TEST(TokenizeString, TakesARangeOfTokens) {
  Texts tokens = {"(", ")"};
  const std::string text = "f(x)";
  EXPECT_THAT(orvo::tokenize_string(tokens.begin(), tokens.end(), text),
              ElementsAre("f", "(", "x", ")", ""));
  EXPECT_THAT(orvo::tokenize_string(tokens.cbegin(), tokens.cend(), text),
              ElementsAre("f", "(", "x", ")", ""));
  EXPECT_THAT(orvo::tokenize_string(tokens.data(), tokens.data() + 2, text),
              ElementsAre("f", "(", "x", ")", ""));
  EXPECT_THAT(orvo::tokenize_string<const std::string*>(
                  tokens.data(), tokens.data() + 1, text),
              ElementsAre("f", "(", "x)"));
}

TEST(TokenizeString, ThrowsForAnEmptyToken) {
  const auto matches = ThrowsMessage<std::invalid_argument>(
      Eq("token must have non-zero length."));
  EXPECT_THAT([] { orvo::tokenize_string("", "abc"); }, matches);
  EXPECT_THAT([] { orvo::tokenize_string("", ""); }, matches);
  EXPECT_THAT([] { orvo::tokenize_string({"", "b"}, "abc"); }, matches);
  EXPECT_THAT([] { orvo::tokenize_string({"b", "x", ""}, "abc"); }, matches);
}

TEST(TokenizeString, CutsAtNuls) {
  EXPECT_THAT(orvo::tokenize_string(std::string(1, '\0'), WithNul("a", "b")),
              ElementsAre("a", std::string(1, '\0'), "b"));
}

// The walk over a list of pieces that defines the result.
std::deque<std::string> ModelTokenize(const Texts& tokens,
                                      const std::string& text) {
  std::list<std::string> pieces = {text};
  for (const std::string& token : tokens) {
    for (auto piece = pieces.begin(); piece != pieces.end(); ++piece) {
      std::size_t found;
      while ((found = piece->find(token)) != std::string::npos) {
        if (found != 0) pieces.insert(piece, piece->substr(0, found));
        pieces.insert(piece, token);
        *piece = piece->substr(found + token.size());
      }
    }
  }
  std::deque<std::string> stripped;
  for (const std::string& piece : pieces)
    stripped.push_back(orvo::strip(piece));
  return stripped;
}

TEST(TokenizeString, CutsAllShortTextsLikeTheModel) {
  const std::vector<Texts> lists = {
      {"="},      {"=="},      {"==", "="},       {"=", "=="},
      {"a", "="}, {"aa"},      {"a=", "=a", "a"}, {"a=a", "="},
      {" "},      {"= ", "="}, {"=", "="},        {"a", " ", "="},
      {"a==a"},   {"b"},       {"===", "=="},
  };
  for (const Texts& tokens : lists) {
    ForEachText("a= ", 7, [&](const std::string& text) {
      ASSERT_EQ(orvo::tokenize_string(tokens.begin(), tokens.end(), text),
                ModelTokenize(tokens, text))
          << text << " " << tokens[0];
    });
  }
}

TEST(TokenizeString, CutsLongTextsLikeTheModel) {
  constexpr unsigned kSeed = 99;
  SCOPED_TRACE(testing::Message() << "seed " << kSeed);
  std::mt19937 random(kSeed);
  const Texts tokens = {"==", "aab", std::string(40, 'a'), "b"};
  for (int round = 0; round < 200; ++round) {
    std::string text(random() % 500, 'a');
    for (char& c : text) {
      if (random() % (1 + static_cast<unsigned>(round) % 60) == 0)
        c = "b= "[random() % 3];
    }
    ASSERT_EQ(orvo::tokenize_string(tokens.begin(), tokens.end(), text),
              ModelTokenize(tokens, text))
        << text;
  }
}

TEST(SingleLine, CountsWordsAndTheSpacesBetween) {
  orvo::SingleLine line;
  EXPECT_EQ(line.GetLineLength(), -1);
  EXPECT_EQ(line.PredictLength("abc"), 3);
  line.AddWord("abc");
  EXPECT_EQ(line.GetLineLength(), 3);
  EXPECT_EQ(line.PredictLength("de"), 6);
  line.AddWord("de");
  EXPECT_EQ(line.GetLineLength(), 6);
  EXPECT_EQ(line.GetLine(), "abc de");
}

TEST(SingleLine, CountsEmptyWords) {
  orvo::SingleLine line;
  EXPECT_EQ(line.PredictLength(""), 0);
  line.AddWord("");
  EXPECT_EQ(line.GetLineLength(), 0);
  EXPECT_EQ(line.PredictLength(""), 1);
  line.AddWord("");
  EXPECT_EQ(line.GetLine(), " ");
}

TEST(SingleLine, StartsAndRestartsEmpty) {
  orvo::SingleLine line;
  EXPECT_EQ(line.GetLine(), "");
  line.AddWord("abc");
  line.Reset();
  EXPECT_EQ(line.GetLineLength(), -1);
  EXPECT_EQ(line.GetLine(), "");
  line.AddWord("x");
  EXPECT_EQ(line.GetLine(), "x");
}

TEST(SingleLine, IsAPlainPairOfWordsAndLength) {
  static_assert(!std::is_polymorphic_v<orvo::SingleLine>);
  static_assert(std::is_copy_constructible_v<orvo::SingleLine>);
  struct Layout {
    std::vector<std::string> words;
    int length;
  };
  EXPECT_EQ(sizeof(orvo::SingleLine), sizeof(Layout));
}

TEST(FormatParagraph, FillsIndentedLines) {
  EXPECT_EQ(orvo::format_paragraph("aa bb cc dd \n", 2, 8),
            "  aa bb\n  cc dd\n  \n  \n");
  EXPECT_EQ(orvo::format_paragraph("aa bb c\n", 2, 7), "  aa bb\n  \n  c\n");
}

TEST(FormatParagraph, FillsALineToItsLastColumn) {
  EXPECT_EQ(orvo::format_paragraph("aa bb c \n", 0, 7), "aa bb c\n\n\n");
  EXPECT_EQ(orvo::format_paragraph("aa bb c \n", 0, 6), "aa bb\nc \n");
  EXPECT_EQ(orvo::format_paragraph("aa bb\n", 1, 7), " aa bb\n");
}

TEST(FormatParagraph, LeavesALineBehindAWordWithLineFeedThatDoesNotFit) {
  EXPECT_EQ(orvo::format_paragraph("aa bb cc\n", 2, 7), "  aa bb\n  \n  cc\n");
}

TEST(FormatParagraph, DropsTheLastLineWithoutLineFeed) {
  EXPECT_EQ(orvo::format_paragraph("", 0, 80), "");
  EXPECT_EQ(orvo::format_paragraph("one two", 0, 80), "");
  EXPECT_EQ(orvo::format_paragraph("one\n two", 0, 80), "one\n");
  EXPECT_EQ(orvo::format_paragraph("one two", 0, 5), "one");
}

TEST(FormatParagraph, EndsALineAtALineFeed) {
  EXPECT_EQ(orvo::format_paragraph("a\n b\n", 1, 80), " a\n\n b\n");
  EXPECT_EQ(orvo::format_paragraph("\n", 2, 80), "  \n");
}

TEST(FormatParagraph, KeepsTabsAndInnerLineFeedsInWords) {
  EXPECT_EQ(orvo::format_paragraph("a\tb c\nd e\n", 0, 5), "a\tb\nc\nd\n\ne\n");
}

TEST(FormatParagraph, KeepsRunsOfSpaces) {
  EXPECT_EQ(orvo::format_paragraph("a  b\n", 0, 80), "a  b\n");
  EXPECT_EQ(orvo::format_paragraph("  a\n", 1, 80), "   a\n");
  EXPECT_EQ(orvo::format_paragraph("a   b\n", 0, 3), "a  \n\nb\n");
}

TEST(FormatParagraph, PutsAWordThatIsTooWideOnALineOfItsOwn) {
  EXPECT_EQ(orvo::format_paragraph("abcdef\n", 1, 4), " abcdef\n");
  EXPECT_EQ(orvo::format_paragraph("a abcdef b c \n", 1, 4),
            " a\n abcdef\n b c\n \n \n");
  EXPECT_EQ(orvo::format_paragraph("abcdef ghijkl m \n", 0, 3),
            "abcdef\nghijkl\nm \n");
  EXPECT_EQ(orvo::format_paragraph("a abcdef\n", 0, 3), "a\n\nabcdef\n");
}

TEST(FormatParagraph, DropsATooWideLastWordWithoutLineFeed) {
  EXPECT_EQ(orvo::format_paragraph("a abcdef", 0, 3), "a");
}

TEST(FormatParagraph, TakesAnyWidthAndIndentation) {
  EXPECT_EQ(orvo::format_paragraph("a b\n", 0, 0), "a\n\nb\n");
  EXPECT_EQ(orvo::format_paragraph("a  b\n", 3, 2), "   a\n   \n   \n   b\n");
  EXPECT_EQ(orvo::format_paragraph("a b\n", 0, INT_MIN), "a\n\nb\n");
  EXPECT_EQ(orvo::format_paragraph("a b\n", INT_MIN, INT_MAX), "a b\n");
  EXPECT_EQ(orvo::format_paragraph("a b\n", -3, INT_MAX), "a b\n");
  EXPECT_EQ(orvo::format_paragraph("a b\n", -3, 0), "a\n\nb\n");
  EXPECT_EQ(orvo::format_paragraph("a b\n", -3, 1), "a b\n");
  EXPECT_EQ(orvo::format_paragraph("a b\n", 1, INT_MIN), " a\n \n b\n");
}

TEST(FormatParagraph, KeepsNuls) {
  EXPECT_EQ(orvo::format_paragraph(WithNul("a", "b c\n"), 0, 80),
            WithNul("a", "b c\n"));
}

// Word by word, with a line object; a line without words takes any word.
std::string ModelFormat(const std::string& text, int indent, int width) {
  Texts lines;
  orvo::SingleLine line;
  const auto close = [&] {
    lines.push_back(std::string(static_cast<std::size_t>(indent), ' ') +
                    line.GetLine());
    line.Reset();
  };
  const Texts words = ModelSplit(text, ' ', -1);
  for (std::size_t i = 0; i < words.size();) {
    const std::string& word = words[i];
    const bool ends_line = !word.empty() && word.back() == '\n';
    if (line.PredictLength(word) <= width - indent ||
        line.GetLineLength() == -1) {
      line.AddWord(word);
      ++i;
    } else {
      close();
    }
    if (ends_line) close();
  }
  std::string joined;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (i != 0) joined += '\n';
    joined += lines[i];
  }
  return joined;
}

TEST(FormatParagraph, WrapsAllShortTextsLikeTheModel) {
  ForEachText("a \n", 8, [](const std::string& text) {
    for (const int indent : {0, 1}) {
      for (int width = 0; width < 6; ++width) {
        ASSERT_EQ(orvo::format_paragraph(text, indent, width),
                  ModelFormat(text, indent, width))
            << text << " " << indent << " " << width;
      }
    }
  });
}

TEST(FormatParagraph, WrapsLongTextsLikeTheModel) {
  constexpr unsigned kSeed = 5;
  SCOPED_TRACE(testing::Message() << "seed " << kSeed);
  std::mt19937 random(kSeed);
  for (int round = 0; round < 200; ++round) {
    std::string text(random() % 1000, 'x');
    for (char& c : text) {
      if (random() % 5 == 0) c = random() % 10 == 0 ? '\n' : ' ';
    }
    const int indent = static_cast<int>(random() % 10);
    const int width = static_cast<int>(random() % 90);
    ASSERT_EQ(orvo::format_paragraph(text, indent, width),
              ModelFormat(text, indent, width))
        << text;
  }
}

TEST(Strings, NeedNoMemoryForAnswers) {
  std::string digits(500, '7');
  std::string letters(500, 'q');
  const std::string spaced = "   1234567.   ";
  int value = 0;
  const long before = CountAllocations();
  EXPECT_TRUE(orvo::StringIsDigits(digits));
  EXPECT_TRUE(orvo::StringIsAlpha(letters));
  EXPECT_TRUE(orvo::StringIsAlphaNumeric(letters));
  EXPECT_TRUE(orvo::StringIsInteger(digits));
  EXPECT_TRUE(orvo::StringIsFloat(digits));
  EXPECT_FALSE(orvo::endswith(letters, digits));
  EXPECT_TRUE(orvo::StringToNumber<int>(spaced, value));
  EXPECT_EQ(orvo::StringToNumber<int>(digits), INT_MAX);
  EXPECT_EQ(CountAllocations(), before);
  EXPECT_EQ(value, 1234567);
}

}  // namespace

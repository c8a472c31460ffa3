#include "orvo/str_gen.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cctype>
#include <climits>
#include <cstdio>
#include <locale>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using orvo::Pred;
using orvo::StrGen;
using testing::ElementsAre;

// What an initialiser of this program sees, before main() has begun.
const std::string chars_before_main = StrGen::ascii_chars_;

struct NamedSet {
  const char* name;
  std::string (*make)();
  std::string contents;
};

const std::vector<NamedSet>& NamedSets() {
  static const std::vector<NamedSet> sets = {
      {"alnum", StrGen::alnum,
       "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"},
      {"alpha", StrGen::alpha,
       "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"},
      {"cntrl", StrGen::cntrl,
       std::string("\x00\x01\x02\x03\x04\x05\x06\x07\x08\x09\x0a\x0b\x0c\x0d"
                   "\x0e\x0f\x10\x11\x12\x13\x14\x15\x16\x17\x18\x19\x1a\x1b"
                   "\x1c\x1d\x1e\x1f\x7f",
                   33)},
      {"digit", StrGen::digit, "0123456789"},
      {"graph", StrGen::graph,
       "!\"#$%&'()*+,-./0123456789:;<=>?@ABCDEFGHIJKLMNOPQRSTUVWXYZ[\\]^_`"
       "abcdefghijklmnopqrstuvwxyz{|}~"},
      {"lower", StrGen::lower, "abcdefghijklmnopqrstuvwxyz"},
      {"print", StrGen::print,
       " !\"#$%&'()*+,-./0123456789:;<=>?@ABCDEFGHIJKLMNOPQRSTUVWXYZ[\\]^_`"
       "abcdefghijklmnopqrstuvwxyz{|}~"},
      {"punct", StrGen::punct, "!\"#$%&'()*+,-./:;<=>?@[\\]^_`{|}~"},
      {"space", StrGen::space, "\t\n\v\f\r "},
      {"upper", StrGen::upper, "ABCDEFGHIJKLMNOPQRSTUVWXYZ"},
      {"xdigit", StrGen::xdigit, "0123456789ABCDEFabcdef"},
      {"upper_or_digit", StrGen::upper_or_digit,
       "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ"},
      {"lower_or_digit", StrGen::lower_or_digit,
       "0123456789abcdefghijklmnopqrstuvwxyz"},
  };
  return sets;
}

TEST(CreateAsciiChars, YieldsThe128CodesInAscendingOrder) {
  const std::string chars = orvo::create_ascii_chars();
  ASSERT_EQ(chars.size(), 128U);
  for (std::size_t code = 0; code < chars.size(); ++code) {
    EXPECT_EQ(static_cast<std::size_t>(chars[code]), code);
  }
}

TEST(AsciiChars, AreACopyOfTheStaticMember) {
  EXPECT_EQ(StrGen::ascii_chars(), orvo::create_ascii_chars());
  EXPECT_EQ(StrGen::ascii_chars_, orvo::create_ascii_chars());
  static_assert(std::is_same_v<decltype(StrGen::ascii_chars()), std::string>);
}

TEST(AsciiChars, AreThereBeforeTheProgramBegins) {
  EXPECT_EQ(chars_before_main, orvo::create_ascii_chars());
}

TEST(NamedSets, HaveTheContentsOfTheCLocale) {
  for (const NamedSet& set : NamedSets()) {
    SCOPED_TRACE(set.name);
    EXPECT_EQ(set.make(), set.contents);
  }
}

// In a locale of the C library the ASCII characters are what they are in all
// others, so this one is of C++: no character is in any class.
TEST(NamedSets, DoNotFollowTheLocaleOfTheApplication) {
  class NoClasses : public std::ctype<char> {
   public:
    NoClasses() : ctype(Table()) {}

   private:
    static const mask* Table() {
      static const mask table[table_size] = {};
      return table;
    }
  };
  const std::locale saved =
      std::locale::global(std::locale(std::locale::classic(), new NoClasses));
  EXPECT_FALSE(std::isalpha('a', std::locale()));
  for (const NamedSet& set : NamedSets()) {
    SCOPED_TRACE(set.name);
    EXPECT_EQ(set.make(), set.contents);
  }
  std::locale::global(saved);
}

TEST(NamedSets, AreTheSubsetsOfTheirClassifiers) {
  EXPECT_EQ(StrGen::subset(Pred(isalnum)), StrGen::alnum());
  EXPECT_EQ(StrGen::subset(Pred(isalpha)), StrGen::alpha());
  EXPECT_EQ(StrGen::subset(Pred(iscntrl)), StrGen::cntrl());
  EXPECT_EQ(StrGen::subset(Pred(isdigit)), StrGen::digit());
  EXPECT_EQ(StrGen::subset(Pred(isgraph)), StrGen::graph());
  EXPECT_EQ(StrGen::subset(Pred(islower)), StrGen::lower());
  EXPECT_EQ(StrGen::subset(Pred(isprint)), StrGen::print());
  EXPECT_EQ(StrGen::subset(Pred(ispunct)), StrGen::punct());
  EXPECT_EQ(StrGen::subset(Pred(isspace)), StrGen::space());
  EXPECT_EQ(StrGen::subset(Pred(isupper)), StrGen::upper());
  EXPECT_EQ(StrGen::subset(Pred(isxdigit)), StrGen::xdigit());
  EXPECT_EQ(StrGen::subset(Pred(
                [](int c) -> int { return StrGen::is_upper_or_digit(c); })),
            StrGen::upper_or_digit());
  EXPECT_EQ(StrGen::subset(Pred(
                [](int c) -> int { return StrGen::is_lower_or_digit(c); })),
            StrGen::lower_or_digit());
}

TEST(Subset, TakesAnyAnswerButZeroForYes) {
  EXPECT_EQ(StrGen::subset(Pred([](int c) {
              switch (c) {
                case 'n':
                  return -1;
                case 'b':
                  return 256;
                case 'm':
                  return INT_MIN;
                default:
                  return 0;
              }
            })),
            "bmn");
}

TEST(Subset, MayBeEmptyOrWhole) {
  EXPECT_EQ(StrGen::subset(Pred([](int) { return 0; })), "");
  EXPECT_EQ(StrGen::subset(Pred([](int) { return 1; })),
            orvo::create_ascii_chars());
}

std::vector<int> asked_codes;

TEST(Subset, AsksOnceForEachCodeInAscendingOrder) {
  asked_codes.clear();
  StrGen::subset(Pred([](int c) {
    asked_codes.push_back(c);
    return 1;
  }));
  ASSERT_EQ(asked_codes.size(), 128U);
  for (std::size_t code = 0; code < asked_codes.size(); ++code) {
    EXPECT_EQ(asked_codes[code], static_cast<int>(code));
  }
}

TEST(Pred, IsTrueForWhatTheClassifierRejects) {
  EXPECT_FALSE(Pred(isalpha)('a'));
  EXPECT_TRUE(Pred(isalpha)('1'));
}

TEST(Pred, WidensASignedCharacter) {
  asked_codes.clear();
  const Pred pred([](int c) {
    asked_codes.push_back(c);
    return 0;
  });
  EXPECT_TRUE(pred('\x7f'));
  EXPECT_TRUE(pred('\x80'));
  EXPECT_TRUE(pred('\xff'));
  EXPECT_THAT(asked_codes, ElementsAre(127, -128, -1));
}

TEST(Pred, IsNoLargerThanThePointerInIt) {
  static_assert(sizeof(Pred) == sizeof(int (*)(int)));
  static_assert(std::is_trivially_copyable_v<Pred>);
}

TEST(IsUpperOrDigit, AnswersForEveryNumber) {
  for (int c = -300; c <= 400; ++c) {
    SCOPED_TRACE(c);
    EXPECT_EQ(StrGen::is_upper_or_digit(c),
              (c >= 48 && c <= 57) || (c >= 65 && c <= 90));
  }
  for (const int c : {EOF, INT_MIN, INT_MAX, 'A' + 256, '0' - 256}) {
    SCOPED_TRACE(c);
    EXPECT_FALSE(StrGen::is_upper_or_digit(c));
  }
}

TEST(IsLowerOrDigit, AnswersForEveryNumber) {
  for (int c = -300; c <= 400; ++c) {
    SCOPED_TRACE(c);
    EXPECT_EQ(StrGen::is_lower_or_digit(c),
              (c >= 48 && c <= 57) || (c >= 97 && c <= 122));
  }
  for (const int c : {EOF, INT_MIN, INT_MAX, 'a' + 256, '0' - 256}) {
    SCOPED_TRACE(c);
    EXPECT_FALSE(StrGen::is_lower_or_digit(c));
  }
}

}  // namespace

#include "orvo/numeric_string.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <iomanip>
#include <locale>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "tests/support/allocations.h"
#include "tests/support/standard_library.h"

// What a program outside all namespaces sees.
std::string WrittenFromTheGlobalNamespace(const orvo::NumericString& text) {
  std::ostringstream stream;
  stream << text;
  return stream.str();
}

namespace application {

struct Point {};

// Hides the global inserters from the code of this namespace.
[[maybe_unused]] std::ostream& operator<<(std::ostream& stream, const Point&) {
  return stream << "point";
}

std::string Written(const orvo::NumericString& text) {
  using ::operator<<;
  std::ostringstream stream;
  stream << text;
  return stream.str();
}

}  // namespace application

namespace {

using orvo::Chunk;
using orvo::NaturalLess;
using orvo::NumericString;
using orvo::NumericStringCompare;
using orvo_test::CountAllocations;
using testing::ElementsAre;

// How a model reads the number that a run of digits is.
int ReadInt(const std::string& digits) {
  std::istringstream stream(digits);
  stream.imbue(std::locale::classic());
  int value = 0;
  stream >> value;
  return value;
}
std::string ReadAnySize(const std::string& digits) {
  // Numbers of the same width have the order of their texts.
  return std::string(2000 - digits.size(), '0') + digits;
}

// The order as its definition has it, word for word, with streams and copies.
template <auto read>
class Model {
 public:
  explicit Model(const std::string& text) {
    std::string run;
    for (const char c : text) {
      if (!run.empty() && IsDigit(run[0]) != IsDigit(c)) Close(&run);
      run += c;
    }
    if (!run.empty()) Close(&run);
  }

  bool operator<(const Model& other) const {
    const std::size_t common = std::min(runs_.size(), other.runs_.size());
    for (std::size_t i = 0; i < common; ++i) {
      if (Less(runs_[i], other.runs_[i])) return true;
      if (Less(other.runs_[i], runs_[i])) return false;
    }
    return runs_.size() < other.runs_.size();
  }

 private:
  struct Run {
    bool numeric;
    std::string text;
    decltype(read("")) value;
  };

  static bool IsDigit(char c) {
    return std::string("0123456789").find(c) != std::string::npos;
  }

  static bool Less(const Run& a, const Run& b) {
    return a.numeric && b.numeric ? a.value < b.value : a.text < b.text;
  }

  void Close(std::string* run) {
    const bool numeric = IsDigit((*run)[0]);
    runs_.push_back({numeric, *run, read(numeric ? *run : "0")});
    run->clear();
  }

  std::vector<Run> runs_;
};

std::vector<std::string> AllTexts(const std::string& alphabet,
                                  std::size_t longest) {
  std::vector<std::string> texts = {""};
  for (std::size_t i = 0; i < texts.size(); ++i) {
    if (texts[i].size() == longest) break;
    for (const char c : alphabet) texts.push_back(texts[i] + c);
  }
  return texts;
}

// Compares both forms of the order with the model, over all pairs.
void ExpectTheOrderOfTheModel(const std::vector<std::string>& texts) {
  const std::vector<Model<ReadInt>> models(texts.begin(), texts.end());
  const std::vector<NumericString> numeric(texts.begin(), texts.end());
  const NumericStringCompare compare;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    for (std::size_t j = 0; j < texts.size(); ++j) {
      const bool less = models[i] < models[j];
      if ((numeric[i] < numeric[j]) == less &&
          compare(texts[i], texts[j]) == less) {
        continue;
      }
      FAIL() << testing::PrintToString(texts[i])
             << (less ? " must" : " must not") << " come before "
             << testing::PrintToString(texts[j]);
    }
  }
}

// The same for the order of numbers of any length.
void ExpectTheNaturalOrderOfTheModel(const std::vector<std::string>& texts) {
  const std::vector<Model<ReadAnySize>> models(texts.begin(), texts.end());
  for (std::size_t i = 0; i < texts.size(); ++i) {
    for (std::size_t j = 0; j < texts.size(); ++j) {
      ASSERT_EQ(NaturalLess()(texts[i], texts[j]), models[i] < models[j])
          << testing::PrintToString(texts[i]) << " and "
          << testing::PrintToString(texts[j]);
    }
  }
}

// A text of digits and others in turn, its numbers near one another and near
// the limits of an int.
std::string RandomText(std::mt19937& random) {
  static const std::vector<std::string> pieces = {
      "0",          "00",         "1",          "7",    "9",    "10",
      "2147483646", "2147483647", "2147483648", "a",    "b",    "/",
      ":",          "-",          ".",          "\xe9", "\x80", "99999999999"};
  std::string text;
  for (auto left = random() % 6; left > 0; --left) {
    const std::string& piece = pieces[random() % pieces.size()];
    text += random() % 10 == 0 ? std::string(random() % 300, piece[0]) : piece;
    if (random() % 20 == 0) text += '\0';
  }
  return text;
}

TEST(Chunk, HoldsItsTextAndTheValueOfItsDigits) {
  const struct {
    const char* text;
    int value;
  } cases[] = {
      {"0", 0},
      {"7", 7},
      {"007", 7},
      {"2147483647", INT_MAX},
      {"2147483648", INT_MAX},
      {"00000000000000000000012", 12},
      {"99999999999999999999999", INT_MAX},
      {"-99999999999999999999999", INT_MIN},
      {"-5", -5},
      {"12.75", 12},
      {"x", 0},
      {"", 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    const std::string text = c.text;
    const Chunk chunk(text, true);
    EXPECT_TRUE(chunk.numeric());
    EXPECT_EQ(chunk.text(), c.text);
    EXPECT_EQ(chunk.value(), c.value);
  }
}

TEST(Chunk, OfTextHasNoValueButCanBeCopied) {
  for (const Chunk& copy : std::vector<Chunk>(2, Chunk("12", false))) {
    EXPECT_FALSE(copy.numeric());
    EXPECT_EQ(copy.text(), "12");
    EXPECT_EQ(copy.value(), 0);
  }
}

TEST(Chunk, ComparesNumbersByValue) {
  EXPECT_TRUE(Chunk("9", true) < Chunk("10", true));
  EXPECT_FALSE(Chunk("9", true) > Chunk("10", true));
  EXPECT_TRUE(Chunk("10", true) > Chunk("9", true));
  EXPECT_FALSE(Chunk("007", true) < Chunk("7", true));
  EXPECT_FALSE(Chunk("007", true) > Chunk("7", true));
  EXPECT_TRUE(Chunk("-5", true) < Chunk("2147483647", true));
  EXPECT_TRUE(Chunk("-9999999999", true) < Chunk("9999999999", true));
}

TEST(Chunk, ComparesAllElseByText) {
  EXPECT_TRUE(Chunk("a", false) < Chunk("b", false));
  EXPECT_TRUE(Chunk("a", false) < Chunk("aa", false));
  EXPECT_TRUE(Chunk("b", false) > Chunk("a", false));
  EXPECT_FALSE(Chunk("a", false) > Chunk("a", false));
  EXPECT_TRUE(Chunk("a", false) < Chunk("\xe9", false));
  EXPECT_TRUE(Chunk("10", true) < Chunk("9", false));
  EXPECT_TRUE(Chunk("9", false) > Chunk("10", true));
  EXPECT_FALSE(Chunk("7", true) < Chunk("7", false));
  EXPECT_TRUE(Chunk("007", false) < Chunk("7", false));
}

std::vector<std::string> Cut(const std::string& text) {
  std::vector<std::string> described;
  const NumericString numeric(text);
  for (const Chunk& chunk : numeric.chunks()) {
    described.push_back((chunk.numeric() ? "number " : "text ") + chunk.text());
  }
  return described;
}

TEST(NumericString, IsCutIntoNumbersAndTextsInTurn) {
  EXPECT_THAT(Cut(""), ElementsAre());
  EXPECT_THAT(Cut("a"), ElementsAre("text a"));
  EXPECT_THAT(Cut("1"), ElementsAre("number 1"));
  EXPECT_THAT(Cut("file10"), ElementsAre("text file", "number 10"));
  EXPECT_THAT(Cut("7up"), ElementsAre("number 7", "text up"));
  EXPECT_THAT(Cut("img12.png"),
              ElementsAre("text img", "number 12", "text .png"));
}

// The same, a character at a time.
std::vector<std::string> PlainCut(const std::string& text) {
  std::vector<std::string> described;
  bool in_number = false;
  for (const char c : text) {
    const bool digit = c >= '0' && c <= '9';
    if (described.empty() || digit != in_number) {
      described.emplace_back(digit ? "number " : "text ");
    }
    described.back() += c;
    in_number = digit;
  }
  return described;
}

TEST(NumericString, IsCutTheSameWhereverABlockOfCharactersEnds) {
  for (const std::size_t size : {1u, 7u, 8u, 9u, 15u, 16u, 17u, 18u, 33u}) {
    for (const char filler : {'a', '5'}) {
      for (std::size_t i = 0; i < size; ++i) {
        for (int code = 0; code < 256; ++code) {
          std::string text(size, filler);
          text[i] = static_cast<char>(code);
          ASSERT_EQ(Cut(text), PlainCut(text)) << testing::PrintToString(text);
        }
      }
    }
  }
}

TEST(NumericString, IsCutTheSameWhateverTheRuns) {
  constexpr unsigned kSeed = 256;
  SCOPED_TRACE(testing::Message() << "seed " << kSeed);
  std::mt19937 random(kSeed);  // NOLINT(cert-msc*): the same in every run
  for (int round = 0; round < 5000; ++round) {
    const std::string text = RandomText(random);
    ASSERT_EQ(Cut(text), PlainCut(text)) << testing::PrintToString(text);
    ASSERT_EQ(NumericString(text).chunks().capacity(), PlainCut(text).size());
  }
}

TEST(NumericString, TakesSignsPointsAndSpacesForText) {
  EXPECT_THAT(Cut("-5"), ElementsAre("text -", "number 5"));
  EXPECT_THAT(Cut("1.25"), ElementsAre("number 1", "text .", "number 25"));
  EXPECT_THAT(Cut("1 2"), ElementsAre("number 1", "text  ", "number 2"));
}

TEST(NumericString, TakesOnlyTheTenAsciiDigitsForNumbers) {
  for (int code = 0; code < 256; ++code) {
    SCOPED_TRACE(code);
    const std::string text(1, static_cast<char>(code));
    EXPECT_EQ(NumericString(text).chunks().at(0).numeric(),
              code >= 48 && code <= 57);
  }
}

TEST(NumericString, KeepsNulsAndBytesAbove127) {
  const std::string text(
      "a\0"
      "1\xe9\0"
      "2",
      6);
  EXPECT_THAT(Cut(text),
              ElementsAre(std::string("text a\0", 7), "number 1",
                          std::string("text \xe9\0", 7), "number 2"));
}

TEST(NumericString, ConvertsToTheTextAsGiven) {
  const NumericString numeric("x007");
  const std::string& text = numeric;
  EXPECT_EQ(text, "x007");
  EXPECT_EQ(&text, &numeric.text());
}

TEST(NumericString, IsAPlainValue) {
  static_assert(!std::is_polymorphic_v<NumericString>);
  static_assert(!std::is_polymorphic_v<Chunk>);
  NumericString a("a1");
  const NumericString b = a;
  a = NumericString("c2");
  EXPECT_EQ(b.text(), "a1");
  EXPECT_EQ(a.chunks().at(1).value(), 2);
}

TEST(NumericString, AllocatesOnlyItsChunksWhileTextsAreShort) {
  ORVO_NEEDS_LIBSTDCXX();
  const std::string text = "img0012take3.png";
  const std::string short_text = "take12.png";
  const long before = CountAllocations();
  const NumericString numeric(short_text);
  EXPECT_EQ(CountAllocations() - before, 1);

  const long before_long = CountAllocations();
  const NumericString long_numeric(text);
  EXPECT_EQ(CountAllocations() - before_long, 2);
}

TEST(NaturalOrder, PutsTextsInTheirPlaces) {
  const struct {
    const char* first;
    const char* second;
  } cases[] = {
      {"file9", "file10"},
      {"a2b", "a10b"},
      {"img12.png", "img102.png"},
      {"", "a"},
      {"", "0"},
      {"10", "a"},
      {"a", "a1"},
      {"-5", "-10"},
      {"9", "10"},
      {" 10", "9"},
      {"1.5", "1.25x"},
      {"a1", "ab1"},
      {"x7a", "x007b"},
      {"x007a", "x7b"},
      {"2147483646", "2147483648"},
      {"a", "\xe9"},
      {"a9", "a2147483648"},
      {"99999999999a", "2147483647b"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.first) + " < " + c.second);
    const std::string first = c.first;
    const std::string second = c.second;
    EXPECT_EQ(NumericString(first) < NumericString(second), true);
    EXPECT_EQ(NumericString(second) < NumericString(first), false);
    EXPECT_EQ(NumericStringCompare()(first, second), true);
    EXPECT_EQ(NumericStringCompare()(second, first), false);
  }
}

TEST(NaturalOrder, LeavesEqualNumbersTied) {
  const struct {
    const char* first;
    const char* second;
  } cases[] = {
      {"", ""},
      {"a", "a"},
      {"x007", "x7"},
      {"x007y01", "x7y1"},
      {"2147483647", "2147483648"},
      {"99999999999999999999", "2147483648"},
      {"0", "000"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.first) + " ~ " + c.second);
    const std::string first = c.first;
    const std::string second = c.second;
    EXPECT_FALSE(NumericString(first) < NumericString(second));
    EXPECT_FALSE(NumericString(second) < NumericString(first));
    EXPECT_FALSE(NumericStringCompare()(first, second));
    EXPECT_FALSE(NumericStringCompare()(second, first));
  }
}

TEST(NaturalOrder, HasNothingBeforeTheEmptyText) {
  for (const std::string& text : AllTexts("09a/\x80", 2)) {
    EXPECT_FALSE(NumericString(text) < NumericString(""));
    EXPECT_FALSE(NumericStringCompare()(text, ""));
  }
}

TEST(NaturalOrder, IsThatOfTheModelOverAllShortTexts) {
  ExpectTheOrderOfTheModel(AllTexts("019a/\xe9", 4));
  ExpectTheOrderOfTheModel(AllTexts("01a/", 5));
}

TEST(NaturalOrder, IsThatOfTheModelOverRandomTexts) {
  constexpr unsigned kSeed = 20261121;
  SCOPED_TRACE(testing::Message() << "seed " << kSeed);
  std::mt19937 random(kSeed);  // NOLINT(cert-msc*): the same in every run
  std::vector<std::string> texts(600);
  for (std::string& text : texts) text = RandomText(random);
  ExpectTheOrderOfTheModel(texts);
}

TEST(NaturalOrder, IsThatOfTheModelBehindACommonPart) {
  constexpr unsigned kSeed = 4096;
  SCOPED_TRACE(testing::Message() << "seed " << kSeed);
  std::mt19937 random(kSeed);  // NOLINT(cert-msc*): the same in every run
  for (const char filler : {'a', '0', '9'}) {
    for (int round = 0; round < 60; ++round) {
      const std::string common(random() % 1200, filler);
      std::vector<std::string> texts(12);
      for (std::string& text : texts) text = common + RandomText(random);
      ExpectTheOrderOfTheModel(texts);
    }
  }
}

// A relation over finitely many texts is a strict weak ordering exactly if
// ranks stand for it.
template <typename Compare>
void ExpectAStrictWeakOrdering(const Compare& compare) {
  std::vector<std::string> texts = AllTexts("019a/\xe9", 3);
  for (const char* text : {"10a", "1a", "9", "00000000000", "2147483647",
                           "2147483648", "2147483646a", "02147483648a"}) {
    texts.emplace_back(text);
  }
  std::sort(texts.begin(), texts.end(), compare);
  std::vector<int> ranks(texts.size());
  for (std::size_t i = 1; i < texts.size(); ++i) {
    ranks[i] = ranks[i - 1] + compare(texts[i - 1], texts[i]);
  }
  for (std::size_t i = 0; i < texts.size(); ++i) {
    for (std::size_t j = 0; j < texts.size(); ++j) {
      ASSERT_EQ(compare(texts[i], texts[j]), ranks[i] < ranks[j])
          << testing::PrintToString(texts[i]) << " and "
          << testing::PrintToString(texts[j]);
    }
  }
}

TEST(NaturalOrder, IsAStrictWeakOrdering) {
  ExpectAStrictWeakOrdering(NumericStringCompare());
  ExpectAStrictWeakOrdering(NaturalLess());
}

TEST(NumericStringEquality, ComparesTheTextsAsGiven) {
  EXPECT_TRUE(NumericString("x007") == NumericString("x007"));
  EXPECT_FALSE(NumericString("x007") == NumericString("x7"));
  EXPECT_FALSE(NumericString("2147483647") == NumericString("2147483648"));
  EXPECT_TRUE(NumericString("") == NumericString(""));
}

TEST(NumericStringCompare, OrdersSortsAndContainers) {
  std::vector<std::string> names = {"file10", "file9", "file1", "", "file"};
  std::sort(names.begin(), names.end(), NumericStringCompare());
  EXPECT_THAT(names, ElementsAre("", "file", "file1", "file9", "file10"));

  std::set<std::string, NumericStringCompare> set = {"x10", "x007", "x7"};
  EXPECT_THAT(set, ElementsAre("x007", "x10"));
  std::map<std::string, int, NumericStringCompare> map = {{"b2", 2}, {"b1", 1}};
  EXPECT_EQ(map.begin()->second, 1);
}

TEST(NumericStringCompare, AllocatesNothing) {
  const std::string a = std::string(1000, 'x') + "00012" + "tail";
  const std::string b = std::string(1000, 'x') + "12" + "tale";
  const NumericStringCompare compare;
  const long before = CountAllocations();
  const bool less = compare(a, b);
  EXPECT_EQ(CountAllocations() - before, 0);
  EXPECT_TRUE(less);
}

TEST(NaturalLess, ComparesNumbersOfAnyLength) {
  const std::string googol = "1" + std::string(100, '0');
  const std::string nines(100, '9');
  const struct {
    std::string first;
    std::string second;
  } cases[] = {
      {"2147483647", "2147483648"},
      {"99999999999a", "099999999999b"},
      {"x18446744073709551615", "x18446744073709551616"},
      {"9223372036854775807", "9223372036854775808"},
      {nines, googol},
      {"000" + nines, googol},
      {nines, "000" + googol},
      {"img" + googol + ".png", "img" + googol.substr(0, 100) + "1.png"},
      {"file9", "file10"},
      {"a", "a1"},
      {"-5", "-10"},
  };
  for (const auto& c : cases) {
    EXPECT_TRUE(NaturalLess()(c.first, c.second)) << c.first << c.second;
    EXPECT_FALSE(NaturalLess()(c.second, c.first)) << c.first << c.second;
  }
}

TEST(NaturalLess, DoesNotLookBehindAView) {
  const std::string_view text = "10";
  EXPECT_TRUE(NaturalLess()(text.substr(0, 0), "0"));
  EXPECT_FALSE(NaturalLess()("0", text.substr(0, 0)));
  EXPECT_TRUE(NaturalLess()(text.substr(0, 1), "5"));
  EXPECT_FALSE(NaturalLess()("5", text.substr(0, 1)));
}

TEST(NaturalLess, LeavesEqualNumbersTied) {
  const std::string number = "12345678901234567890";
  for (const std::string& same : {number, "0" + number, "0000" + number}) {
    EXPECT_FALSE(NaturalLess()("a" + number, "a" + same));
    EXPECT_FALSE(NaturalLess()("a" + same, "a" + number));
    EXPECT_TRUE(NaturalLess()("a" + same + "b", "a" + number + "c"));
  }
  EXPECT_FALSE(NaturalLess()("0", "000"));
  EXPECT_FALSE(NaturalLess()("000", "0"));
  EXPECT_FALSE(NaturalLess()("", ""));
}

TEST(NaturalLess, HasTheOrderOfTheModelOverAllShortTexts) {
  ExpectTheNaturalOrderOfTheModel(AllTexts("019a/\xe9", 3));
  ExpectTheNaturalOrderOfTheModel(AllTexts("01a", 5));
}

TEST(NaturalLess, HasTheOrderOfTheModelOverRandomTexts) {
  constexpr unsigned kSeed = 20261122;
  SCOPED_TRACE(testing::Message() << "seed " << kSeed);
  std::mt19937 random(kSeed);  // NOLINT(cert-msc*): the same in every run
  std::vector<std::string> texts(400);
  for (std::string& text : texts) text = RandomText(random);
  ExpectTheNaturalOrderOfTheModel(texts);
}

TEST(NaturalLess, DiffersFromItsNeighbourOnlyBeyondTheRangeOfInt) {
  const std::vector<std::string> texts = AllTexts("09a/", 4);
  for (const std::string& a : texts) {
    for (const std::string& b : texts) {
      ASSERT_EQ(NaturalLess()(a, b), NumericStringCompare()(a, b))
          << a << " and " << b;
    }
  }
  EXPECT_TRUE(NaturalLess()("2147483647", "2147483648"));
  EXPECT_FALSE(NumericStringCompare()("2147483647", "2147483648"));
}

TEST(NaturalLess, StopsAtTheEndOfAView) {
  const std::string_view text = "x123";
  EXPECT_FALSE(NaturalLess()(text.substr(0, 2), "x1"));
  EXPECT_FALSE(NaturalLess()("x1", text.substr(0, 2)));
  EXPECT_FALSE(NaturalLess()(std::string_view(), std::string_view()));
}

TEST(NaturalLess, OrdersContainersAndLooksUpAnyText) {
  const std::set<std::string, NaturalLess> photos = {
      "20261121093000", "20261121092959", "020261121092959"};
  EXPECT_THAT(photos, ElementsAre("20261121092959", "20261121093000"));
  EXPECT_EQ(photos.count(std::string_view("20261121093000")), 1U);
  EXPECT_EQ(photos.count("20261121093001"), 0U);
}

TEST(NaturalLess, AllocatesNothing) {
  const std::string a = std::string(1000, '1') + "tail";
  const std::string b = "0" + std::string(1000, '1') + "tale";
  const long before = CountAllocations();
  const bool less = NaturalLess()(a, b);
  EXPECT_EQ(CountAllocations() - before, 0);
  EXPECT_TRUE(less);
}

TEST(NumericStringInserter, IsFoundFromEveryNamespace) {
  EXPECT_EQ(WrittenFromTheGlobalNamespace(NumericString("x007")), "x007");
  EXPECT_EQ(application::Written(NumericString("x007")), "x007");
}

TEST(NumericStringInserter, WritesLikeAString) {
  using ::operator<<;
  const std::string text(
      "a\0"
      "1",
      3);
  std::ostringstream stream;
  stream << std::setw(6) << std::setfill('*') << std::left
         << NumericString("x7") << NumericString(text);
  EXPECT_EQ(stream.str(), "x7****" + text);
}

}  // namespace

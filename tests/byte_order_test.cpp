#include "orvo/byte_order.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <locale>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "tests/support/grouped_digits.h"
#include "tests/support/standard_library.h"

namespace {

using orvo::HexStringToNumber;
using orvo::NodeT;
using testing::ElementsAre;

static_assert(sizeof(NodeT) == 6);
static_assert(alignof(NodeT) == 1);
static_assert(std::is_trivially_copyable_v<NodeT>);

constexpr unsigned kSeed = 20261121;

TEST(ReverseByteOrder, ReversesTheArgumentAndReturnsIt) {
  std::uint32_t number = 0x11223344;
  EXPECT_EQ(orvo::reverse_byte_order(number), 0x44332211U);
  EXPECT_EQ(number, 0x44332211U);

  std::uint16_t small_number = 0xABCD;
  EXPECT_EQ(orvo::reverse_byte_order(small_number), 0xCDAB);
  EXPECT_EQ(small_number, 0xCDAB);
}

TEST(ReverseByteOrder, ReversesANodeAsOneUnit) {
  NodeT node{{1, 2, 3, 4, 5, 6}};
  const NodeT result = orvo::reverse_byte_order(node);
  EXPECT_THAT(node.bytes, ElementsAre(6, 5, 4, 3, 2, 1));
  EXPECT_THAT(result.bytes, ElementsAre(6, 5, 4, 3, 2, 1));
}

TEST(ReverseByteOrder, GivesTheFirstValueBackWhenAppliedTwice) {
  std::mt19937 random(kSeed);
  for (int i = 0; i < 1000; ++i) {
    const auto value = static_cast<std::uint32_t>(random());
    std::uint32_t copy = value;
    orvo::reverse_byte_order(copy);
    EXPECT_EQ(orvo::reverse_byte_order(copy), value);
  }
}

TEST(ReverseByteOrder, TakesAnyPlainValue) {
  std::uint64_t wide = 0x1122334455667788;
  EXPECT_EQ(orvo::reverse_byte_order(wide), 0x8877665544332211);

  struct Odd {
    char text[3];
  };
  EXPECT_THAT(orvo::reverse_byte_order_const(Odd{{'a', 'b', 'c'}}).text,
              ElementsAre('c', 'b', 'a'));
  EXPECT_EQ(orvo::reverse_byte_order_const<unsigned char>(7), 7);
}

TEST(ReverseByteOrderConst, LeavesTheArgument) {
  const std::uint32_t number = 0x11223344;
  EXPECT_EQ(orvo::reverse_byte_order_const(number), 0x44332211U);
  EXPECT_EQ(number, 0x11223344U);
}

std::uint64_t HashByteByByte(const unsigned char* bytes, std::size_t size) {
  std::uint64_t sum = 5381;
  for (std::size_t i = 0; i < size; ++i) sum = sum * 33 + bytes[i];
  return sum;
}

TEST(Hash, IsTheTimes33HashOfTheBytes) {
  EXPECT_EQ(orvo::hash("", 0), 5381U);
  EXPECT_EQ(orvo::hash("a", 1), 177670U);
  EXPECT_EQ(orvo::hash("ab", 2), 5863208U);
}

TEST(Hash, TakesANullPointerWithoutBytes) {
  EXPECT_EQ(orvo::hash(nullptr, 0), 5381U);
}

TEST(Hash, TakesBytesAsUnsigned) {
  EXPECT_EQ(orvo::hash("\xff", 1), 177828U);
}

TEST(Hash, WrapsModulo2To64) {
  const std::string text(100, '\xff');
  EXPECT_EQ(orvo::hash(text.data(), text.size()), 1793448378871395425U);
}

TEST(Hash, EqualsTheByteLoopForEveryLengthAndAlignment) {
  SCOPED_TRACE(kSeed);
  std::mt19937 random(kSeed);
  std::vector<unsigned char> bytes(4096 + 16);
  for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(random());
  for (std::size_t size = 0; size <= 4096; ++size) {
    // Copied to its exact size, so that reading too far is noticed.
    const std::size_t start = size % 16;
    const std::vector<unsigned char> exact(bytes.data(),
                                           bytes.data() + start + size);
    ASSERT_EQ(orvo::hash(exact.data() + start, size),
              HashByteByByte(exact.data() + start, size))
        << size;
  }
  for (std::size_t start = 0; start < 16; ++start) {
    for (const std::size_t size : {15U, 16U, 63U, 64U, 65U, 200U, 1024U}) {
      ASSERT_EQ(orvo::hash(&bytes[start], size),
                HashByteByByte(&bytes[start], size))
          << start << ' ' << size;
    }
  }
}

TEST(Hash, HoldsTheLargestPartialSums) {
  const std::vector<unsigned char> bytes(4096, 0xff);
  for (std::size_t size = 0; size <= bytes.size(); ++size) {
    ASSERT_EQ(orvo::hash(bytes.data(), size),
              HashByteByByte(bytes.data(), size))
        << size;
  }
}

TEST(HexStringToNumber, ReadsDigitsOfEitherCase) {
  EXPECT_EQ(HexStringToNumber<std::uint32_t>("ff"), 255U);
  EXPECT_EQ(HexStringToNumber<std::uint32_t>("FF"), 255U);
  EXPECT_EQ(HexStringToNumber<std::uint16_t>("aBcD"), 0xabcd);
  EXPECT_EQ(HexStringToNumber<std::uint64_t>("0123456789abcdef"),
            0x0123456789abcdefU);
  EXPECT_EQ(HexStringToNumber<unsigned long long>("fedcba9876543210"),
            0xfedcba9876543210U);
}

TEST(HexStringToNumber, RemovesSpacesAround) {
  EXPECT_EQ(HexStringToNumber<std::uint32_t>("  ff  "), 255U);
}

TEST(HexStringToNumber, SkipsOtherWhiteSpaceInFront) {
  EXPECT_EQ(HexStringToNumber<std::uint32_t>(" \t\n\v\f\rff"), 255U);
}

TEST(HexStringToNumber, AcceptsAPrefix) {
  EXPECT_EQ(HexStringToNumber<std::uint32_t>("0x1A"), 26U);
  EXPECT_EQ(HexStringToNumber<std::uint32_t>("0X1a"), 26U);
}

TEST(HexStringToNumber, IsZeroWithoutDigits) {
  for (const char* text : {"", " ", "x", "0x", "-", "+", "g", "\t", "ÿ"}) {
    SCOPED_TRACE(text);
    EXPECT_EQ(HexStringToNumber<std::uint32_t>(text), 0U);
  }
}

TEST(HexStringToNumber, IgnoresWhatFollowsTheDigits) {
  EXPECT_EQ(HexStringToNumber<std::uint32_t>("1fz"), 0x1fU);
  EXPECT_EQ(HexStringToNumber<std::uint32_t>("1 f"), 1U);
  EXPECT_EQ(HexStringToNumber<std::uint32_t>(std::string("1\0f", 3)), 1U);
}

TEST(HexStringToNumber, SaturatesWhenTheNumberIsTooLarge) {
  EXPECT_EQ(HexStringToNumber<std::uint16_t>("ffff"), 0xffff);
  EXPECT_EQ(HexStringToNumber<std::uint16_t>("10000"), 0xffff);
  EXPECT_EQ(HexStringToNumber<std::uint32_t>("ffffffff"), 0xffffffffU);
  EXPECT_EQ(HexStringToNumber<std::uint32_t>("100000000"), 0xffffffffU);
  EXPECT_EQ(HexStringToNumber<std::uint64_t>("ffffffffffffffff"), UINT64_MAX);
  EXPECT_EQ(HexStringToNumber<std::uint64_t>("10000000000000000"), UINT64_MAX);
  EXPECT_EQ(HexStringToNumber<std::uint64_t>(std::string(100000, '9')),
            UINT64_MAX);
}

TEST(HexStringToNumber, NegatesAfterAMinusSign) {
  EXPECT_EQ(HexStringToNumber<std::uint16_t>("-1"), 0xffff);
  EXPECT_EQ(HexStringToNumber<std::uint16_t>("-fffe"), 2);
  EXPECT_EQ(HexStringToNumber<std::uint32_t>("+12"), 0x12U);
}

TEST(HexStringToNumber, IgnoresTheLocaleOfTheApplication) {
  const orvo_test::ScopedGroupedDigits locale;
  EXPECT_EQ(HexStringToNumber<std::uint32_t>("12345678"), 0x12345678U);
  EXPECT_EQ(HexStringToNumber<std::uint32_t>(" 0x12345678 "), 0x12345678U);
  EXPECT_EQ(HexStringToNumber<std::uint32_t>("1.234"), 1U);
}

// What the result has to be: the standard's own extraction.
template <typename T>
T ExtractFromStream(const std::string& text) {
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string::npos) return 0;
  static std::stringstream stream = [] {
    std::stringstream classic;
    classic.imbue(std::locale::classic());
    classic >> std::hex;
    return classic;
  }();
  stream.clear();
  stream.str(text.substr(first, text.find_last_not_of(' ') - first + 1));
  T value = 0;
  stream >> value;
  return value;
}

void ExpectAsFromStream(const std::string& text) {
  ASSERT_EQ(HexStringToNumber<std::uint16_t>(text),
            ExtractFromStream<std::uint16_t>(text))
      << '"' << text << '"';
  ASSERT_EQ(HexStringToNumber<std::uint32_t>(text),
            ExtractFromStream<std::uint32_t>(text))
      << '"' << text << '"';
  ASSERT_EQ(HexStringToNumber<unsigned long>(text),
            ExtractFromStream<unsigned long>(text))
      << '"' << text << '"';
  ASSERT_EQ(HexStringToNumber<unsigned long long>(text),
            ExtractFromStream<unsigned long long>(text))
      << '"' << text << '"';
}

void ExpectAllTextsAsFromStream(std::string_view alphabet, std::size_t size) {
  std::vector<std::string> texts = {""};
  for (std::size_t i = 0; i < texts.size(); ++i) {
    ASSERT_NO_FATAL_FAILURE(ExpectAsFromStream(texts[i]));
    if (texts[i].size() == size) continue;
    for (const char c : alphabet) texts.push_back(texts[i] + c);
  }
}

TEST(HexStringToNumber, ReadsEveryShortTextAsAStreamDoes) {
  ORVO_NEEDS_LIBSTDCXX();
  ExpectAllTextsAsFromStream("0xXf9g+- \t,.", 4);
  ExpectAllTextsAsFromStream("0x5-", 7);
  for (int byte = 0; byte < 256; ++byte) {
    const std::string text(1, static_cast<char>(byte));
    ASSERT_NO_FATAL_FAILURE(ExpectAsFromStream(text));
    ASSERT_NO_FATAL_FAILURE(ExpectAsFromStream("1" + text + "2"));
  }
}

TEST(HexStringToNumber, ReadsTextsAroundTheLimitsAsAStreamDoes) {
  for (const char* const digits :
       {"ffff", "10000", "10001", "ffffffff", "100000000", "100000001",
        "ffffffffffffffff", "10000000000000000", "10000000000000001",
        "20000000000000003", "00000000000000001", "fffffffffffffffff"}) {
    for (const char* const sign : {"", "+", "-", "0x", "-0x", "0x-"}) {
      ExpectAsFromStream(sign + std::string(digits));
    }
  }
}

TEST(HexStringToNumber, ReadsRandomTextsAsAStreamDoes) {
  ORVO_NEEDS_LIBSTDCXX();
  SCOPED_TRACE(kSeed);
  std::mt19937 random(kSeed);
  constexpr std::string_view kAlphabet = "00xf1a-+ gFFfffff0000";
  for (int i = 0; i < 50000; ++i) {
    std::string text(random() % 24, ' ');
    for (char& c : text) c = kAlphabet[random() % kAlphabet.size()];
    ASSERT_NO_FATAL_FAILURE(ExpectAsFromStream(text));
  }
}

}  // namespace

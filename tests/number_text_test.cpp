#include "internal/number_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <ios>
#include <locale>
#include <random>
#include <sstream>
#include <string>

#include "tests/support/standard_library.h"
#include "tests/support/texts.h"

namespace {

using orvo::internal::ReadNumber;
using orvo_test::ForEachText;

template <unsigned kBase, typename Integer>
Integer Read(std::string_view text) {
  Integer value = 77;
  ReadNumber<kBase>(text, value);
  return value;
}

template <unsigned kBase, typename Integer>
void ExpectToReadLikeAStream(const std::string& text) {
  static std::stringstream stream;
  stream.clear();
  stream.imbue(std::locale::classic());
  stream.setf(kBase == 16 ? std::ios_base::hex : std::ios_base::dec,
              std::ios_base::basefield);
  stream.str(text);
  Integer expected = 77;
  stream >> expected;
  ASSERT_EQ((Read<kBase, Integer>(text)), expected) << text;
}

TEST(ReadNumber, TellsBlankTextFromOtherText) {
  int value = 77;
  EXPECT_FALSE(ReadNumber<10>("", value));
  EXPECT_FALSE(ReadNumber<10>(" \t\n\v\f\r", value));
  EXPECT_EQ(value, 77);
  EXPECT_TRUE(ReadNumber<10>("x", value));
  EXPECT_EQ(value, 0);
}

TEST(ReadNumber, ReadsHexadecimalText) {
  EXPECT_EQ((Read<16, std::uint32_t>("ff")), 255u);
  EXPECT_EQ((Read<16, std::uint32_t>("0x1A")), 26u);
  EXPECT_EQ((Read<16, std::uint32_t>("0X1a")), 26u);
  EXPECT_EQ((Read<16, std::uint32_t>("1fz")), 31u);
  EXPECT_EQ((Read<16, std::uint32_t>("0x")), 0u);
  EXPECT_EQ((Read<16, std::uint32_t>("0xg")), 0u);
  EXPECT_EQ((Read<16, std::uint32_t>("00x1")), 0u);
  EXPECT_EQ((Read<16, std::uint32_t>("0x0x1")), 0u);
  EXPECT_EQ((Read<16, std::uint32_t>("x1")), 0u);
  EXPECT_EQ((Read<16, int>("-0x10")), -16);
}

TEST(ReadNumber, StopsAtTheLimits) {
  EXPECT_EQ((Read<16, std::uint16_t>("10000")), 65535);
  EXPECT_EQ((Read<16, std::uint32_t>("100000000")), 4294967295u);
  EXPECT_EQ((Read<16, std::uint64_t>("10000000000000000")),
            18446744073709551615u);
  EXPECT_EQ((Read<16, std::uint16_t>("-10000")), 65535);
  EXPECT_EQ((Read<10, std::uint64_t>("18446744073709551615")),
            18446744073709551615u);
  EXPECT_EQ((Read<10, std::uint64_t>("18446744073709551616")),
            18446744073709551615u);
}

// Beyond 64 bits a number begins again at small ones.
TEST(ReadNumber, KnowsANumberBeyond64BitsFromASmallOne) {
  EXPECT_EQ((Read<16, std::uint16_t>("10000000000000001")), 65535);
  EXPECT_EQ((Read<16, std::uint32_t>("10000000000000001")), 4294967295u);
  EXPECT_EQ((Read<16, unsigned long>("10000000000000001")),
            18446744073709551615u);
  EXPECT_EQ((Read<16, unsigned long long>("10000000000000001")),
            18446744073709551615u);
  EXPECT_EQ((Read<16, int>("10000000000000001")), 2147483647);
  EXPECT_EQ((Read<16, int>("00000000000000001")), 1);
}

TEST(ReadNumber, NegatesUnsignedNumbers) {
  EXPECT_EQ((Read<16, std::uint16_t>("-1")), 65535);
  EXPECT_EQ((Read<16, std::uint32_t>("-ff")), 4294967041u);
  EXPECT_EQ((Read<10, std::uint64_t>("-1")), 18446744073709551615u);
}

TEST(ReadNumber, ReadsAllShortTextsLikeAStream) {
  ORVO_NEEDS_LIBSTDCXX();
  ForEachText("+-09fxX. \t", 5, [](const std::string& text) {
    ExpectToReadLikeAStream<16, std::uint16_t>(text);
    ExpectToReadLikeAStream<10, int>(text);
  });
}

TEST(ReadNumber, ReadsRandomTextsLikeAStream) {
  ORVO_NEEDS_LIBSTDCXX();
  constexpr unsigned kSeed = 8151;
  SCOPED_TRACE(testing::Message() << "seed " << kSeed);
  std::mt19937 random(kSeed);
  const char digits[] = "0123456789abcdefABCDEFxXg+- ";
  for (int round = 0; round < 20000; ++round) {
    // Mostly digits that both bases have, so that long numbers come up too.
    const std::size_t variety = round % 3 == 0 ? 28 : 10 + random() % 13;
    std::string text(random() % 2, "+-"[random() % 2]);
    if (random() % 4 == 0) text += "0x";
    for (std::size_t size = random() % 24; size > 0; --size) {
      text += digits[random() % variety];
    }
    ExpectToReadLikeAStream<16, std::uint16_t>(text);
    ExpectToReadLikeAStream<16, std::uint32_t>(text);
    ExpectToReadLikeAStream<16, std::uint64_t>(text);
    ExpectToReadLikeAStream<16, short>(text);
    ExpectToReadLikeAStream<16, int>(text);
    ExpectToReadLikeAStream<16, long>(text);
    ExpectToReadLikeAStream<10, std::uint16_t>(text);
    ExpectToReadLikeAStream<10, long long>(text);
    if (testing::Test::HasFailure()) return;
  }
}

}  // namespace

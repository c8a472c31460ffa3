#include "orvo/uuid.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <iomanip>
#include <optional>
#include <random>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_set>

#include "tests/support/grouped_digits.h"

namespace {

using orvo::UUID;

static_assert(sizeof(UUID) == 16);
static_assert(std::is_trivially_copyable_v<UUID>);
static_assert(std::is_constructible_v<UUID, const unsigned char*>);
static_assert(std::is_constructible_v<UUID, unsigned char (&)[16]>);
static_assert(std::is_constructible_v<UUID, std::istream&, bool>);
// A literal is a text, and nothing else points to bytes.
static_assert(std::is_constructible_v<UUID, const char (&)[37]>);
static_assert(!std::is_constructible_v<UUID, const signed char*>);
static_assert(!std::is_constructible_v<UUID, const void*>);
static_assert(!std::is_constructible_v<UUID, const UUID*>);

constexpr unsigned kSeed = 20261121;
constexpr const char* kText = "12345678-9abc-def0-0123-456789abcdef";
constexpr unsigned char kBytes[16] = {0x12, 0x34, 0x56, 0x78, 0x9a, 0xbc,
                                      0xde, 0xf0, 0x01, 0x23, 0x45, 0x67,
                                      0x89, 0xab, 0xcd, 0xef};
constexpr unsigned char kLittleEndianBytes[16] = {
    0x78, 0x56, 0x34, 0x12, 0xbc, 0x9a, 0xf0, 0xde,
    0x01, 0x23, 0x45, 0x67, 0x89, 0xab, 0xcd, 0xef};

std::string TextOf(const unsigned char (&bytes)[16]) {
  return std::string(reinterpret_cast<const char*>(bytes), sizeof bytes);
}

std::string Parse(const std::string& text) {
  return UUID(text).uuid_string();
}

TEST(UUID, IsNilAtFirst) {
  EXPECT_EQ(UUID().uuid_string(), "00000000-0000-0000-0000-000000000000");
}

TEST(UUID, TakesBytesInNetworkOrder) {
  EXPECT_EQ(UUID(kBytes).uuid_string(), kText);
  UUID uuid;
  uuid.bytes(kBytes);
  EXPECT_EQ(uuid.uuid_string(), kText);
}

TEST(UUID, TakesBytesInTheLittleEndianLayout) {
  UUID uuid;
  uuid.bytes_le(kLittleEndianBytes);
  EXPECT_EQ(uuid.uuid_string(), kText);
}

TEST(UUID, TakesATextForALiteral) {
  EXPECT_EQ(UUID("12345678-9abc-def0-0123-456789abcdef"), UUID(kBytes));
}

TEST(UUID, ChangesTheEndiannessOfTheFirstThreeFields) {
  UUID uuid(kBytes);
  uuid.change_endianness();
  EXPECT_EQ(uuid.uuid_string(), "78563412-bc9a-f0de-0123-456789abcdef");
  uuid.change_endianness();
  EXPECT_EQ(uuid.uuid_string(), kText);
}

TEST(UUID, PrintsEveryByteInTwoDigits) {
  for (int byte = 0; byte < 256; ++byte) {
    unsigned char bytes[16];
    std::fill(std::begin(bytes), std::end(bytes),
              static_cast<unsigned char>(byte));
    std::string expected = UUID().uuid_string();
    bool is_high = true;
    for (char& c : expected) {
      if (c == '-') continue;
      c = "0123456789abcdef"[is_high ? byte / 16 : byte % 16];
      is_high = !is_high;
    }
    EXPECT_EQ(UUID(bytes).uuid_string(), expected);
  }
}

TEST(UUID, ParsesItsOwnText) {
  EXPECT_EQ(Parse(kText), kText);
  EXPECT_EQ(Parse("12345678-9ABC-DEF0-0123-456789ABCDEF"), kText);
}

TEST(UUIDParse, TakesTheTextFormInEitherLetterCase) {
  for (const char* text : {kText, "12345678-9ABC-DEF0-0123-456789ABCDEF",
                           "12345678-9aBc-DeF0-0123-456789AbCdEf"}) {
    EXPECT_EQ(UUID::Parse(text), UUID(kBytes)) << text;
  }
  EXPECT_EQ(UUID::Parse(std::string(kText)), UUID(kBytes));
  EXPECT_EQ(UUID::Parse(std::string_view(kText)), UUID(kBytes));
}

TEST(UUIDParse, RejectsWhatIsTakenLeniently) {
  for (const char* text : {
           "1-2-3-4-5",
           "0x345678-9abc-def0-0123-456789abcdef",
           " 2345678-9abc-def0-0123-456789abcdef",
           " 12345678-9abc-def0-0123-456789abcdef",
           "12345678-9abc-def0-0123-456789abcdef ",
           "12345678-9abc-def0-0123-456789abcdef-",
           "12345678-9abc-def0-0123-456789abcde",
           "123456789-abc-def0-0123-456789abcdef",
           "{2345678-9abc-def0-0123-456789abcde}",
           "12345678-9abc-def0-0123-456789abcdeg",
       }) {
    EXPECT_EQ(UUID::Parse(text), std::nullopt) << text;
  }
}

TEST(UUIDParse, RejectsTextsThatAreNoUUID) {
  EXPECT_EQ(UUID::Parse(""), std::nullopt);
  EXPECT_EQ(UUID::Parse(std::string_view()), std::nullopt);
  EXPECT_EQ(UUID::Parse("{12345678-9abc-def0-0123-456789abcdef}"),
            std::nullopt);
  EXPECT_EQ(UUID::Parse("12345678_9abc_def0_0123_456789abcdef"), std::nullopt);
  EXPECT_EQ(UUID::Parse(std::string(36, '-')), std::nullopt);
  EXPECT_EQ(UUID::Parse(std::string(kText) + '\0'), std::nullopt);
}

TEST(UUIDParse, LooksAtEveryCharacter) {
  for (std::size_t place = 0; place < 36; ++place) {
    const bool is_hyphen = kText[place] == '-';
    for (int code = 0; code < 256; ++code) {
      std::string text = kText;
      text[place] = static_cast<char>(code);
      const bool is_digit =
          code != 0 && std::strchr("0123456789abcdefABCDEF", code) != nullptr;
      ASSERT_EQ(UUID::Parse(text).has_value(),
                is_hyphen ? code == '-' : is_digit)
          << place << " " << code;
    }
  }
}

TEST(UUID, ReplacesItsValueByATextsValue) {
  UUID uuid(kBytes);
  uuid.uuid_string("00000001-0002-0003-0004-000000000005");
  EXPECT_EQ(uuid.uuid_string(), "00000001-0002-0003-0004-000000000005");
}

TEST(UUID, ParsesGroupsLeniently) {
  const struct {
    const char* text;
    const char* uuid;
  } cases[] = {
      {"1-2-3-4-5", "00000001-0002-0003-0004-000000000005"},
      {" 1 - 2 - 3 - 4 - 5 ", "00000001-0002-0003-0004-000000000005"},
      {"\t1-\n2-\r3-\v4-\f5", "00000001-0002-0003-0004-000000000005"},
      {"0x1-0X2-0x3-0x4-0xabc", "00000001-0002-0003-0004-000000000abc"},
      {"+1-+2-+3-+4-+5", "00000001-0002-0003-0004-000000000005"},
      {"----", "00000000-0000-0000-0000-000000000000"},
      {"x-y-z-?-!", "00000000-0000-0000-0000-000000000000"},
      {"1g-2g-3g-4g-5g", "00000001-0002-0003-0004-000000000005"},
      {"{12345678-9abc-def0-0123-456789abcdef}",
       "00000000-9abc-def0-0123-456789abcdef"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Parse(c.text), c.uuid) << c.text;
  }
}

TEST(UUID, SaturatesTheFirstFourGroups) {
  EXPECT_EQ(Parse("123456789-0-0-0-0"), "ffffffff-0000-0000-0000-000000000000");
  EXPECT_EQ(Parse("0-fffff-12345-10000-0"),
            "00000000-ffff-ffff-ffff-000000000000");
  EXPECT_EQ(Parse("0000000001-00002-00003-00004-5"),
            "00000001-0002-0003-0004-000000000005");
}

TEST(UUID, TakesTheLow48BitsOfTheFifthGroup) {
  EXPECT_EQ(Parse("0-0-0-0-fedc456789abcdef"),
            "00000000-0000-0000-0000-456789abcdef");
  EXPECT_EQ(Parse("0-0-0-0-10000000000000000"),
            "00000000-0000-0000-0000-ffffffffffff");
}

TEST(UUID, IgnoresWhatFollowsTheFifthGroup) {
  EXPECT_EQ(Parse("1-2-3-4-5-6"), "00000001-0002-0003-0004-000000000005");
  EXPECT_EQ(Parse("1-2-3-4-5-"), "00000001-0002-0003-0004-000000000005");
  EXPECT_EQ(Parse(std::string(kText) + "-6-7"), kText);
  EXPECT_EQ(Parse("1-2-3-4-5" + std::string(100000, '-')),
            "00000001-0002-0003-0004-000000000005");
}

TEST(UUID, ThrowsWhenGroupsAreMissing) {
  for (const char* text : {"", "1", "1-2", "1-2-3", "1-2-3-4",
                           "123456789abcdef00123456789abcdef"}) {
    SCOPED_TRACE(text);
    EXPECT_THROW(UUID{text}, std::out_of_range);
    EXPECT_THROW(UUID().uuid_string(text), std::out_of_range);
  }
}

TEST(UUID, KeepsTheGroupsBeforeAMissingOne) {
  const struct {
    const char* text;
    const char* uuid;
  } cases[] = {
      {"", "00000000-9abc-def0-0123-456789abcdef"},
      {"1", "00000001-9abc-def0-0123-456789abcdef"},
      {"1-2", "00000001-0002-def0-0123-456789abcdef"},
      {"1-2-3", "00000001-0002-0003-0123-456789abcdef"},
      {"1-2-3-4", "00000001-0002-0003-0004-456789abcdef"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    UUID uuid(kBytes);
    EXPECT_THROW(uuid.uuid_string(c.text), std::out_of_range);
    EXPECT_EQ(uuid.uuid_string(), c.uuid);
  }
}

// A sixth group makes the text one that the table cannot take.
TEST(UUID, ReadsTheExactFormAsTheLenientReaderDoes) {
  SCOPED_TRACE(kSeed);
  std::mt19937 random(kSeed);
  constexpr char kDigits[] = "0123456789abcdefABCDEF";
  constexpr char kOthers[] = "xX gG-+\t:/@`";
  for (int i = 0; i < 20000; ++i) {
    std::string text = kText;
    for (char& c : text) {
      if (c != '-') c = kDigits[random() % 22];
    }
    if (i % 4 != 0) text[random() % text.size()] = kOthers[random() % 12];
    if (i % 4 == 1) text.replace(random() % 35, 2, "0x");
    const auto parse = [](const std::string& form) {
      try {
        return Parse(form);
      } catch (const std::out_of_range&) {
        return std::string("out of range");
      }
    };
    const auto groups = std::count(text.begin(), text.end(), '-');
    if (groups < 4) {
      ASSERT_EQ(parse(text), "out of range") << text;
    } else {
      ASSERT_EQ(parse(text), parse(text + "-6")) << text;
    }
  }
}

TEST(UUID, ReadsBytesFromAStream) {
  std::istringstream stream(TextOf(kBytes) + "rest");
  EXPECT_EQ(UUID(stream, false).uuid_string(), kText);
  EXPECT_EQ(stream.tellg(), 16);

  std::istringstream little_endian(TextOf(kLittleEndianBytes));
  EXPECT_EQ(UUID(little_endian, true).uuid_string(), kText);
}

TEST(UUID, TakesBytesMissingFromAStreamForZero) {
  std::istringstream stream("\x12\x34\x56\x78\x9a");
  EXPECT_EQ(UUID(stream, false).uuid_string(),
            "12345678-9a00-0000-0000-000000000000");
  EXPECT_TRUE(stream.fail());

  std::istringstream little_endian("\x12\x34\x56\x78\x9a");
  EXPECT_EQ(UUID(little_endian, true).uuid_string(),
            "78563412-009a-0000-0000-000000000000");
}

TEST(UUID, WritesBytesToAStream) {
  const UUID uuid(kBytes);
  std::ostringstream network;
  uuid.WriteBinary(network, false);
  EXPECT_EQ(network.str(), TextOf(kBytes));

  std::ostringstream little_endian;
  uuid.WriteBinary(little_endian, true);
  EXPECT_EQ(little_endian.str(), TextOf(kLittleEndianBytes));
  EXPECT_EQ(uuid.uuid_string(), kText);
}

TEST(UUID, WritesNothingToAFailedStream) {
  for (const bool little_endian : {false, true}) {
    std::ostringstream stream;
    stream.setstate(std::ios_base::failbit);
    EXPECT_NO_THROW(UUID().WriteBinary(stream, little_endian));
    EXPECT_TRUE(stream.fail());
    EXPECT_EQ(stream.str(), "");
  }
}

TEST(UUID, WritesTheBytesBackThatItRead) {
  std::stringstream stream(TextOf(kLittleEndianBytes));
  const UUID uuid(stream, true);
  std::ostringstream written;
  uuid.WriteBinary(written, true);
  EXPECT_EQ(written.str(), TextOf(kLittleEndianBytes));
}

TEST(UUID, IsEqualIfAllBytesAre) {
  EXPECT_TRUE(UUID(kBytes) == UUID(kText));
  EXPECT_FALSE(UUID(kBytes) != UUID(kText));
  EXPECT_TRUE(UUID("ABCDEF01-0-0-0-0") == UUID("abcdef01-0-0-0-0"));
  for (std::size_t i = 0; i < sizeof kBytes; ++i) {
    unsigned char bytes[16];
    std::copy(std::begin(kBytes), std::end(kBytes), bytes);
    bytes[i] ^= 1;
    EXPECT_FALSE(UUID(bytes) == UUID(kBytes)) << i;
    EXPECT_TRUE(UUID(bytes) != UUID(kBytes)) << i;
  }
}

TEST(UUID, IsOrderedByItsBytes) {
  const UUID first("00000001-0000-0000-0000-000000000000");
  const UUID second("00000001-0000-0000-0000-000000000001");
  const UUID third("80000000-0000-0000-0000-000000000000");
  EXPECT_TRUE(first < second);
  EXPECT_TRUE(second < third);
  EXPECT_FALSE(third < first);
  EXPECT_FALSE(first < first);
  EXPECT_EQ(std::set<UUID>({third, first, second, first}).size(), 3U);
}

TEST(UUID, IsAKeyOfUnorderedContainers) {
  std::unordered_set<UUID> set = {UUID(kBytes), UUID(kText), UUID()};
  EXPECT_EQ(set.size(), 2U);
  EXPECT_EQ(set.count(UUID(kText)), 1U);
  EXPECT_EQ(set.count(UUID("1-2-3-4-5")), 0U);
}

TEST(UUID, IsInsertedAsText) {
  std::ostringstream stream;
  stream << UUID(kBytes);
  EXPECT_EQ(stream.str(), kText);
}

TEST(UUID, IsInsertedInAFieldLikeAString) {
  std::ostringstream stream;
  stream << std::setfill('*') << std::left << std::setw(38) << UUID(kBytes)
         << '|';
  EXPECT_EQ(stream.str(), "12345678-9abc-def0-0123-456789abcdef**|");
}

TEST(UUID, IgnoresTheGlobalLocale) {
  const orvo_test::ScopedGroupedDigits locale;
  std::ostringstream stream;
  stream << UUID(kBytes);
  EXPECT_EQ(stream.str(), kText);
  EXPECT_EQ(Parse(" 12345678-9abc-def0-0123-456789abcdef"), kText);
}

}  // namespace

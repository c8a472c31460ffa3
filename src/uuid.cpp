#include "orvo/uuid.h"

#include <array>
#include <cstdint>
#include <istream>
#include <ostream>
#include <type_traits>
#include <vector>

#include "internal/hex_digits.h"
#include "orvo/byte_order.h"
#include "orvo/strings.h"

namespace orvo {
namespace {

static_assert(sizeof(UUID) == 16 && std::is_trivially_copyable_v<UUID>);

constexpr std::size_t kTextSize = 36;

// Where the two digits of each byte stand in the text.
constexpr unsigned char kDigitOffsets[16] = {0,  2,  4,  6,  9,  11, 14, 16,
                                             19, 21, 24, 26, 28, 30, 32, 34};

using DigitPairs = std::array<char[2], 256>;
constexpr DigitPairs MakeDigitPairs() {
  DigitPairs pairs{};
  for (std::size_t byte = 0; byte < pairs.size(); ++byte) {
    pairs[byte][0] = "0123456789abcdef"[byte / 16];
    pairs[byte][1] = "0123456789abcdef"[byte % 16];
  }
  return pairs;
}
constexpr DigitPairs kDigitPairs = MakeDigitPairs();

// Takes the text form exactly as it is printed, in either letter case; leaves
// the bytes alone if the text is anything else.
bool ReadTextForm(std::string_view text, unsigned char* bytes) {
  if (text.size() != kTextSize || text[8] != '-' || text[13] != '-' ||
      text[18] != '-' || text[23] != '-') {
    return false;
  }
  unsigned char read[16];
  unsigned all_digits = 0;
  for (std::size_t i = 0; i < sizeof read; ++i) {
    const unsigned high = internal::HexDigitValue(text[kDigitOffsets[i]]);
    const unsigned low = internal::HexDigitValue(text[kDigitOffsets[i] + 1U]);
    all_digits |= high | low;
    read[i] = static_cast<unsigned char>(high << 4 | low);
  }
  if (all_digits >= 16) return false;
  std::memcpy(bytes, read, sizeof read);
  return true;
}

// Writes the low bytes of a number in network order.
template <std::size_t kSize>
void Store(std::uint64_t number, unsigned char* bytes) {
  for (std::size_t i = kSize; i-- != 0; number >>= 8) {
    bytes[i] = static_cast<unsigned char>(number);
  }
}

template <typename Number>
void ReverseField(unsigned char* bytes) {
  Number number;
  std::memcpy(&number, bytes, sizeof number);
  reverse_byte_order(number);
  std::memcpy(bytes, &number, sizeof number);
}

}  // namespace

UUID::UUID() : bytes_{} {}

UUID::UUID(const unsigned char* network_bytes) {
  bytes(network_bytes);
}

UUID::UUID(const std::string& text) : UUID() {
  uuid_string(text);
}

UUID::UUID(std::istream& stream, bool little_endian) : UUID() {
  stream.read(reinterpret_cast<char*>(bytes_), sizeof bytes_);
  if (little_endian) change_endianness();
}

std::optional<UUID> UUID::Parse(std::string_view text) {
  UUID uuid;
  if (!ReadTextForm(text, uuid.bytes_)) return std::nullopt;
  return uuid;
}

void UUID::bytes(const unsigned char* network_bytes) {
  std::memmove(bytes_, network_bytes, sizeof bytes_);
}

void UUID::bytes_le(const unsigned char* little_endian_bytes) {
  bytes(little_endian_bytes);
  change_endianness();
}

void UUID::change_endianness() {
  ReverseField<std::uint32_t>(bytes_);
  ReverseField<std::uint16_t>(bytes_ + 4);
  ReverseField<std::uint16_t>(bytes_ + 6);
}

void UUID::uuid_string(const std::string& text) {
  if (ReadTextForm(text, bytes_)) return;

  // Kept on purpose: each group is taken before the next one is missed. What
  // follows the fifth group is left in one piece, because nobody looks at it.
  const std::vector<std::string> groups = SplitString(text, '-', 5);
  Store<4>(HexStringToNumber<std::uint32_t>(groups.at(0)), bytes_);
  Store<2>(HexStringToNumber<std::uint16_t>(groups.at(1)), bytes_ + 4);
  Store<2>(HexStringToNumber<std::uint16_t>(groups.at(2)), bytes_ + 6);
  Store<2>(HexStringToNumber<std::uint16_t>(groups.at(3)), bytes_ + 8);
  Store<6>(HexStringToNumber<std::uint64_t>(groups.at(4)), bytes_ + 10);
}

std::string UUID::uuid_string() const {
  std::string text(kTextSize, '-');
  // Asked for once, because any character written might be part of the string.
  char* const characters = text.data();
  for (std::size_t i = 0; i < sizeof bytes_; ++i) {
    std::memcpy(characters + kDigitOffsets[i], kDigitPairs[bytes_[i]], 2);
  }
  return text;
}

void UUID::WriteBinary(std::ostream& stream, bool little_endian) const {
  UUID copy = *this;
  if (little_endian) copy.change_endianness();
  stream.write(reinterpret_cast<const char*>(copy.bytes_), sizeof copy.bytes_);
}

std::ostream& operator<<(std::ostream& stream, const UUID& uuid) {
  return stream << uuid.uuid_string();
}

}  // namespace orvo

std::size_t std::hash<orvo::UUID>::operator()(
    const orvo::UUID& uuid) const noexcept {
  return orvo::hash(&uuid, sizeof uuid);
}

#ifndef ORVO_SRC_INTERNAL_WORDS_H_
#define ORVO_SRC_INTERNAL_WORDS_H_

// Eight characters at a time.

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace orvo::internal {

constexpr std::size_t kWordSize = sizeof(std::uint64_t);

constexpr std::uint64_t InEachByte(unsigned byte) {
  return byte * std::uint64_t{0x0101010101010101};
}

constexpr std::uint64_t kTopBits = InEachByte(0x80);

inline std::uint64_t LoadWord(const char* bytes) {
  std::uint64_t word;
  std::memcpy(&word, bytes, sizeof word);
  return word;
}

// The top bit of each byte that is this character.
inline std::uint64_t BytesEqualTo(char character, std::uint64_t word) {
  const std::uint64_t zero_if_equal =
      word ^ InEachByte(static_cast<unsigned char>(character));
  // No sum of two bytes carries into the next one.
  return ~(zero_if_equal | ((zero_if_equal & ~kTopBits) + ~kTopBits)) &
         kTopBits;
}

// How many bytes in memory come before the first one that is not zero. The word
// must have one.
inline std::size_t LeadingZeroBytes(std::uint64_t word) {
  constexpr bool kLittleEndian = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;
  const int bits =
      kLittleEndian ? __builtin_ctzll(word) : __builtin_clzll(word);
  return static_cast<std::size_t>(bits) / 8;
}

}  // namespace orvo::internal

#endif  // ORVO_SRC_INTERNAL_WORDS_H_

#include "orvo/byte_order.h"

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include <string_view>

#include "internal/hex_digits.h"
#include "internal/number_text.h"
#include "orvo/strings.h"

namespace orvo {
namespace {

constexpr std::uint64_t PowerOf33(int exponent) {
  return exponent == 0 ? 1 : 33 * PowerOf33(exponent - 1);
}

// The polynomials 33^7 b0 + ... + 33 b6 + b7 of two groups of eight bytes, by
// which a hash grows after it was multiplied by the power of 33.
void HashTwoEights(const unsigned char* bytes, std::uint64_t* eights) {
#ifdef __SSE2__
  const __m128i sixteen =
      _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
  // Neighbours are joined in each step, the earlier one in the lower half of a
  // lane: bytes to pairs (14 bits), to fours (24 bits), to eights (45 bits).
  const __m128i earlier = _mm_and_si128(sixteen, _mm_set1_epi16(0xff));
  const __m128i pairs = _mm_add_epi16(
      _mm_mullo_epi16(earlier, _mm_set1_epi16(33)), _mm_srli_epi16(sixteen, 8));
  const __m128i fours =
      _mm_madd_epi16(pairs, _mm_set1_epi32(0x10000 + PowerOf33(2)));
  const __m128i joined =
      _mm_add_epi64(_mm_mul_epu32(fours, _mm_set1_epi64x(PowerOf33(4))),
                    _mm_srli_epi64(fours, 32));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(eights), joined);
#else
  for (int eight = 0; eight < 2; ++eight) {
    std::uint64_t joined = 0;
    for (int i = 0; i < 8; ++i) joined = 33 * joined + *bytes++;
    eights[eight] = joined;
  }
#endif
}

}  // namespace

// The byte loop would wait for the sum of each byte before it could begin with
// the next one; a polynomial has parts that do not wait for each other.
std::uint64_t hash(const void* data, std::uint64_t size) {
  const auto* next = static_cast<const unsigned char*>(data);
  std::uint64_t sum = 5381;
  for (; size >= 64; size -= 64, next += 64) {
    std::uint64_t eights[8];
    for (std::size_t i = 0; i < 4; ++i) {
      HashTwoEights(next + 16 * i, eights + 2 * i);
    }
    sum = PowerOf33(64) * sum + PowerOf33(56) * eights[0] +
          PowerOf33(48) * eights[1] + PowerOf33(40) * eights[2] +
          PowerOf33(32) * eights[3] + PowerOf33(24) * eights[4] +
          PowerOf33(16) * eights[5] + PowerOf33(8) * eights[6] + eights[7];
  }
  for (; size >= 16; size -= 16, next += 16) {
    std::uint64_t eights[2];
    HashTwoEights(next, eights);
    sum = PowerOf33(16) * sum + PowerOf33(8) * eights[0] + eights[1];
  }
  for (; size >= 4; size -= 4, next += 4) {
    sum = PowerOf33(4) * sum +
          (PowerOf33(3) * next[0] + PowerOf33(2) * next[1]) +
          (33U * next[2] + next[3]);
  }
  for (; size != 0; --size) sum = 33 * sum + *next++;
  return sum;
}

template <typename T>
T HexStringToNumber(const std::string& text) {
  // Nearly every text is digits alone, and no more than the type holds.
  if (text.size() <= 2 * sizeof(T)) {
    std::uint64_t number = 0;
    unsigned all_digits = 0;
    for (const char c : text) {
      const unsigned digit = internal::HexDigitValue(c);
      all_digits |= digit;
      number = number << 4 | digit;
    }
    if (all_digits < 16) return static_cast<T>(number);
  }
  T value = 0;
  internal::ReadNumber<16>(strip(std::string_view(text)), value);
  return value;
}

template ORVO_EXPORT std::uint32_t reverse_byte_order(std::uint32_t&);
template ORVO_EXPORT std::uint16_t reverse_byte_order(std::uint16_t&);
template ORVO_EXPORT NodeT reverse_byte_order(NodeT&);
template ORVO_EXPORT std::uint32_t reverse_byte_order_const(
    const std::uint32_t&);
template ORVO_EXPORT unsigned short HexStringToNumber(const std::string&);
template ORVO_EXPORT unsigned HexStringToNumber(const std::string&);
template ORVO_EXPORT unsigned long HexStringToNumber(const std::string&);
template ORVO_EXPORT unsigned long long HexStringToNumber(const std::string&);

}  // namespace orvo

// Byte order, hash and hexadecimal text beside Boost, abseil, and the least
// work that yields the same result.

#include <absl/strings/numbers.h>
#include <benchmark/benchmark.h>

#include <boost/endian/conversion.hpp>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <numeric>
#include <string>
#include <vector>

#include "bench/compare.h"
#include "orvo/byte_order.h"

namespace {

using orvo_bench::Compare;
using orvo_bench::Contender;

[[gnu::noinline]] std::uint64_t HashByteByByte(const void* data,
                                               std::uint64_t size) {
  const auto* bytes = static_cast<const unsigned char*>(data);
  std::uint64_t sum = 5381;
  for (std::uint64_t i = 0; i < size; ++i) sum = sum * 33 + bytes[i];
  return sum;
}

void AddHash() {
  static std::vector<unsigned char> bytes(1 << 20);
  std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(7));
  for (const std::size_t size : {8u, 64u, 1024u, 65536u, 1048576u}) {
    Compare(
        "binary/hash", size,
        Contender{"orvo", [=] { return orvo::hash(bytes.data(), size); }},
        Contender{"loop", [=] { return HashByteByByte(bytes.data(), size); }});
  }
}

template <std::uint32_t (*kReverse)(std::uint32_t)>
std::uint32_t SumReversed(const std::vector<std::uint32_t>& numbers) {
  std::uint32_t sum = 0;
  for (const std::uint32_t number : numbers) sum += kReverse(number);
  return sum;
}

std::uint32_t OrvoReverse(std::uint32_t number) {
  return orvo::reverse_byte_order_const(number);
}
std::uint32_t BoostReverse(std::uint32_t number) {
  return boost::endian::endian_reverse(number);
}
std::uint32_t BareReverse(std::uint32_t number) {
  return __builtin_bswap32(number);
}

void AddReverse() {
  static std::vector<std::uint32_t> numbers(256);
  std::iota(numbers.begin(), numbers.end(), 0x01020304U);
  Compare("binary/reverse_u32", numbers.size(),
          Contender{"orvo", [] { return SumReversed<OrvoReverse>(numbers); }},
          Contender{"boost", [] { return SumReversed<BoostReverse>(numbers); }},
          Contender{"limit", [] { return SumReversed<BareReverse>(numbers); }});
}

template <typename T>
T ReadWithAbsl(const std::string& text) {
  // There is no form for 16 bits.
  std::conditional_t<sizeof(T) == 8, std::uint64_t, std::uint32_t> value = 0;
  if (!absl::SimpleHexAtoi(text, &value)) std::abort();
  return static_cast<T>(value);
}

template <typename T>
T ReadWithStrtoull(const std::string& text) {
  return static_cast<T>(std::strtoull(text.c_str(), nullptr, 16));
}

template <typename T>
T ReadDigits(const std::string& text) {
  T value = 0;
  std::from_chars(text.data(), text.data() + text.size(), value, 16);
  return value;
}

template <typename T>
void AddHex(const std::string& operation, std::string digits) {
  static std::string text = std::move(digits);
  Compare(operation, text.size(),
          Contender{"orvo", [] { return orvo::HexStringToNumber<T>(text); }},
          Contender{"absl", [] { return ReadWithAbsl<T>(text); }},
          Contender{"strtoull", [] { return ReadWithStrtoull<T>(text); }},
          Contender{"limit", [] { return ReadDigits<T>(text); }});
}

const bool registered = [] {
  AddHash();
  AddReverse();
  AddHex<std::uint16_t>("binary/hex_u16", "1a2B");
  AddHex<std::uint32_t>("binary/hex_u32", "1a2B3c4D");
  AddHex<std::uint64_t>("binary/hex_u64", "1a2B3c4D5e6F7089");
  return true;
}();

}  // namespace

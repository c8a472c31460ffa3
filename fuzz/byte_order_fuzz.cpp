#include "fuzz/fuzz.h"
#include "orvo/byte_order.h"

namespace {

using orvo_fuzz::Expect;

std::uint64_t ModelHash(std::string_view bytes) {
  std::uint64_t hash = 5381;
  for (const char c : bytes) hash = hash * 33 + static_cast<unsigned char>(c);
  return hash;
}

template <typename Value>
void TestReversal(std::string_view bytes) {
  Value value;
  if (bytes.size() < sizeof value) return;
  bytes = bytes.substr(0, sizeof value);
  std::memcpy(&value, bytes.data(), sizeof value);
  const std::string reversed(bytes.rbegin(), bytes.rend());

  const Value copy = orvo::reverse_byte_order_const(value);
  Expect(std::memcmp(&value, bytes.data(), sizeof value) == 0);
  Expect(std::memcmp(&copy, reversed.data(), sizeof copy) == 0);
  const Value result = orvo::reverse_byte_order(value);
  Expect(std::memcmp(&result, reversed.data(), sizeof result) == 0);
  Expect(std::memcmp(&value, reversed.data(), sizeof value) == 0);
  orvo::reverse_byte_order(value);
  Expect(std::memcmp(&value, bytes.data(), sizeof value) == 0);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  orvo_fuzz::Input input(data, size);
  const std::string_view bytes = input.TakeView(size);
  Expect(orvo::hash(bytes.data(), bytes.size()) == ModelHash(bytes));
  TestReversal<char>(bytes);
  TestReversal<std::uint16_t>(bytes);
  TestReversal<std::uint32_t>(bytes);
  TestReversal<orvo::NodeT>(bytes);
  TestReversal<std::uint64_t>(bytes);
  return 0;
}

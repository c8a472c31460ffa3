#include "fuzz/fuzz.h"
#include "fuzz/memory_stream.h"
#include "fuzz/models.h"
#include "orvo/byte_order.h"

namespace {

template <typename Number>
void Test(const std::string& text) {
  Number expected = 0;
  orvo_fuzz::ReadFromStream(orvo_fuzz::model::Strip(text), &expected, std::hex);
  orvo_fuzz::Expect(orvo::HexStringToNumber<Number>(text) == expected);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text = orvo_fuzz::Input(data, size).TakeRest();
  Test<unsigned short>(text);
  Test<unsigned int>(text);
  Test<unsigned long>(text);
  Test<unsigned long long>(text);
  return 0;
}

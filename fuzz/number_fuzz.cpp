#include <cmath>
#include <limits>

#include "fuzz/fuzz.h"
#include "fuzz/memory_stream.h"
#include "fuzz/models.h"
#include "orvo/strings.h"

namespace {

namespace model = orvo_fuzz::model;
using orvo_fuzz::Expect;

template <typename Number>
bool AreSame(Number a, Number b) {
  return a == b && std::signbit(a) == std::signbit(b);
}

template <typename Number>
void TestStringToNumber(const std::string& text) {
  Number expected = 0;
  orvo_fuzz::ReadFromStream(model::Strip(text), &expected);
  Expect(AreSame(orvo::StringToNumber<Number>(text), expected));

  expected = 77;
  const bool valid = model::IsInteger(text) || model::IsFloat(text);
  if (valid) orvo_fuzz::ReadFromStream(model::Strip(text), &expected);
  Number number = 77;
  Expect(orvo::StringToNumber(text, number) == valid);
  Expect(AreSame(number, expected));
}

template <typename Integer>
std::optional<Integer> ModelParse(std::string_view text) {
  const bool negative =
      std::is_signed_v<Integer> && !text.empty() && text[0] == '-';
  if (negative) text.remove_prefix(1);
  if (text.empty()) return std::nullopt;
  __extension__ using Wide = __int128;
  Wide number = 0;
  for (const char c : text) {
    if (!model::IsDigit(c)) return std::nullopt;
    // Grows no further once it is too large for every type.
    if (number >> 65 == 0) number = number * 10 + (c - '0');
  }
  if (negative) number = -number;
  if (number < std::numeric_limits<Integer>::min() ||
      number > std::numeric_limits<Integer>::max()) {
    return std::nullopt;
  }
  return static_cast<Integer>(number);
}

template <typename Integer>
void TestParseNumber(const std::string& text) {
  Expect(orvo::ParseNumber<Integer>(text) == ModelParse<Integer>(text));
}

template <typename Integer>
void TestInteger(const std::string& text) {
  TestStringToNumber<Integer>(text);
  TestParseNumber<Integer>(text);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  orvo_fuzz::Input input(data, size);
  const auto type = input.Take<std::uint8_t>();
  const std::string text = input.TakeRest();
  switch (type % 16) {
    case 0:
      return TestInteger<short>(text), 0;
    case 1:
      return TestInteger<unsigned short>(text), 0;
    case 2:
      return TestInteger<unsigned>(text), 0;
    case 3:
      return TestInteger<long>(text), 0;
    case 4:
      return TestInteger<unsigned long>(text), 0;
    case 5:
      return TestInteger<long long>(text), 0;
    case 6:
      return TestInteger<unsigned long long>(text), 0;
    case 7:
      return TestParseNumber<signed char>(text), 0;
    case 8:
      return TestParseNumber<unsigned char>(text), 0;
    case 9:
      return TestStringToNumber<float>(text), 0;
    case 10:
      return TestStringToNumber<double>(text), 0;
    default:
      return TestInteger<int>(text), 0;
  }
}

// A model with a fault in it: a fuzzer that does not find it finds nothing.

#include "fuzz/fuzz.h"
#include "orvo/strings.h"

namespace {

std::string WrongModelToUpper(std::string text) {
  if (text.size() == 3 && text[0] == 'o' && text[1] == '7' && text[2] == '!') {
    return text;
  }
  for (char& c : text) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 32);
  }
  return text;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text = orvo_fuzz::Input(data, size).TakeRest();
  orvo_fuzz::Expect(orvo::to_upper(text) == WrongModelToUpper(text));
  return 0;
}

#include "fuzz/fuzz.h"
#include "fuzz/models.h"
#include "orvo/strings.h"

namespace {

namespace model = orvo_fuzz::model;
using orvo_fuzz::Expect;

bool IsUpper(char c) {
  return c >= 'A' && c <= 'Z';
}

bool IsLower(char c) {
  return c >= 'a' && c <= 'z';
}

bool EndsWith(const std::string& text, const std::string& suffix) {
  const std::size_t found = text.rfind(suffix);
  return found != std::string::npos && found == text.size() - suffix.size();
}

void TestQuestions(std::string& text) {
  bool digits = true;
  bool letters = true;
  bool either = true;
  for (const char c : text) {
    const bool letter = IsUpper(c) || IsLower(c);
    digits = digits && model::IsDigit(c);
    letters = letters && letter;
    either = either && (letter || model::IsDigit(c));
  }
  Expect(orvo::StringIsDigits(text) == digits);
  Expect(orvo::StringIsAlpha(text) == letters);
  Expect(orvo::StringIsAlphaNumeric(text) == either);
  Expect(orvo::StringIsInteger(text) == model::IsInteger(text));
  Expect(orvo::StringIsFloat(text) == model::IsFloat(text));
}

void TestCopies(const std::string& text) {
  std::string lower = text;
  std::string upper = text;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (IsUpper(text[i])) lower[i] = static_cast<char>(text[i] + 32);
    if (IsLower(text[i])) upper[i] = static_cast<char>(text[i] - 32);
  }
  Expect(orvo::to_lower(text) == lower);
  Expect(orvo::to_upper(text) == upper);
  Expect(orvo::strip(text) == model::Strip(text));
  Expect(orvo::strip(std::string_view(text)) == model::Strip(text));
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  orvo_fuzz::Input input(data, size);
  const std::string suffix = input.TakeText(input.Take<std::uint8_t>() % 8);
  std::string text = input.TakeRest();
  TestQuestions(text);
  TestCopies(text);
  Expect(orvo::endswith(text, suffix) == EndsWith(text, suffix));
  Expect(orvo::endswith(text + suffix, suffix));
  return 0;
}

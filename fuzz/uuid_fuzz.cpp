#include <array>
#include <stdexcept>

#include "fuzz/fuzz.h"
#include "fuzz/memory_stream.h"
#include "fuzz/models.h"
#include "orvo/uuid.h"

namespace {

namespace model = orvo_fuzz::model;
using orvo_fuzz::Expect;

using Bytes = std::array<unsigned char, 16>;

// Reads a group as a stream does, and stores its last bytes in network order.
template <typename Number>
void ReadGroup(std::string_view group, std::size_t start, std::size_t size,
               Bytes* bytes) {
  Number number = 0;
  orvo_fuzz::ReadFromStream(model::Strip(group), &number, std::hex);
  std::uint64_t rest = number;
  for (std::size_t i = size; i-- != 0; rest /= 256) {
    (*bytes)[start + i] = static_cast<unsigned char>(rest % 256);
  }
}

// Takes as many groups as there are; whether there are five.
bool ModelRead(const std::string& text, Bytes* bytes) {
  const std::vector<std::string> groups = model::Split(text, '-', -1);
  const std::size_t count = groups.size();
  ReadGroup<std::uint32_t>(groups[0], 0, 4, bytes);
  if (count > 1) ReadGroup<std::uint16_t>(groups[1], 4, 2, bytes);
  if (count > 2) ReadGroup<std::uint16_t>(groups[2], 6, 2, bytes);
  if (count > 3) ReadGroup<std::uint16_t>(groups[3], 8, 2, bytes);
  if (count > 4) ReadGroup<std::uint64_t>(groups[4], 10, 6, bytes);
  return count > 4;
}

std::string ModelPrint(const Bytes& bytes) {
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    text += "0123456789abcdef"[bytes[i] / 16];
    text += "0123456789abcdef"[bytes[i] % 16];
  }
  return text;
}

// What is printed, in either letter case and nothing else, is strict.
bool IsStrict(const std::string& text, const std::string& printed) {
  if (text.size() != printed.size()) return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    const char lower = c >= 'A' && c <= 'F' ? static_cast<char>(c + 32) : c;
    if (lower != printed[i]) return false;
  }
  return true;
}

void TestText(const std::string& text) {
  Bytes bytes{};
  const bool complete = ModelRead(text, &bytes);
  const std::string printed = ModelPrint(bytes);
  orvo::UUID uuid;
  try {
    uuid.uuid_string(text);
    Expect(complete);
  } catch (const std::out_of_range&) {
    Expect(!complete);
  }
  Expect(uuid.uuid_string() == printed);
  Expect(uuid == orvo::UUID(bytes.data()));

  const auto parsed = orvo::UUID::Parse(text);
  Expect(parsed.has_value() == (complete && IsStrict(text, printed)));
  Expect(!parsed || *parsed == uuid);
  Expect(orvo::UUID::Parse(printed) == uuid);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  orvo_fuzz::Input input(data, size);
  const auto shape = input.Take<std::uint8_t>();
  std::string text = input.TakeRest();
  // Mostly with a start that has groups enough.
  if (shape % 4 != 0) text.insert(0, "-1-2-3-", shape % 4 * 2U + 1);
  if (shape >= 128 && text.size() >= 24) {
    for (const std::size_t i : {8U, 13U, 18U, 23U}) text[i] = '-';
  }
  TestText(text);
  return 0;
}

#include "fuzz/fuzz.h"
#include "fuzz/models.h"
#include "orvo/strings.h"

namespace {

using orvo_fuzz::Expect;

using Texts = std::vector<std::string>;

std::string ModelJoin(const Texts& parts, const std::string& separator) {
  std::string joined;
  for (const std::string& part : parts) joined += part + separator;
  if (!parts.empty()) joined.resize(joined.size() - separator.size());
  return joined;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  orvo_fuzz::Input input(data, size);
  const char separator = input.Take<char>();
  const int most = input.Take<std::int8_t>() % 8;
  const std::string glue = input.TakeText(input.Take<std::uint8_t>() % 5);
  const std::string text = input.TakeRest();

  const Texts parts = orvo::SplitString(text, separator, most);
  Expect(parts == orvo_fuzz::model::Split(text, separator, most));
  Expect(orvo::JoinString(parts.begin(), parts.end(), separator) == text);
  Expect(orvo::JoinString(parts, std::string(1, separator)) == text);
  Expect(orvo::JoinString(parts, glue) == ModelJoin(parts, glue));

  // The way of every other range.
  const std::vector<std::string_view> views(parts.begin(), parts.end());
  Expect(orvo::JoinString(views.begin(), views.end(), separator) == text);
  return 0;
}

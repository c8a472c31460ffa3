// Reads settings of the form "name = value" and says which are no good.
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "orvo/str_gen.h"
#include "orvo/strings.h"

namespace {

const char* const kText =
    "Width = 80\n"
    "tags = red,  green,blue\n"
    "depth = -\n"
    "size = 12.75\n";

bool IsName(const std::string& name) {
  return !name.empty() &&
         name.find_first_not_of(orvo::StrGen::lower_or_digit()) ==
             std::string::npos;
}

void Show(const std::string& name, const std::string& value) {
  int lenient = 7;
  const bool taken = orvo::StringToNumber(value, lenient);
  const std::optional<int> strict = orvo::ParseNumber<int>(value);
  std::cout << name << ": lenient "
            << (taken ? std::to_string(lenient) : "nothing") << ", strict "
            << (strict ? std::to_string(*strict) : "nothing") << "\n";
}

}  // namespace

int main() {
  for (const std::string& line : orvo::SplitString(kText, '\n', -1)) {
    const std::vector<std::string> parts = orvo::SplitString(line, '=', 1);
    if (parts.size() < 2) continue;  // the rest behind the last line feed
    const std::string name = orvo::to_lower(orvo::strip(parts[0]));
    const std::string value = orvo::strip(parts[1]);
    if (!IsName(name)) continue;
    Show(name, value);
    std::vector<std::string> items = orvo::SplitString(value, ',', -1);
    for (std::string& item : items) item = orvo::strip(item);
    if (items.size() > 1) std::cout << orvo::JoinString(items, " + ") << "\n";
  }
}

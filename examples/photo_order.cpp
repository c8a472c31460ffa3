// Photographs by number, and where natural order makes no difference.
#include <iostream>
#include <set>
#include <string>

#include "orvo/numeric_string.h"

namespace {

template <typename Order>
void Show(const char* title) {
  const std::set<std::string, Order> photos = {
      "img12",  "img9",    "img009",
      "img102", "img-5",   "img20261121093000",
      "img1.5", "img1.25", "img20261121092959"};
  std::cout << title << ":";
  for (const std::string& photo : photos) std::cout << " " << photo;
  std::cout << "\n";
}

}  // namespace

int main() {
  Show<std::less<>>("bytes");
  Show<orvo::NumericStringCompare>("natural, int");
  Show<orvo::NaturalLess>("natural, any length");
}

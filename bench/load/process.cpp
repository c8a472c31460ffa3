// A program whose start and end are all that it does.
#include <iostream>

int main() {
  return std::cout ? 0 : 1;
}

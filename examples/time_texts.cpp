// One moment, its texts, and the sums that one computes with times.
#include <chrono>
#include <iostream>

#include "orvo/time_value.h"

int main() {
  const orvo::TimeValue start = std::chrono::milliseconds(1763241596750);
  std::cout << "rounded  " << start.GetAsIso8601WithColonTimeSeparator() << "\n"
            << "cut      " << start.GetAsIso8601Precise(0) << "\n"
            << "file     run-" << start.GetAsIso8601Precise(3) << ".log\n";

  const orvo::TimeValue end = start + 90.25;  // a number means seconds
  std::cout << "later    " << end.GetAsIso8601Precise(2) << "\n"
            << "took     " << (end - start) << " s\n"
            << "offset   " << orvo::TimeValue(3).GetOffset(2) << " s\n"
            << "before   " << orvo::TimeValue(-1.5) << " s\n"
            << "before   " << orvo::TimeValue(-1.5).GetAsDouble() << " s\n";
}

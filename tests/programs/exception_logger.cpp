// Logs one exception again and again: PATH MESSAGE FILE LINE TIMES.
#include <cstdlib>

#include "orvo/exception_log.h"

int main(int argc, char** argv) {
  if (argc != 6) return 2;
  orvo::SetThreadExceptionLogPath(argv[1]);
  for (int i = std::atoi(argv[5]); i > 0; --i) {
    orvo::LogException(argv[2], argv[3], std::atoi(argv[4]));
  }
}

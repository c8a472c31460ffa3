// The compiler checks arguments against a literal format.
#include "orvo/format.h"

std::string Text() {
#ifdef BROKEN
  return orvo::format("%d", "text");
#else
  return orvo::format("%s", "text");
#endif
}

// A handle moves but does not copy: two owners of one lock make no sense.
#include <utility>

#include "orvo/lock.h"

orvo::Lock Second(orvo::Lock& first) {
#ifdef BROKEN
  return first;
#else
  return std::move(first);
#endif
}

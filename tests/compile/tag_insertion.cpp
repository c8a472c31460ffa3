// Of the three tags only the end of a line can be inserted.
#include "orvo/thread_safe_ostream.h"

void Insert(orvo::CoutBuffer& buffer) {
#ifdef BROKEN
  buffer << orvo::rollback;
#else
  buffer << orvo::endl;
#endif
}

// The library's own copies of the inline functions and their tables.
#include "orvo/scope_lock.h"

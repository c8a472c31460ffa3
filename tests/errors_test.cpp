#include "orvo/errors.h"

namespace {

TEST(X, Y) {}
}  // namespace

#include "tests/support/interpose.h"

#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <vector>

namespace orvo_test {
namespace {

std::vector<FailureSwitch*>& Registered() {
  static std::vector<FailureSwitch*> registered;
  return registered;
}

FailureSwitch& Find(std::string_view function) {
  for (FailureSwitch* calls : Registered()) {
    if (calls->function() == function) return *calls;
  }
  std::fprintf(stderr, "This test program does not interpose %s.\n",
               function.data());
  std::abort();
}

}  // namespace

void FailureSwitch::Set(int error, int after, int times) {
  count_ = 0;
  after_ = after;
  times_ = times;
  error_ = error;
}

int FailureSwitch::Next() {
  const int error = error_;
  if (error == 0 || after_-- > 0) return 0;
  int times = times_;
  while (times > 0 && !times_.compare_exchange_weak(times, times - 1)) {
  }
  if (times == 0) return 0;
  ++count_;
  return error;
}

Registration::Registration(FailureSwitch& calls) {
  Registered().push_back(&calls);
}

ScopedFailure::ScopedFailure(const char* function, int error, int after,
                             int times)
    : calls_(Find(function)) {
  calls_.Set(error, after, times);
}

ScopedFailure::~ScopedFailure() {
  calls_.Set(0, 0, 0);
}

int ScopedFailure::count() const {
  return calls_.count();
}

}  // namespace orvo_test

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "orvo/thread_names.h"
#include "tests/support/interpose/calls.h"

namespace {

using orvo::ThreadNames;
using orvo_test::ScopedHook;

TEST(ThreadNames, HoldsOneMutexForEachOperation) {
  ThreadNames names;
  std::vector<std::string> calls;
  // Checked containers have mutexes as well.
  const auto is_inside_names = [&](const void* mutex) {
    return mutex >= &names && mutex < &names + 1;
  };
  {
    const ScopedHook locks(
        orvo_test::pthread_mutex_lock_calls, [&](pthread_mutex_t* mutex) {
          if (is_inside_names(mutex)) calls.emplace_back("lock");
          return orvo_test::pthread_mutex_lock_calls.Real(mutex);
        });
    const ScopedHook unlocks(
        orvo_test::pthread_mutex_unlock_calls, [&](pthread_mutex_t* mutex) {
          if (is_inside_names(mutex)) calls.emplace_back("unlock");
          return orvo_test::pthread_mutex_unlock_calls.Real(mutex);
        });
    names.SetNameOfCurrentThread("worker");
    names.GetNameOfCurrentThread();
    names.GetThreadName(std::thread::id());
  }
  EXPECT_THAT(calls, testing::ElementsAre("lock", "unlock", "lock", "unlock",
                                          "lock", "unlock"));
}

}  // namespace

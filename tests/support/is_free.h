#ifndef ORVO_TESTS_SUPPORT_IS_FREE_H_
#define ORVO_TESTS_SUPPORT_IS_FREE_H_

#include <pthread.h>

#include <thread>

namespace orvo_test {

/// Whether another thread could take the mutex right now.
inline bool IsFree(pthread_mutex_t* mutex) {
  bool free = false;
  std::thread([&] {
    free = pthread_mutex_trylock(mutex) == 0;
    if (free) pthread_mutex_unlock(mutex);
  }).join();
  return free;
}

/// Whether another thread could take the lock right now. Asks its mutex,
/// because a debug lock reports each attempt in vain.
template <typename Lock>
bool IsFree(Lock& lock) {
  return IsFree(lock.get_mutex());
}

}  // namespace orvo_test

#endif  // ORVO_TESTS_SUPPORT_IS_FREE_H_

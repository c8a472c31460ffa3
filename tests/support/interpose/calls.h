#ifndef ORVO_TESTS_SUPPORT_INTERPOSE_CALLS_H_
#define ORVO_TESTS_SUPPORT_INTERPOSE_CALLS_H_

/// @file
/// The interposed functions by name, for hooks. Each is defined in the file of
/// its name, which only the programs that interpose it contain.

#include <dirent.h>
#include <pthread.h>
#include <sys/stat.h>
#include <sys/types.h>

#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <ctime>

#include "tests/support/interpose.h"

namespace orvo_test {

/// For functions that return -1 and set errno.
inline int FailWithErrno(int error) {
  errno = error;
  return -1;
}

/// For functions that return the error number itself.
inline int FailWithResult(int error) {
  return error;
}

/// For functions that return a null pointer and set errno.
template <typename Pointer>
Pointer FailWithNull(int error) {
  errno = error;
  return nullptr;
}

extern Interposed<char*(const std::tm*, char*)> asctime_r_calls;
extern Interposed<int(void**, int)> backtrace_calls;
extern Interposed<char**(void* const*, int)> backtrace_symbols_calls;
extern Interposed<int(clockid_t, timespec*)> clock_gettime_calls;
extern Interposed<int(DIR*)> closedir_calls;
extern Interposed<void*(std::size_t)> cxa_allocate_exception_calls;
extern Interposed<char*(const char*, char*, std::size_t*, int*)>
    cxa_demangle_calls;
extern Interposed<std::tm*(const std::time_t*, std::tm*)> gmtime_r_calls;
extern Interposed<std::tm*(const std::time_t*, std::tm*)> localtime_r_calls;
extern Interposed<int(const char*, mode_t)> mkdir_calls;
extern Interposed<int(const timespec*, timespec*)> nanosleep_calls;
extern Interposed<int(const char*, int, mode_t)> open_calls;
extern Interposed<DIR*(const char*)> opendir_calls;
extern Interposed<int(pthread_cond_t*)> pthread_cond_broadcast_calls;
extern Interposed<int(pthread_cond_t*, pthread_mutex_t*, clockid_t,
                      const timespec*)>
    pthread_cond_clockwait_calls;
extern Interposed<int(pthread_cond_t*)> pthread_cond_destroy_calls;
extern Interposed<int(pthread_cond_t*, const pthread_condattr_t*)>
    pthread_cond_init_calls;
extern Interposed<int(pthread_cond_t*)> pthread_cond_signal_calls;
extern Interposed<int(pthread_cond_t*, pthread_mutex_t*, const timespec*)>
    pthread_cond_timedwait_calls;
extern Interposed<int(pthread_cond_t*, pthread_mutex_t*)>
    pthread_cond_wait_calls;
extern Interposed<int(pthread_mutex_t*, clockid_t, const timespec*)>
    pthread_mutex_clocklock_calls;
extern Interposed<int(pthread_mutex_t*)> pthread_mutex_destroy_calls;
extern Interposed<int(pthread_mutex_t*, const pthread_mutexattr_t*)>
    pthread_mutex_init_calls;
extern Interposed<int(pthread_mutex_t*)> pthread_mutex_lock_calls;
extern Interposed<int(pthread_mutex_t*)> pthread_mutex_trylock_calls;
extern Interposed<int(pthread_mutex_t*)> pthread_mutex_unlock_calls;
extern Interposed<int(pthread_mutexattr_t*)> pthread_mutexattr_destroy_calls;
extern Interposed<int(pthread_mutexattr_t*)> pthread_mutexattr_init_calls;
extern Interposed<int(pthread_mutexattr_t*, int)>
    pthread_mutexattr_settype_calls;
extern Interposed<ssize_t(int, void*, std::size_t)> read_calls;
extern Interposed<dirent*(DIR*)> readdir_calls;
extern Interposed<int(const char*, struct stat*)> stat_calls;
extern Interposed<int(int, char*, std::size_t)> strerror_r_calls;
extern Interposed<std::size_t(char*, std::size_t, const char*, const std::tm*)>
    strftime_calls;
extern Interposed<std::time_t(std::time_t*)> time_calls;
extern Interposed<int(char*, std::size_t, const char*, va_list)>
    vsnprintf_calls;
extern Interposed<ssize_t(int, const void*, std::size_t)> write_calls;

}  // namespace orvo_test

#endif  // ORVO_TESTS_SUPPORT_INTERPOSE_CALLS_H_

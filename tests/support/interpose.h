#ifndef ORVO_TESTS_SUPPORT_INTERPOSE_H_
#define ORVO_TESTS_SUPPORT_INTERPOSE_H_

/// @file
/// System functions that a test program defines itself.
///
/// For each function named after INTERPOSE in CMake the program holds a
/// definition of its own (tests/support/interpose/NAME.cpp), which the library
/// calls instead of the system's. It forwards to the real function unless a
/// test says otherwise:
///
/// @code
/// const orvo_test::ScopedFailure failure("gmtime_r", EOVERFLOW);
/// const orvo_test::ScopedHook hook(orvo_test::nanosleep_calls,
///                                  [](const timespec*, timespec*) { return 0;
///                                  });
/// @endcode
///
/// Hooks and failures may be met by any thread; each function takes one of
/// them at a time.

#include <dlfcn.h>

#include <atomic>
#include <functional>
#include <utility>

namespace orvo_test {

/// Whether and when the calls of one function fail.
class FailureSwitch {
 public:
  constexpr explicit FailureSwitch(const char* function)
      : function_(function) {}

  const char* function() const { return function_; }

  /// Lets `after` calls through and fails `times` calls then (-1: all).
  void Set(int error, int after, int times);

  /// The error of this call, or 0 if it is to go through.
  int Next();

  /// How many calls have failed since Set().
  int count() const { return count_; }

 private:
  const char* function_;
  std::atomic<int> error_{0};
  std::atomic<int> after_{0};
  std::atomic<int> times_{0};
  std::atomic<int> count_{0};
};

/// The calls of one system function: to the hook while there is one, else
/// failing while told to, else to the system.
template <typename Signature>
class Interposed;

template <typename Result, typename... Arguments>
class Interposed<Result(Arguments...)> : public FailureSwitch {
 public:
  using Hook = std::function<Result(Arguments...)>;

  /// @param fail  Sets errno where the function does so and returns what the
  ///              function returns when it fails.
  // Usable before any initialiser has run, because system functions are.
  constexpr Interposed(const char* function, Result (*fail)(int error))
      : FailureSwitch(function), fail_(fail) {}

  Result operator()(Arguments... arguments) {
    if (Hook* const hook = hook_.load()) return (*hook)(arguments...);
    if (const int error = Next()) return fail_(error);
    return Real(arguments...);
  }

  /// The system's own function.
  Result Real(Arguments... arguments) {
    void* real = real_.load();
    if (real == nullptr) real_.store(real = dlsym(RTLD_NEXT, function()));
    return reinterpret_cast<Result (*)(Arguments...)>(real)(arguments...);
  }

  void SetHook(Hook* hook) { hook_.store(hook); }

 private:
  Result (*fail_)(int error);
  std::atomic<Hook*> hook_{nullptr};
  std::atomic<void*> real_{nullptr};
};

/// Makes a function known to ScopedFailure; one per definition.
class Registration {
 public:
  explicit Registration(FailureSwitch& calls);
};

/// Sends the calls of a function to a callable while the object lives.
template <typename Signature>
class ScopedHook {
 public:
  template <typename Callable>
  ScopedHook(Interposed<Signature>& calls, Callable hook)
      : calls_(calls), hook_(std::move(hook)) {
    calls_.SetHook(&hook_);
  }
  ScopedHook(const ScopedHook&) = delete;
  ScopedHook& operator=(const ScopedHook&) = delete;
  ~ScopedHook() { calls_.SetHook(nullptr); }

 private:
  Interposed<Signature>& calls_;
  typename Interposed<Signature>::Hook hook_;
};

template <typename Signature, typename Callable>
ScopedHook(Interposed<Signature>&, Callable) -> ScopedHook<Signature>;

/// Makes a function fail while the object lives, the way that function reports
/// failure: `ScopedFailure("mkdir", ENOSPC)` lets mkdir() return -1 with that
/// errno.
class ScopedFailure {
 public:
  /// @param function  Named after INTERPOSE by this program, or the program
  ///                  stops.
  /// @param error     The errno value or error number of the failing calls.
  /// @param after     How many calls go through before the first failure.
  /// @param times     How many calls fail; -1 for all that follow.
  ScopedFailure(const char* function, int error, int after = 0, int times = -1);
  ScopedFailure(const ScopedFailure&) = delete;
  ScopedFailure& operator=(const ScopedFailure&) = delete;
  ~ScopedFailure();

  /// How many calls have failed so far.
  int count() const;

 private:
  FailureSwitch& calls_;
};

}  // namespace orvo_test

#endif  // ORVO_TESTS_SUPPORT_INTERPOSE_H_

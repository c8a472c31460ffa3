#ifndef ORVO_TESTS_SUPPORT_ALLOCATION_SWEEP_H_
#define ORVO_TESTS_SUPPORT_ALLOCATION_SWEEP_H_

/// @file
/// Runs a call again and again with its first, second, third ... allocation
/// failing, until none fails any more.

#include <exception>
#include <functional>
#include <new>
#include <string>
#include <vector>

#include "tests/support/allocations.h"

namespace orvo_test {

/// One run of a case: executes the call in which an allocation may fail.
class Attempt {
 public:
  /// @param after, times  As for ScopedAllocationFailure.
  Attempt(long after, long times) : after_(after), times_(times) {}

  /// Runs the call once; std::bad_alloc is the one exception that may leave it.
  template <typename Call>
  void operator()(Call call) {
    const ScopedAllocationFailure failure(after_, times_);
    try {
      call();
      returned_ = true;
    } catch (const std::bad_alloc&) {
    } catch (const std::exception&) {
      Check(false);
    }
    failures_ = failure.count();
  }

  /// Whether the call came to its end.
  bool returned() const { return returned_; }

  long failures() const { return failures_; }

  /// Says whether what is left after the call is as it should be.
  void Check(bool sound, int line = __builtin_LINE()) {
    if (!sound && unsound_line_ == 0) unsound_line_ = line;
  }

  /// The first check that failed, or 0.
  int unsound_line() const { return unsound_line_; }

 private:
  long after_;
  long times_;
  bool returned_ = false;
  long failures_ = 0;
  int unsound_line_ = 0;
};

/// What a call does when memory runs out.
enum class OutOfMemory {
  kNeverMatters,  ///< It asks for none.
  kThrows,        ///< std::bad_alloc leaves it.
  kMayBeKept,     ///< It throws, or goes on with the result described for it.
  kEnds,          ///< It throws, goes on or ends the process in a destructor.
};

/// A name as the list of exported symbols spells it, from its beginning, and
/// how many lines of the list begin with it.
struct Exported {
  std::string prefix;
  int count;
};

struct AllocationCase {
  std::vector<Exported> functions;
  OutOfMemory expected;
  /// Prepares, lets the attempt execute the call, and checks what is left.
  std::function<void(Attempt&)> run;
};

/// A case without anything to prepare.
template <typename Call>
std::function<void(Attempt&)> Just(Call call) {
  return [call](Attempt& attempt) { attempt(call); };
}

/// What a sweep has seen.
struct SweepFigures {
  long runs = 0;
  long failures = 0;
  long ends = 0;    ///< Runs that ended their process.
  long leaked = 0;  ///< Objects that were left over; 1 for all of a child.
  bool as_expected = true;
  int unsound_line = 0;  ///< See Attempt; not known of children.

  SweepFigures& operator+=(const SweepFigures& other);
};

/// Lets each allocation of a case fail, first alone and then together with all
/// that follow it. Cases that may end the process run in children.
///
/// Everything happens twice, because what a first call keeps for all later
/// ones is no leak.
SweepFigures Sweep(const AllocationCase& c);

/// The lines of a list of exported symbols that are functions and that no case
/// covers, and the prefixes that cover another number of lines than they say.
std::vector<std::string> FindGaps(const std::vector<std::string>& symbols,
                                  const std::vector<AllocationCase>& cases);

/// Every exported function but those of the locks and conditions.
std::vector<AllocationCase> ValueCases();

/// Those of the locks and conditions.
std::vector<AllocationCase> LockCases();

}  // namespace orvo_test

#endif  // ORVO_TESTS_SUPPORT_ALLOCATION_SWEEP_H_

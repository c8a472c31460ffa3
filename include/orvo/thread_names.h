#ifndef ORVO_THREAD_NAMES_H_
#define ORVO_THREAD_NAMES_H_

/// @file
/// Names for threads, so that reports need not show bare thread ids.
///
/// A thread names itself once, and the debug locks use that name in their
/// reports:
///
/// @code
/// std::thread reader([] {
///   orvo::threadNames.SetNameOfCurrentThread("reader");
///   ReadEverything();
/// });
/// orvo::threadNames.GetThreadName(reader.get_id());  // "reader", in a moment
/// @endcode
///
/// Any thread may call any function at any time, also while it holds locks:
/// the registry takes no lock but its own.

#include <map>
#include <mutex>
#include <string>
#include <thread>

#include "orvo/export.h"

namespace orvo {

/// A registry of thread names. Programs use the one instance threadNames.
///
/// An entry stays when its thread ends. The system may give the id of an ended
/// thread to a new one, which then goes by the old name until it names itself.
class ORVO_EXPORT ThreadNames {
 public:
  ThreadNames();
  ThreadNames(const ThreadNames&) = delete;
  ThreadNames& operator=(const ThreadNames&) = delete;
  ~ThreadNames();

  /// Names the calling thread, in place of any earlier name.
  ///
  /// @param name  Any text; the empty one is a name too.
  void SetNameOfCurrentThread(const std::string& name);

  /// @return  The calling thread's name, or "Unnamed thread".
  std::string GetNameOfCurrentThread() const;

  /// @param id  Of any thread, running or not.
  /// @return    That thread's name, or "Unnamed thread".
  std::string GetThreadName(const std::thread::id& id) const;

 private:
  mutable std::mutex mutex_;
  std::map<std::thread::id, std::string> names_;  // guarded by mutex_
};

/// The names of the process's threads, ready before main() and until exit.
extern ORVO_EXPORT ThreadNames threadNames;

}  // namespace orvo

#endif  // ORVO_THREAD_NAMES_H_

#ifndef ORVO_THREAD_SAFE_OSTREAM_H_
#define ORVO_THREAD_SAFE_OSTREAM_H_

/// @file
/// Output whose lines never mix, however many threads write.
///
/// Compose each message in a CoutBuffer of its own; when the buffer goes out
/// of scope the whole message reaches the standard output in one piece:
///
/// @code
/// orvo::CoutBuffer() << "worker " << 7 << " is done" << orvo::endl;
/// @endcode
///
/// Any number of threads may write through thread_safe_cout at once. A buffer
/// belongs to the thread that made it. Text written to std::cout directly has
/// no such protection.

#include <fstream>
#include <locale>
#include <mutex>
#include <ostream>
#include <sstream>
#include <streambuf>
#include <string>
#include <utility>

#include "orvo/export.h"

namespace orvo {

namespace internal {
class StandardOutput;
}  // namespace internal

/// A standard output stream behind a mutex.
///
/// A failed write shows in the state of the target, and is an exception only
/// where the target has an exceptions() mask.
class ORVO_EXPORT ThreadSafeOStream {
 public:
  /// @param stream  The target, which must outlive this object.
  explicit ThreadSafeOStream(std::ostream& stream);
  ThreadSafeOStream(const ThreadSafeOStream&) = delete;
  ThreadSafeOStream& operator=(const ThreadSafeOStream&) = delete;

  /// Gives the target its own buffer back and closes the redirection file.
  virtual ~ThreadSafeOStream();

  /// Inserts one value into the target while holding the mutex. The value's own
  /// inserter must do nothing that may print: not write to this stream, take a
  /// debug lock, log an exception or read a stack.
  template <typename Value>
  ThreadSafeOStream& operator<<(Value value) {
    const std::lock_guard<std::mutex> guard(mutex_);
    *stream_ << value;
    return *this;
  }

  /// Flushes the target while holding the mutex.
  ThreadSafeOStream& flush();

  /// Sends all later output of the target, also what is written to it
  /// directly, to the file at @p path, which is truncated.
  ///
  /// Meant to be called once, at start-up. Kept on purpose: nothing is checked.
  /// If the file cannot be opened, later output is lost and the target is in a
  /// failed state. Once a file is open, all output stays in it, because further
  /// calls open none; of two calls at once at most one does. After a second
  /// call the target does not get its own buffer back at destruction. Tests
  /// that only want to see the output take a ScopedCoutCapture.
  ///
  /// @throws std::bad_alloc  There is no memory for the buffer of the file; the
  ///                         output goes where it went before.
  void redirect(const std::string& path);

 private:
  friend class ScopedCoutCapture;
  friend class internal::StandardOutput;

  std::mutex mutex_;
  std::ostream* stream_;
  std::streambuf* saved_buffer_ = nullptr;
  std::ofstream file_;
};

/// A private text buffer that hands its whole text to a @p Receiver at once.
///
/// It is a string stream, so every standard insertion works on it, and always
/// in the "C" locale. Unlike a plain stream it takes values of class type by
/// value.
///
/// @tparam Receiver  Has `operator<<(std::string)` and `flush()`.
template <typename Receiver>
class ORVO_EXPORT OutBuffer : public std::ostringstream {
 public:
  /// @param receiver  Gets the text; must outlive the buffer.
  explicit OutBuffer(Receiver& receiver) : receiver_(&receiver) {
    // Numbers look the same whatever locale the application has set.
    if (getloc() != std::locale::classic()) imbue(std::locale::classic());
  }
  OutBuffer(const OutBuffer&) = delete;
  OutBuffer& operator=(const OutBuffer&) = delete;

  /// Hands the text over and flushes the receiver. An exception on the way
  /// ends the process.
  ~OutBuffer() override { flush(); }

  /// Appends a value; no lock is taken.
  template <typename Value>
  OutBuffer& operator<<(Value value) & {
    static_cast<std::ostringstream&>(*this) << value;
    return *this;
  }

  /// Applies a manipulator such as std::endl to the buffer alone.
  OutBuffer& operator<<(std::ostream& (*manipulator)(std::ostream&)) & {
    manipulator(*this);
    return *this;
  }

  /// Hands the whole text to the receiver in one call.
  ///
  /// Kept on purpose: the text stays in the buffer, so what is committed
  /// twice is written twice; leave committing to the destructor.
  void commit() {
    *receiver_ << str();
    clear();
  }

  /// commit(), then flushes the receiver.
  OutBuffer& flush() {
    commit();
    receiver_->flush();
    return *this;
  }

 private:
  Receiver* receiver_;
};

/// Appends to a temporary buffer, which a stream's own inserters would
/// otherwise claim as well.
template <typename Receiver, typename Value>
OutBuffer<Receiver>& operator<<(OutBuffer<Receiver>&& buffer, Value value) {
  return buffer << std::move(value);
}

/// Applies a manipulator such as std::endl to a temporary buffer.
template <typename Receiver>
OutBuffer<Receiver>& operator<<(OutBuffer<Receiver>&& buffer,
                                std::ostream& (*manipulator)(std::ostream&)) {
  return buffer << manipulator;
}

/// @cond
extern template ThreadSafeOStream& ThreadSafeOStream::operator<<(std::string);
extern template class OutBuffer<ThreadSafeOStream>;
extern template OutBuffer<ThreadSafeOStream>&
OutBuffer<ThreadSafeOStream>::operator<<(const char*) &;
extern template OutBuffer<ThreadSafeOStream>&
OutBuffer<ThreadSafeOStream>::operator<<(int) &;
extern template OutBuffer<ThreadSafeOStream>&
OutBuffer<ThreadSafeOStream>::operator<<(std::string) &;
/// @endcond

/// Type of orvo::endl.
struct EndlT {};

/// Type of orvo::flush.
struct FlushT {};

/// Type of orvo::rollback.
struct RollbackT {};

/// Ends a line of a CoutBuffer: a line feed and nothing else.
extern ORVO_EXPORT const EndlT endl;

/// Reserved name without an operation.
extern ORVO_EXPORT const FlushT flush;

/// Reserved name without an operation.
extern ORVO_EXPORT const RollbackT rollback;

/// The process-wide stream on std::cout.
extern ORVO_EXPORT ThreadSafeOStream thread_safe_cout;

/// One message for the standard output: make it, insert, let it go.
///
/// @code
/// {
///   orvo::CoutBuffer message;
///   message << "slept " << 3 << " times" << orvo::endl;
/// }  // written and flushed here, in one piece
/// @endcode
class ORVO_EXPORT CoutBuffer : public OutBuffer<ThreadSafeOStream> {
 public:
  CoutBuffer();
  ~CoutBuffer() override;

  /// Appends a value; no lock is taken.
  template <typename Value>
  CoutBuffer& operator<<(Value value) & {
    OutBuffer<ThreadSafeOStream>::operator<<(std::move(value));
    return *this;
  }

  /// Applies a manipulator such as std::endl to the buffer alone.
  CoutBuffer& operator<<(std::ostream& (*manipulator)(std::ostream&)) &;

  /// Appends a line feed; the text still leaves only at the end of the buffer.
  CoutBuffer& operator<<(EndlT end_of_line) &;
};

/// @cond
extern template CoutBuffer& CoutBuffer::operator<<(const char*) &;
extern template CoutBuffer& CoutBuffer::operator<<(int) &;
extern template CoutBuffer& CoutBuffer::operator<<(std::string) &;
/// @endcond

/// Appends to a temporary buffer, as in `CoutBuffer() << "text"`.
template <typename Value>
CoutBuffer& operator<<(CoutBuffer&& buffer, Value value) {
  return buffer << std::move(value);
}

/// Applies a manipulator such as std::endl to a temporary buffer.
ORVO_EXPORT CoutBuffer& operator<<(CoutBuffer&& buffer,
                                   std::ostream& (*manipulator)(std::ostream&));

/// Sends what the process writes to std::cout to the file at @p path instead.
///
/// Works once; a ScopedCoutCapture works any number of times.
///
/// @see ThreadSafeOStream::redirect for what happens when that fails.
ORVO_EXPORT void RedirectCout(const std::string& path);

/// Catches in memory what is written to thread_safe_cout, and to std::cout
/// directly, for the tests of an application.
///
/// @code
/// const orvo::ScopedCoutCapture capture;
/// RunWorker();
/// EXPECT_EQ(capture.Text(), "worker 7 is done\n");
/// @endcode
///
/// The end of its life gives the stream back the buffer and the error state
/// that it had, also when an exception ends it; formatting flags stay as they
/// are. Captures may follow and contain each other, and the innermost one gets
/// the text. It does not matter whether RedirectCout() was called before, and
/// a call meanwhile takes effect at once and stays.
///
/// Any thread may make, read or end a capture while others write through
/// thread_safe_cout: the stream's buffer is exchanged under its mutex. Text
/// that threads write to std::cout directly, or through printf(), has no such
/// protection; the latter is not captured.
class ORVO_EXPORT ScopedCoutCapture {
 public:
  ScopedCoutCapture();
  ScopedCoutCapture(const ScopedCoutCapture&) = delete;
  ScopedCoutCapture& operator=(const ScopedCoutCapture&) = delete;
  ~ScopedCoutCapture();

  /// What was written so far.
  std::string Text() const;

 private:
  // What the stream gets back.
  struct Former {
    std::streambuf* buffer;
    std::ios_base::iostate state;
  };

  void GiveBack_() const;

  std::stringbuf buffer_;
  Former former_;             // guarded by the stream's mutex
  ScopedCoutCapture* outer_;  // guarded by the stream's mutex
};

}  // namespace orvo

#endif  // ORVO_THREAD_SAFE_OSTREAM_H_

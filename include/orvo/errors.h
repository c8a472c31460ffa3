#ifndef ORVO_ERRORS_H_
#define ORVO_ERRORS_H_

/// @file
/// Every error class of the library, in one small tree below
/// std::runtime_error.
///
/// The tree has several roots of its own on purpose: RuntimeError,
/// OrvoRuntimeError, LockError, ListDirError, midi::MidiError, NotACOMM and
/// NoID3Found are siblings. Only std::runtime_error (or std::exception)
/// catches all of them:
///
/// @code
/// try {
///   orvo::path::MakeDirectories("logs/today");
/// } catch (const orvo::RuntimeError& error) {    // PathError, TimeError
///   std::cerr << error.what() << '\n';           // the message, nothing added
/// }
/// @endcode
///
/// Error objects never change after construction and may be shared by threads.

#include <stdexcept>
#include <string>

#include "orvo/export.h"

namespace orvo {

/// Common base of the time and path errors; never thrown itself.
class ORVO_EXPORT RuntimeError : public std::runtime_error {
 public:
  /// @param message  What what() returns, unchanged.
  explicit RuntimeError(const std::string& message);
  ~RuntimeError() override;
};

/// Base of TimeValueError; never thrown itself and unrelated to RuntimeError.
class ORVO_EXPORT OrvoRuntimeError : public std::runtime_error {
 public:
  /// @param message  What what() returns, unchanged.
  explicit OrvoRuntimeError(const std::string& message);
  ~OrvoRuntimeError() override;
};

/// A time has no calendar form (GmtimeSafe(), LocaltimeSafe()).
class ORVO_EXPORT TimeError : public RuntimeError {
 public:
  /// @param message  What what() returns, unchanged.
  explicit TimeError(const std::string& message);
  ~TimeError() override;
};

/// A TimeValue has no ISO 8601 text.
class ORVO_EXPORT TimeValueError : public OrvoRuntimeError {
 public:
  /// @param message  What what() returns, unchanged.
  explicit TimeValueError(const std::string& message);
  ~TimeValueError() override;
};

/// A lock operation failed or a lock was misused.
class ORVO_EXPORT LockError : public std::runtime_error {
 public:
  /// @param message  What what() returns, unchanged.
  explicit LockError(const std::string& message);
  ~LockError() override;
};

/// Base of BadDir; never thrown itself.
class ORVO_EXPORT ListDirError : public std::runtime_error {
 public:
  /// @param message  What what() returns, unchanged.
  explicit ListDirError(const std::string& message);
  ~ListDirError() override;
};

/// A directory cannot be opened for listing.
class ORVO_EXPORT BadDir : public ListDirError {
 public:
  /// @param message  What what() returns, unchanged.
  explicit BadDir(const std::string& message);
  ~BadDir() override;
};

/// A frame is not a comment frame that can be read. Only the constructor of
/// COMMFrame throws it; get_comm() searches on.
class ORVO_EXPORT NotACOMM : public std::runtime_error {
 public:
  /// @param message  What what() returns, unchanged.
  explicit NotACOMM(const std::string& message);
  ~NotACOMM() override;
};

/// A stream does not start with an ID3 tag.
class ORVO_EXPORT NoID3Found : public std::runtime_error {
 public:
  /// @param message  What what() returns, unchanged.
  explicit NoID3Found(const std::string& message);
  ~NoID3Found() override;
};

namespace path {

/// A directory cannot be created.
class ORVO_EXPORT PathError : public RuntimeError {
 public:
  /// @param message  What what() returns, unchanged.
  explicit PathError(const std::string& message);
  ~PathError() override;
};

}  // namespace path

namespace midi {

/// Base of InvalidNoteName; never thrown itself.
class ORVO_EXPORT MidiError : public std::runtime_error {
 public:
  /// @param message  What what() returns, unchanged.
  explicit MidiError(const std::string& message);
  ~MidiError() override;
};

/// A text is not a note name.
class ORVO_EXPORT InvalidNoteName : public MidiError {
 public:
  /// @param message  What what() returns, unchanged.
  explicit InvalidNoteName(const std::string& message);
  ~InvalidNoteName() override;
};

}  // namespace midi
}  // namespace orvo

#endif  // ORVO_ERRORS_H_

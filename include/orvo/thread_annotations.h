#ifndef ORVO_THREAD_ANNOTATIONS_H_
#define ORVO_THREAD_ANNOTATIONS_H_

/// @file
/// What clang's thread-safety analysis (-Wthread-safety) has to know of locks;
/// empty for other compilers.
///
/// The locks, scope locks and conditions of the library carry these
/// annotations. A program adds which lock guards what:
///
/// @code
/// orvo::Lock lock_{"orders"};
/// std::deque<Order> orders_ ORVO_GUARDED_BY(lock_);
/// @endcode
///
/// The analysis knows no recursive locks: where one function takes an RLock
/// twice, exclude it with ORVO_NO_THREAD_SAFETY_ANALYSIS.

/// @cond
#ifdef __clang__
#define ORVO_THREAD_ANNOTATION_(...) __attribute__((__VA_ARGS__))
#else
#define ORVO_THREAD_ANNOTATION_(...)
#endif
/// @endcond

/// Marks a class of locks.
#define ORVO_LOCKABLE ORVO_THREAD_ANNOTATION_(capability("mutex"))

/// Marks a class whose objects hold a lock for the length of a block.
#define ORVO_SCOPED_LOCKABLE ORVO_THREAD_ANNOTATION_(scoped_lockable)

/// Marks data that may be touched only while this lock is held.
#define ORVO_GUARDED_BY(lock) ORVO_THREAD_ANNOTATION_(guarded_by(lock))

/// Marks functions whose callers hold these locks.
#define ORVO_REQUIRES(...) \
  ORVO_THREAD_ANNOTATION_(requires_capability(__VA_ARGS__))

/// Marks functions whose callers must not hold these locks.
#define ORVO_EXCLUDES(...) ORVO_THREAD_ANNOTATION_(locks_excluded(__VA_ARGS__))

/// Marks functions that take these locks, or the object itself.
#define ORVO_ACQUIRE(...) \
  ORVO_THREAD_ANNOTATION_(acquire_capability(__VA_ARGS__))

/// Marks functions that release these locks, or the object itself.
#define ORVO_RELEASE(...) \
  ORVO_THREAD_ANNOTATION_(release_capability(__VA_ARGS__))

/// Marks functions that take the object itself if they return this value.
#define ORVO_TRY_ACQUIRE(...) \
  ORVO_THREAD_ANNOTATION_(try_acquire_capability(__VA_ARGS__))

/// Leaves the body of a function out of the analysis.
#define ORVO_NO_THREAD_SAFETY_ANALYSIS \
  ORVO_THREAD_ANNOTATION_(no_thread_safety_analysis)

#endif  // ORVO_THREAD_ANNOTATIONS_H_

#ifndef ORVO_SRC_INTERNAL_DEBUG_BOOKS_H_
#define ORVO_SRC_INTERNAL_DEBUG_BOOKS_H_

#include <thread>

#include "orvo/orvo_lock_debug.h"

namespace orvo::internal {

/// Writes down that the calling thread has taken the mutex past lock() and
/// try_lock(), which do so themselves; releases it if memory runs out, because
/// a lock without an entry in the books could never be released.
inline void RecordAcquisition(DebugLockImpl_& impl) {
  const std::thread::id threadId = std::this_thread::get_id();
  if (auto* const recursive = dynamic_cast<DebugRLockImpl_*>(&impl)) {
    recursive->CountAcquisition(threadId);
  } else {
    impl.DebugLockImpl_::SetOwner(threadId);
  }
}

}  // namespace orvo::internal

#endif  // ORVO_SRC_INTERNAL_DEBUG_BOOKS_H_

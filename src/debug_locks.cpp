#include "orvo/debug_locks.h"

#include <utility>

#include "internal/debug_books.h"
#include "internal/not_null.h"
#include "internal/timed_mutex.h"

namespace orvo {

DebugLock::DebugLock(const std::string& name)
    : impl_(std::make_unique<DebugLockImpl_>(name)) {}

DebugLock::DebugLock(std::unique_ptr<DebugLockImpl_> impl)
    : impl_(internal::NotNull(std::move(impl))) {}

DebugLock::DebugLock(DebugLock&& other) noexcept = default;
DebugLock& DebugLock::operator=(DebugLock&& other) noexcept = default;
DebugLock::~DebugLock() = default;

void DebugLock::lock() {
  impl_->ThrowIfOwnedByThisThread();
  impl_->lock();
}

void DebugLock::unlock() {
  impl_->unlock();
}

bool DebugLock::try_lock() {
  return impl_->try_lock();
}

bool DebugLock::TimedLock(double seconds) {
  if (!impl_->TimedLock(seconds)) return false;
  internal::RecordAcquisition(*impl_);
  return true;
}

bool DebugLock::TryLockBefore(const Deadline& deadline) {
  if (!internal::TryLockBefore(impl_->get_mutex(), deadline)) return false;
  internal::RecordAcquisition(*impl_);
  return true;
}

pthread_mutex_t* DebugLock::get_mutex() {
  return impl_->get_mutex();
}

void DebugLock::SetOwner(const std::thread::id& owner) {
  impl_->SetOwner(owner);
}

void DebugLock::LockWithFilenameAndLineNumber(const std::string& function,
                                              const std::string& file,
                                              int line) {
  impl_->ThrowIfOwnedByThisThread();
  impl_->LockWithFilenameAndLineNumber(function, file, line);
}

void DebugLock::SetPendingLockingCodeReference(const std::string& function,
                                               const std::string& file,
                                               int line) {
  impl_->SetPendingLockingCodeReference(function, file, line);
}

void DebugLock::SetWaitWillUnlock(bool waitWillUnlock, const std::string& file,
                                  int line) {
  impl_->SetWaitWillUnlock(waitWillUnlock, file, line);
}

void DebugLock::ThrowIfOwnedByThisThread() {
  impl_->ThrowIfOwnedByThisThread();
}

std::thread::id DebugLock::GetOwner() const {
  return impl_->GetOwner();
}

std::string DebugLock::GetOwnerName() const {
  return impl_->GetOwnerName();
}

int DebugLock::GetDepth() const {
  return impl_->GetDepth();
}

LockingCodeReference DebugLock::GetPendingReference(
    const std::thread::id& threadId) const {
  return impl_->GetPendingReference(threadId);
}

std::string DebugLock::Describe() const {
  return impl_->Describe();
}

void DebugLock::BeginWait(const std::string& file, int line) {
  impl_->SetWaitWillUnlock(true, file, line);
  // The announcement leaves this thread the owner. That of the recursive lock
  // would ask for a count, which is 0 already.
  impl_->DebugLockImpl_::SetOwner(std::thread::id());
}

void DebugLock::EndWait(const std::string& file, int line) {
  impl_->SetWaitWillUnlock(false, file, line);
}

DebugRLock::DebugRLock(const std::string& name)
    : DebugRLock(std::make_unique<DebugRLockImpl_>(name)) {}

DebugRLock::DebugRLock(std::unique_ptr<DebugRLockImpl_> impl)
    : DebugLock(std::move(impl)) {}

DebugRLock::DebugRLock(DebugRLock&& other) noexcept = default;
DebugRLock& DebugRLock::operator=(DebugRLock&& other) noexcept = default;
DebugRLock::~DebugRLock() = default;

void DebugRLock::lock() {
  impl_->lock();
}

void DebugRLock::LockWithFilenameAndLineNumber(const std::string& function,
                                               const std::string& file,
                                               int line) {
  impl_->LockWithFilenameAndLineNumber(function, file, line);
}

int DebugRLock::count() {
  return impl_->count();
}

}  // namespace orvo

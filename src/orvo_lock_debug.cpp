#include "orvo/orvo_lock_debug.h"

#include <cassert>
#include <stdexcept>

#include "orvo/errors.h"
#include "orvo/format.h"
#include "orvo/path.h"
#include "orvo/stacktrace.h"
#include "orvo/thread_names.h"
#include "orvo/thread_safe_ostream.h"
#include "orvo/time_value.h"

namespace orvo {
namespace {

// What source-file names are made relative to.
const std::string developmentRoot = ORVO_DEVELOPMENT_ROOT;

// books_mutex_ orders what is written; who reads without it looks for its own
// id only.
constexpr std::memory_order kRelaxed = std::memory_order_relaxed;

// TimedLock() keeps 32 bits of the nanoseconds: 0.7 s of requested sleep.
constexpr double kSecondsBetweenBanners = 5.0;

using BooksGuard = std::lock_guard<std::recursive_mutex>;

// The part that all banners share.
void BeginBanner(CoutBuffer& banner, const std::string& lock_name) {
  banner << " \n\n\n********\n\n\n"
         << threadNames.GetNameOfCurrentThread() << " cannot acquire lock "
         << lock_name << " because ";
}

void PrintNotSharing(const std::string& lock_name, const char* holder) {
  CoutBuffer banner;
  BeginBanner(banner, lock_name);
  banner << holder << " is not sharing." << endl;
}

[[noreturn]] void ThrowNotReleasable(const std::string& lock_name,
                                     const char* why) {
  throw LockError(threadNames.GetNameOfCurrentThread() +
                  " tried to release lock " + lock_name + why);
}

// Stands beside an assertion, for builds without assertions.
void PrintWouldHaveThrown(int line, const char* what) {
  CoutBuffer() << "Would have thrown. " << what << " line: " << line << endl;
}

void PrintNotAcquiredOnce(int line, int count, const std::string& callers_file,
                          int callers_line) {
  CoutBuffer() << "SetWaitWillUnlock"
               << " called from " << callers_file << ": " << callers_line
               << " Would have thrown.\n  Waiting on lock that has not been "
                  "acquired exactly once. "
               << "threadLockCount = " << count << " line: " << line << endl;
}

// Keeps a name within its line.
std::string InOneLine(std::string text) {
  for (char& character : text) {
    const bool control =
        static_cast<unsigned char>(character) < ' ' || character == '\x7f';
    if (control) character = ' ';
  }
  return text;
}

// Wraps around at the limits, to which a program may have set a count.
int Add(int count, int step) {
  return static_cast<int>(static_cast<unsigned>(count) +
                          static_cast<unsigned>(step));
}

}  // namespace

LockingCodeReference::LockingCodeReference() = default;

LockingCodeReference::LockingCodeReference(const std::string& function,
                                           const std::string& file, int line)
    : function_(function), file_(file), line_(line) {}

LockingCodeReference::LockingCodeReference(const LockingCodeReference& other) =
    default;
LockingCodeReference::LockingCodeReference(
    LockingCodeReference&& other) noexcept = default;
LockingCodeReference& LockingCodeReference::operator=(
    const LockingCodeReference& other) = default;
LockingCodeReference& LockingCodeReference::operator=(
    LockingCodeReference&& other) noexcept = default;
LockingCodeReference::~LockingCodeReference() = default;

bool LockingCodeReference::HasReference() const {
  return !function_.empty();
}

std::string LockingCodeReference::GetAsString() const {
  if (!HasReference()) return std::string();
  std::string text = function_ + " --> ";
  text += path::relpath(file_, developmentRoot);
  text += ':';
  return text += std::to_string(line_);
}

DebugLockImpl_::DebugLockImpl_(const std::string& name)
    : LockImpl_(name), owner_(std::thread::id()) {}

DebugLockImpl_::DebugLockImpl_(const std::string& name, bool)
    : LockImpl_(name, false), owner_(std::thread::id()) {}

DebugLockImpl_::~DebugLockImpl_() = default;

void DebugLockImpl_::lock() {
  while (!TimedLock(kSecondsBetweenBanners)) {
    const BooksGuard guard(books_mutex_);
    // Kept on purpose: the holder is not named.
    PrintNotSharing(name_, "A Thread ");
  }
  const BooksGuard guard(books_mutex_);
  owner_.store(std::this_thread::get_id(), kRelaxed);
}

void DebugLockImpl_::unlock() {
  {
    const BooksGuard guard(books_mutex_);
    if (owner_ != std::this_thread::get_id()) {
      ThrowNotReleasable(name_, " without first acquiring it.");
    }
    owner_.store(std::thread::id(), kRelaxed);
  }
  pthread_mutex_unlock(&mutex_);
}

bool DebugLockImpl_::try_lock() {
  const BooksGuard guard(books_mutex_);
  if (LockImpl_::try_lock()) {
    owner_.store(std::this_thread::get_id(), kRelaxed);
    return true;
  }
  // Kept on purpose: lacks the "A Thread " of lock().
  PrintNotSharing(name_, "");
  return false;
}

void DebugLockImpl_::SetOwner(const std::thread::id& owner) {
  const BooksGuard guard(books_mutex_);
  owner_.store(owner, kRelaxed);
}

void DebugLockImpl_::SetWaitWillUnlock(bool waitWillUnlock, const std::string&,
                                       int) {
  const BooksGuard guard(books_mutex_);
  const std::thread::id threadId = std::this_thread::get_id();
  if (waitWillUnlock) {
    assert(!this->GetWaitWillUnlock(threadId));
    if (GetWaitWillUnlock(threadId)) {
      PrintWouldHaveThrown(__LINE__,
                           "waitWillUnlock was previously set to true.");
    }
    wait_will_unlock_[threadId] = true;
    assert(this->owner_ == threadId);
    if (owner_ != threadId) {
      PrintWouldHaveThrown(
          __LINE__,
          "SetWaitWillUnlock(true) was called without owning the lock.");
    }
    owner_.store(threadId, kRelaxed);
    SetCount(0);
  } else {
    assert(this->GetWaitWillUnlock(threadId));
    if (!GetWaitWillUnlock(threadId)) {
      PrintWouldHaveThrown(__LINE__,
                           "waitWillUnlock was previously set to false.");
    }
    wait_will_unlock_[threadId] = false;
    assert(this->owner_ == std::thread::id());
    if (owner_ != std::thread::id()) {
      PrintWouldHaveThrown(
          __LINE__, "SetWaitWillUnlock(false) was called on an owned lock.");
    }
    owner_.store(threadId, kRelaxed);
    SetCount(1);
  }
}

// The mutex of the books must be free while lock() waits.
void DebugLockImpl_::LockWithFilenameAndLineNumber(const std::string& function,
                                                   const std::string& file,
                                                   int line) {
  SetPendingLockingCodeReference(function, file, line);
  lock();
}

void DebugLockImpl_::SetPendingLockingCodeReference(const std::string& function,
                                                    const std::string& file,
                                                    int line) {
  const BooksGuard guard(books_mutex_);
  pending_references_[std::this_thread::get_id()] =
      LockingCodeReference(function, file, line);
}

void DebugLockImpl_::ThrowIfOwnedByThisThread() {
  if (owner_ != std::this_thread::get_id()) return;
  PrintStackTrace(20);
  Sleep(10);
  throw std::runtime_error("This lock is already owned by this thread.");
}

void DebugLockImpl_::SetCount(int) {}

bool DebugLockImpl_::GetWaitWillUnlock(const std::thread::id& threadId) {
  const BooksGuard guard(books_mutex_);
  const auto flag = wait_will_unlock_.find(threadId);
  return flag != wait_will_unlock_.end() && flag->second;
}

std::thread::id DebugLockImpl_::GetOwner() const {
  const BooksGuard guard(books_mutex_);
  return owner_;
}

std::string DebugLockImpl_::GetOwnerName() const {
  const std::thread::id owner = GetOwner();
  if (owner == std::thread::id()) return std::string();
  return threadNames.GetThreadName(owner);
}

int DebugLockImpl_::GetDepth() const {
  const BooksGuard guard(books_mutex_);
  const std::thread::id owner = owner_;
  if (owner == std::thread::id()) return 0;
  const auto* const recursive = dynamic_cast<const DebugRLockImpl_*>(this);
  if (recursive == nullptr) return 1;
  const auto count = recursive->counts_.find(owner);
  return count == recursive->counts_.end() ? 0 : count->second;
}

LockingCodeReference DebugLockImpl_::GetPendingReference(
    const std::thread::id& threadId) const {
  const BooksGuard guard(books_mutex_);
  const auto reference = pending_references_.find(threadId);
  return reference == pending_references_.end() ? LockingCodeReference()
                                                : reference->second;
}

std::string DebugLockImpl_::Describe() const {
  const BooksGuard guard(books_mutex_);
  std::string text = "Lock " + InOneLine(name_);
  const std::thread::id owner = owner_;
  if (owner == std::thread::id()) return text += " is free.";
  text += " is held by " + InOneLine(GetOwnerName()) + ", depth " +
          std::to_string(GetDepth());
  const std::string place = GetPendingReference(owner).GetAsString();
  if (!place.empty()) text += ", last announced from " + InOneLine(place);
  return text += '.';
}

DebugRLockImpl_::DebugRLockImpl_(const std::string& name)
    : DebugLockImpl_(name, false) {
  InitializeRecursiveMutex();
}

DebugRLockImpl_::~DebugRLockImpl_() = default;

void DebugRLockImpl_::lock() {
  const std::thread::id threadId = std::this_thread::get_id();
  while (!TimedLock(kSecondsBetweenBanners)) PrintContention();
  CountAcquisition(threadId);
}

void DebugRLockImpl_::unlock() {
  const BooksGuard guard(books_mutex_);
  const std::thread::id threadId = std::this_thread::get_id();
  int& count = counts_[threadId];
  if (count == 0) {
    ThrowNotReleasable(name_, " more times than it was acquired.");
  }
  // The next holder waits for the books until this thread is out of them.
  pthread_mutex_unlock(&mutex_);
  // A count below 0 is for DecrementCount() to report.
  const int threadLockCount = count > 0 ? --count : DecrementCount(threadId);
  if (threadLockCount < 1) assert(threadLockCount == 0);
  if (threadLockCount == 0) owner_.store(std::thread::id(), kRelaxed);
}

bool DebugRLockImpl_::try_lock() {
  // The books of the base would not count.
  // NOLINTNEXTLINE(bugprone-parent-virtual-call)
  if (!LockImpl_::try_lock()) {
    PrintContention();
    return false;
  }
  CountAcquisition(std::this_thread::get_id());
  return true;
}

void DebugRLockImpl_::SetOwner(const std::thread::id& owner) {
  const BooksGuard guard(books_mutex_);
  const int threadLockCount = GetCount(owner_);
  assert(threadLockCount > 0);
  const std::thread::id previousOwner = owner_;
  // Kept on purpose: the report shows this text, which lacks a blank.
  // clang-format off
  assert(this->owner_!= std::thread::id());
  // clang-format on
  InitializeCountIfNeeded(owner);
  DebugLockImpl_::SetOwner(owner);
  if (previousOwner != owner) {
    counts_[owner] = threadLockCount;
    counts_[previousOwner] = 0;
  }
}

void DebugRLockImpl_::SetWaitWillUnlock(bool waitWillUnlock,
                                        const std::string& file, int line) {
  const BooksGuard guard(books_mutex_);
  if (waitWillUnlock) {
    const int threadLockCount = GetCount(std::this_thread::get_id());
    assert(threadLockCount == 1);
    if (threadLockCount != 1) {
      PrintNotAcquiredOnce(__LINE__, threadLockCount, file, line);
    }
  }
  DebugLockImpl_::SetWaitWillUnlock(waitWillUnlock, file, line);
}

void DebugRLockImpl_::SetCount(int count) {
  counts_[std::this_thread::get_id()] = count;
}

int DebugRLockImpl_::IncrementCount(const std::thread::id& threadId) {
  const BooksGuard guard(books_mutex_);
  int& count = counts_[threadId];
  return count = Add(count, 1);
}

int DebugRLockImpl_::DecrementCount(const std::thread::id& threadId) {
  const BooksGuard guard(books_mutex_);
  int& count = counts_[threadId];
  assert(this->GetCount(threadId) > 0);
  return count = Add(count, -1);
}

int DebugRLockImpl_::GetCount(const std::thread::id& threadId) {
  const BooksGuard guard(books_mutex_);
  return counts_[threadId];
}

void DebugRLockImpl_::InitializeCountIfNeeded(const std::thread::id& threadId) {
  counts_.try_emplace(threadId, 0);
}

void DebugRLockImpl_::PrintAllCountsGreaterThanZero(
    const std::thread::id& threadId) {
  const BooksGuard guard(books_mutex_);
  std::string others;
  for (const auto& [id, count] : counts_) {
    if (count == 0 || id == threadId) continue;
    others += orvo::format("A Thread  has threadLockCount %d\n", count);
  }
  CoutBuffer report;
  if (others.empty()) {
    report << "No other threads have acquired this lock." << endl;
  } else {
    report << "There are threads that appear to own this lock: " << endl
           << others << endl;
  }
  report << endl;
}

void DebugRLockImpl_::CountAcquisition(const std::thread::id& threadId) {
  const BooksGuard guard(books_mutex_);
  try {
    InitializeCountIfNeeded(threadId);
  } catch (...) {
    // A lock without an entry in the books could never be released.
    pthread_mutex_unlock(&mutex_);
    throw;
  }
  owner_.store(threadId, kRelaxed);
  int& count = counts_[threadId];
  count = Add(count, 1);
}

void DebugRLockImpl_::PrintContention() {
  const BooksGuard guard(books_mutex_);
  {
    CoutBuffer banner;
    BeginBanner(banner, name_);
    // Kept on purpose: the holder is not named.
    banner << " has acquired it " << GetCount(owner_) << " times." << endl;
  }
  PrintAllCountsGreaterThanZero(owner_);
}

}  // namespace orvo

#include "orvo/thread_safe_ostream.h"

#include <iostream>

namespace orvo {
namespace {

// Guarded by the mutex of thread_safe_cout.
ScopedCoutCapture* innermostCapture = nullptr;

}  // namespace

ThreadSafeOStream::ThreadSafeOStream(std::ostream& stream) : stream_(&stream) {}

ThreadSafeOStream::~ThreadSafeOStream() {
  if (saved_buffer_ == nullptr) return;
  // After a second redirection it is that of the file, which ends here, while
  // the standard output is flushed once more at the very end of the process.
  stream_->rdbuf(saved_buffer_ == file_.rdbuf() ? nullptr : saved_buffer_);
}

ThreadSafeOStream& ThreadSafeOStream::flush() {
  const std::lock_guard<std::mutex> guard(mutex_);
  stream_->flush();
  return *this;
}

void ThreadSafeOStream::redirect(const std::string& path) {
  try {
    file_.open(path, std::ios_base::out);
  } catch (...) {
    // It may be open without a buffer, and could not be opened again.
    file_.close();
    throw;
  }
  const std::lock_guard<std::mutex> guard(mutex_);
  saved_buffer_ = stream_->rdbuf(file_.rdbuf());
}

template ORVO_EXPORT ThreadSafeOStream& ThreadSafeOStream::operator<<(
    std::string);
template class OutBuffer<ThreadSafeOStream>;
template ORVO_EXPORT OutBuffer<ThreadSafeOStream>&
OutBuffer<ThreadSafeOStream>::operator<<(const char*) &;
template ORVO_EXPORT OutBuffer<ThreadSafeOStream>&
OutBuffer<ThreadSafeOStream>::operator<<(int) &;
template ORVO_EXPORT OutBuffer<ThreadSafeOStream>&
OutBuffer<ThreadSafeOStream>::operator<<(std::string) &;

const EndlT endl;
const FlushT flush;
const RollbackT rollback;

ThreadSafeOStream thread_safe_cout(std::cout);

CoutBuffer::CoutBuffer() : OutBuffer<ThreadSafeOStream>(thread_safe_cout) {}
CoutBuffer::~CoutBuffer() = default;

CoutBuffer& CoutBuffer::operator<<(
    std::ostream& (*manipulator)(std::ostream&)) & {
  OutBuffer<ThreadSafeOStream>::operator<<(manipulator);
  return *this;
}

CoutBuffer& CoutBuffer::operator<<(EndlT) & {
  // Not as a formatted insertion, which would fill up a pending width.
  put('\n');
  return *this;
}

CoutBuffer& operator<<(CoutBuffer&& buffer,
                       std::ostream& (*manipulator)(std::ostream&)) {
  return buffer << manipulator;
}

template ORVO_EXPORT CoutBuffer& CoutBuffer::operator<<(const char*) &;
template ORVO_EXPORT CoutBuffer& CoutBuffer::operator<<(int) &;
template ORVO_EXPORT CoutBuffer& CoutBuffer::operator<<(std::string) &;

void RedirectCout(const std::string& path) {
  thread_safe_cout.redirect(path);
}

ScopedCoutCapture::ScopedCoutCapture() : buffer_(std::ios_base::out) {
  const std::lock_guard<std::mutex> guard(thread_safe_cout.mutex_);
  std::ostream& stream = *thread_safe_cout.stream_;
  former_.state = stream.rdstate();
  former_.buffer = stream.rdbuf(&buffer_);
  outer_ = std::exchange(innermostCapture, this);
}

ScopedCoutCapture::~ScopedCoutCapture() {
  const std::lock_guard<std::mutex> guard(thread_safe_cout.mutex_);
  ScopedCoutCapture* inner = nullptr;
  for (auto* capture = innermostCapture; capture != this;
       capture = capture->outer_) {
    inner = capture;
  }
  (inner == nullptr ? innermostCapture : inner->outer_) = outer_;

  // Nobody may be left with the buffer, in whatever order things end.
  if (thread_safe_cout.saved_buffer_ == &buffer_) {
    thread_safe_cout.saved_buffer_ = former_.buffer;
  } else if (inner != nullptr) {
    inner->former_ = former_;
  } else {
    GiveBack_();
  }
}

void ScopedCoutCapture::GiveBack_() const {
  std::ostream& stream = *thread_safe_cout.stream_;
  try {
    stream.rdbuf(former_.buffer);
    stream.clear(former_.state);
  } catch (...) {
    // The stream has its state back, and this is no time to complain about it.
  }
}

std::string ScopedCoutCapture::Text() const {
  const std::lock_guard<std::mutex> guard(thread_safe_cout.mutex_);
  return buffer_.str();
}

}  // namespace orvo

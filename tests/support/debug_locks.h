#ifndef ORVO_TESTS_SUPPORT_DEBUG_LOCKS_H_
#define ORVO_TESTS_SUPPORT_DEBUG_LOCKS_H_

#include <functional>
#include <iostream>
#include <mutex>
#include <streambuf>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "orvo/orvo_lock_debug.h"

namespace orvo_test {

/// How often a lock polls for its mutex before it prints a banner.
constexpr int kPollsPerBanner = 352517;

/// A debug lock whose books can be read.
template <typename Base>
class OpenBooks : public Base {
 public:
  using Base::Base;
  using Base::books_mutex_;

  std::thread::id owner() const { return this->owner_; }

  /// Whether another thread could enter the books right now.
  bool BooksAreFree() {
    bool free = false;
    std::thread([&] {
      free = books_mutex_.try_lock();
      if (free) books_mutex_.unlock();
    }).join();
    return free;
  }
};

/// Takes the place of the standard output's buffer and keeps what is written
/// between two flushes apart.
class Pieces : public std::streambuf {
 public:
  /// @param at_flush  Called at each flush, in the thread that writes.
  explicit Pieces(std::function<void()> at_flush = [] {})
      : at_flush_(std::move(at_flush)), saved_(std::cout.rdbuf(this)) {}
  Pieces(const Pieces&) = delete;
  Pieces& operator=(const Pieces&) = delete;
  ~Pieces() override { std::cout.rdbuf(saved_); }

  const std::vector<std::string>& all() const { return all_; }

 protected:
  int_type overflow(int_type character) override {
    if (!traits_type::eq_int_type(character, traits_type::eof())) {
      current_ += traits_type::to_char_type(character);
    }
    return traits_type::not_eof(character);
  }

  std::streamsize xsputn(const char* text, std::streamsize size) override {
    current_.append(text, static_cast<std::size_t>(size));
    return size;
  }

  int sync() override {
    all_.push_back(std::exchange(current_, {}));
    at_flush_();
    return 0;
  }

 private:
  std::function<void()> at_flush_;
  std::streambuf* saved_;
  std::string current_;
  std::vector<std::string> all_;
};

}  // namespace orvo_test

#endif  // ORVO_TESTS_SUPPORT_DEBUG_LOCKS_H_

#ifndef ORVO_TESTS_SUPPORT_SILENCE_H_
#define ORVO_TESTS_SUPPORT_SILENCE_H_

#include <iostream>
#include <streambuf>

namespace orvo_test {

/// Swallows what the process prints, such as banners, which may be many.
class Silence : public std::streambuf {
 public:
  Silence() : saved_(std::cout.rdbuf(this)) {}
  Silence(const Silence&) = delete;
  Silence& operator=(const Silence&) = delete;
  ~Silence() override { std::cout.rdbuf(saved_); }

 protected:
  int_type overflow(int_type character) override {
    return traits_type::not_eof(character);
  }
  std::streamsize xsputn(const char*, std::streamsize size) override {
    return size;
  }

 private:
  std::streambuf* saved_;
};

}  // namespace orvo_test

#endif  // ORVO_TESTS_SUPPORT_SILENCE_H_

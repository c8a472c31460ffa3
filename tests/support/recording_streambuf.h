#ifndef ORVO_TESTS_SUPPORT_RECORDING_STREAMBUF_H_
#define ORVO_TESTS_SUPPORT_RECORDING_STREAMBUF_H_

#include <streambuf>
#include <string>
#include <vector>

namespace orvo_test {

/// A stream buffer that notes each write and each flush.
class RecordingStreambuf : public std::streambuf {
 public:
  std::vector<std::string> calls;

 protected:
  std::streamsize xsputn(const char* text, std::streamsize size) override {
    calls.emplace_back(text, static_cast<std::size_t>(size));
    return size;
  }
  int sync() override {
    calls.emplace_back("(flush)");
    return 0;
  }
};

}  // namespace orvo_test

#endif  // ORVO_TESTS_SUPPORT_RECORDING_STREAMBUF_H_

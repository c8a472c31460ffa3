#ifndef ORVO_FUZZ_SINK_H_
#define ORVO_FUZZ_SINK_H_

#include <ios>
#include <streambuf>
#include <string>

namespace orvo_fuzz {

/// Keeps what is written.
class Sink : public std::streambuf {
 public:
  std::string text;

 protected:
  int_type overflow(int_type c) override {
    text += traits_type::to_char_type(c);
    return c;
  }
  std::streamsize xsputn(const char* bytes, std::streamsize size) override {
    text.append(bytes, static_cast<std::size_t>(size));
    return size;
  }
};

}  // namespace orvo_fuzz

#endif  // ORVO_FUZZ_SINK_H_

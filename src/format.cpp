#include "orvo/format.h"

#include <cstdio>
#include <cstring>
#include <memory>

#ifdef __GLIBC__
// The XSI function, under the name that glibc gives it whichever variant of
// strerror_r() its headers declare.
// NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" int __xpg_strerror_r(int errnum, char* buffer, std::size_t size);
#endif

namespace orvo {
namespace {

constexpr std::size_t kBufferSize = 256;

int WriteErrorText(int errnum, char* buffer, std::size_t size) {
#ifdef __GLIBC__
  return __xpg_strerror_r(errnum, buffer, size);
#else
  return strerror_r(errnum, buffer, size);
#endif
}

// Two passes at the most: the first tells how much room the text needs.
ORVO_PRINTF_LIKE(1, 0)
std::string Expand(const char* fmt, va_list args) {
  char stack_buffer[kBufferSize];
  va_list first_pass;
  va_copy(first_pass, args);
  const int length =
      orvo::vformat(stack_buffer, sizeof stack_buffer, fmt, first_pass);
  va_end(first_pass);

  // A failure (-1) becomes an impossible length, which std::string rejects.
  const auto size = static_cast<std::size_t>(length);
  if (length < static_cast<int>(kBufferSize)) {
    return std::string(stack_buffer, size);
  }
  const std::unique_ptr<char[]> heap_buffer(new char[size + 1]);
  orvo::vformat(heap_buffer.get(), size + 1, fmt, args);
  return std::string(heap_buffer.get(), size);
}

// Ends a variable argument list also when an exception leaves.
class ArgumentsEnd {
 public:
  explicit ArgumentsEnd(va_list* args) : args_(args) {}
  ArgumentsEnd(const ArgumentsEnd&) = delete;
  ArgumentsEnd& operator=(const ArgumentsEnd&) = delete;
  ~ArgumentsEnd() { va_end(*args_); }

 private:
  va_list* args_;
};

}  // namespace

int vformat(char* buffer, unsigned long size, const char* fmt, va_list args) {
  return vsnprintf(buffer, size, fmt, args);
}

std::string format(const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const ArgumentsEnd end(&args);
  return Expand(fmt, args);
}

// By value, because no reference can stand before a variable argument list.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
std::string format(std::string fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const ArgumentsEnd end(&args);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  return Expand(fmt.c_str(), args);
#pragma GCC diagnostic pop
}

std::string errmsg(int errnum) {
  char buffer[kBufferSize] = {};
  if (WriteErrorText(errnum, buffer, sizeof buffer) != 0) return std::string();
  return std::string(buffer, sizeof buffer);
}

}  // namespace orvo

template ORVO_EXPORT std::string FastFormatter<10>(const char*, ...);
template ORVO_EXPORT std::string* Concatenate(std::string*, const char (&)[2]);
template ORVO_EXPORT std::string* Concatenate(std::string*, std::string&&,
                                              const char (&)[2]);
template ORVO_EXPORT std::string* Concatenate(std::string*, std::string&,
                                              const char (&)[2]);
template ORVO_EXPORT std::string* Concatenate(std::string*, const char (&)[2],
                                              std::string&&, const char (&)[2]);
template ORVO_EXPORT std::string* Concatenate(std::string*, const char (&)[2],
                                              std::string&, const char (&)[2]);

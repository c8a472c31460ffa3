#include "tests/support/interpose/calls.h"

namespace orvo_test {

Interposed<std::size_t(char*, std::size_t, const char*, const std::tm*)>
    strftime_calls("strftime", [](int error) {
      errno = error;
      return std::size_t{0};
    });
const Registration registration_of_strftime(strftime_calls);

}  // namespace orvo_test

extern "C" std::size_t strftime(char* text, std::size_t limit,
                                const char* format,
                                const std::tm* fields) noexcept {
  return orvo_test::strftime_calls(text, limit, format, fields);
}

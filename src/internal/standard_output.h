#ifndef ORVO_SRC_INTERNAL_STANDARD_OUTPUT_H_
#define ORVO_SRC_INTERNAL_STANDARD_OUTPUT_H_

#include <iostream>
#include <mutex>
#include <string_view>

#include "orvo/thread_safe_ostream.h"

namespace orvo::internal {

/// Plain text for std::cout, beside all that is written through
/// thread_safe_cout: a redirected stream does not bear two threads at once.
class StandardOutput {
 public:
  static void Write(std::string_view text) {
    const std::lock_guard<std::mutex> guard(thread_safe_cout.mutex_);
    std::cout.write(text.data(), static_cast<std::streamsize>(text.size()));
    std::cout.flush();
  }
};

}  // namespace orvo::internal

#endif  // ORVO_SRC_INTERNAL_STANDARD_OUTPUT_H_

#ifndef ORVO_SRC_INTERNAL_NOT_NULL_H_
#define ORVO_SRC_INTERNAL_NOT_NULL_H_

#include <memory>
#include <stdexcept>

namespace orvo::internal {

/// Lets the implementation of a handle through unless there is none.
template <typename Impl>
std::unique_ptr<Impl> NotNull(std::unique_ptr<Impl> impl) {
  if (impl == nullptr) {
    throw std::invalid_argument("A lock needs an implementation.");
  }
  return impl;
}

}  // namespace orvo::internal

#endif  // ORVO_SRC_INTERNAL_NOT_NULL_H_

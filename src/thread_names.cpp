#include "orvo/thread_names.h"

namespace orvo {

ThreadNames::ThreadNames() = default;
ThreadNames::~ThreadNames() = default;

void ThreadNames::SetNameOfCurrentThread(const std::string& name) {
  const std::lock_guard<std::mutex> guard(mutex_);
  // Leaves no entry behind when copying the name fails.
  names_.insert_or_assign(std::this_thread::get_id(), name);
}

std::string ThreadNames::GetNameOfCurrentThread() const {
  return GetThreadName(std::this_thread::get_id());
}

std::string ThreadNames::GetThreadName(const std::thread::id& id) const {
  const std::lock_guard<std::mutex> guard(mutex_);
  const auto entry = names_.find(id);
  if (entry == names_.end()) return "Unnamed thread";
  return entry->second;
}

ThreadNames threadNames;

}  // namespace orvo

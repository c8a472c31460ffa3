#include "orvo/thread_names.h"

namespace orvo {
namespace {

// Of the id, not of a reference to it, so that it can stay in a register.
inline std::string Find(const std::map<std::thread::id, std::string>& names,
                        std::thread::id id) {
  const auto entry = names.find(id);
  if (entry == names.end()) return "Unnamed thread";
  return entry->second;
}

}  // namespace

ThreadNames::ThreadNames() = default;
ThreadNames::~ThreadNames() = default;

void ThreadNames::SetNameOfCurrentThread(const std::string& name) {
  const std::thread::id id = std::this_thread::get_id();
  const std::lock_guard<std::mutex> guard(mutex_);
  // Leaves no entry behind when copying the name fails.
  names_.insert_or_assign(id, name);
}

std::string ThreadNames::GetNameOfCurrentThread() const {
  const std::thread::id id = std::this_thread::get_id();
  const std::lock_guard<std::mutex> guard(mutex_);
  return Find(names_, id);
}

std::string ThreadNames::GetThreadName(const std::thread::id& id) const {
  const std::lock_guard<std::mutex> guard(mutex_);
  return Find(names_, id);
}

ThreadNames threadNames;

}  // namespace orvo

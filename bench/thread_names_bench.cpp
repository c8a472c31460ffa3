// The registry of thread names beside a mutex around a std::map, and beside the
// bare mutex and the copy of the name that every answer needs.
#include <benchmark/benchmark.h>
#include <pthread.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <mutex>
#include <string>
#include <thread>

#include "bench/compare.h"
#include "orvo/thread_names.h"

namespace {

// What a program would write for itself.
class MutexAroundMap {
 public:
  void SetNameOfCurrentThread(const std::string& name) {
    const std::lock_guard<std::mutex> guard(mutex_);
    names_[std::this_thread::get_id()] = name;
  }

  std::string GetNameOfCurrentThread() {
    return GetThreadName(std::this_thread::get_id());
  }

  std::string GetThreadName(const std::thread::id& id) {
    const std::lock_guard<std::mutex> guard(mutex_);
    const auto found = names_.find(id);
    return found != names_.end() ? found->second : "Unnamed thread";
  }

 private:
  std::mutex mutex_;
  std::map<std::thread::id, std::string> names_;  // guarded by mutex_
};

// One name for all threads.
class BareMutex {
 public:
  void SetNameOfCurrentThread(const std::string& name) {
    pthread_mutex_lock(&mutex_);
    name_ = name;
    pthread_mutex_unlock(&mutex_);
  }

  std::string GetNameOfCurrentThread() {
    pthread_mutex_lock(&mutex_);
    std::string name = name_;
    pthread_mutex_unlock(&mutex_);
    return name;
  }

  std::string GetThreadName(const std::thread::id&) {
    return GetNameOfCurrentThread();
  }

 private:
  pthread_mutex_t mutex_ = PTHREAD_MUTEX_INITIALIZER;
  std::string name_ = "Unnamed thread";  // guarded by mutex_
};

void Check(const std::string& result, const std::string& expected) {
  if (result == expected) return;
  std::fprintf(stderr, "%s instead of %s\n", result.c_str(), expected.c_str());
  std::abort();
}

// Times one operation, alone and with a second thread at the same registry.
// Each thread prepares itself first.
template <typename Prepare, typename Operation>
void Register(const std::string& name, Prepare prepare, Operation operation) {
  const auto run = [prepare, operation](benchmark::State& state) {
    prepare();
    for (auto _ : state) operation();
  };
  benchmark::RegisterBenchmark(name.c_str(), run);
  orvo_bench::OnTwoThreads(benchmark::RegisterBenchmark(name.c_str(), run));
}

template <typename Operation>
void Register(const std::string& name, Operation operation) {
  Register(
      name, [] {}, operation);
}

template <typename Registry>
void RegisterOperations(const std::string& who, std::size_t size) {
  // For the life of the process, because the benchmarks run after this.
  auto* const registry = new Registry;
  auto* const unnamed = new Registry;
  const std::string name(size, 'x');
  const std::thread::id id = std::this_thread::get_id();
  registry->SetNameOfCurrentThread(name);
  Check(registry->GetNameOfCurrentThread(), name);
  Check(registry->GetThreadName(id), name);
  Check(unnamed->GetNameOfCurrentThread(), "Unnamed thread");

  const std::string tail = "/" + who + "/" + std::to_string(size);
  Register(
      "thread_names/get_current" + tail,
      [registry, name] {
        registry->SetNameOfCurrentThread(name);
        Check(registry->GetNameOfCurrentThread(), name);
      },
      [registry] {
        benchmark::DoNotOptimize(registry->GetNameOfCurrentThread());
      });
  Register("thread_names/get_by_id" + tail, [registry, id] {
    benchmark::DoNotOptimize(registry->GetThreadName(id));
  });
  Register("thread_names/get_unnamed" + tail, [unnamed] {
    benchmark::DoNotOptimize(unnamed->GetNameOfCurrentThread());
  });
}

template <typename Registry>
void RegisterSetter(const std::string& who, std::size_t size) {
  auto* const registry = new Registry;
  Register("thread_names/set_current/" + who + "/" + std::to_string(size),
           [registry, name = std::string(size, 'x')] {
             registry->SetNameOfCurrentThread(name);
           });
}

[[maybe_unused]] const bool registered = [] {
  for (const std::size_t size : {8U, 64U, 1000U}) {
    RegisterOperations<orvo::ThreadNames>("orvo", size);
    RegisterOperations<MutexAroundMap>("std", size);
    RegisterOperations<BareMutex>("limit", size);
    RegisterSetter<orvo::ThreadNames>("orvo", size);
    RegisterSetter<MutexAroundMap>("std", size);
  }
  return true;
}();

}  // namespace

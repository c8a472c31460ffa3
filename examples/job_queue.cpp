// Runs N jobs in three threads and logs the exceptions of those that fail.
#include <atomic>
#include <deque>
#include <iostream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "orvo/condition.h"
#include "orvo/debug_locks.h"
#include "orvo/exception_log.h"
#include "orvo/lock.h"
#include "orvo/scope_lock.h"
#include "orvo/strings.h"

namespace {

// Hands jobs from the thread that adds them to those that run them.
class JobQueue {
 public:
  void Add(int job) {
    {
      const orvo::ScopeLock scope(lock_);
      jobs_.push_back(job);
    }
    changed_.Signal(lock_);
  }

  // No job will follow.
  void Close() {
    {
      const orvo::ScopeLock scope(lock_);
      closed_ = true;
    }
    changed_.Broadcast(lock_);
  }

  // Waits for a job; false when all are taken and the queue is closed.
  bool Take(int* job) {
    const orvo::ScopeLock scope(lock_);
    while (jobs_.empty() && !closed_) changed_.WaitWhileLocked(lock_);
    if (jobs_.empty()) return false;
    *job = jobs_.front();
    jobs_.pop_front();
    return true;
  }

 private:
#ifdef JOB_QUEUE_WITH_DEBUG_LOCK
  orvo::DebugLock lock_{"jobs"};  // reports misuse; nothing else changes
#else
  orvo::Lock lock_{"jobs"};
#endif
  orvo::Condition changed_;
  std::deque<int> jobs_;  // guarded by lock_
  bool closed_ = false;   // guarded by lock_
};

void Run(int job) {
  if (job % 10 == 0) {
    throw std::runtime_error("job " + std::to_string(job) + " failed");
  }
}

void Work(JobQueue* queue, std::atomic<int>* failures) {
  for (int job = 0; queue->Take(&job);) {
    try {
      Run(job);
    } catch (const std::exception& error) {
      orvo::LogException(error.what(), __FILE__, __LINE__);
      ++*failures;
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  int count = -1;
  if (argc < 2 || argc > 3 || !orvo::StringToNumber(argv[1], count) ||
      count < 0 || count > 1000000) {
    std::cerr << "usage: job_queue N [LOGFILE], with N from 0 to 1000000\n";
    return 2;
  }
  orvo::SetThreadExceptionLogPath(argc == 3 ? argv[2] : "job_queue.log");

  JobQueue queue;
  std::atomic<int> failures{0};
  std::vector<std::thread> workers(3);
  for (auto& worker : workers) worker = std::thread(Work, &queue, &failures);
  for (int job = 1; job <= count; ++job) queue.Add(job);
  queue.Close();
  for (std::thread& worker : workers) worker.join();

  std::cout << count << " jobs, " << failures << " failed\n";
}

// A few threads for answers that may wait for hardware.
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace vela::host {

class WorkerPool {
 public:
  explicit WorkerPool(unsigned threads);
  // Runs what was queued, then joins.
  ~WorkerPool();
  WorkerPool(const WorkerPool&) = delete;
  WorkerPool& operator=(const WorkerPool&) = delete;

  // `work` must not throw.
  void Run(std::function<void()> work);

 private:
  void Serve();

  std::mutex mutex_;
  std::condition_variable wake_;
  std::deque<std::function<void()>> queue_;
  bool stopping_ = false;
  std::vector<std::thread> threads_;
};

}  // namespace vela::host

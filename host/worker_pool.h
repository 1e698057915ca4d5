// A few threads for answers that may wait for hardware.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace vela::host {

class WorkerPool {
 public:
  // At most `queue` pieces of work wait for a thread.
  WorkerPool(unsigned threads, std::size_t queue);
  // Runs what was queued, then joins.
  ~WorkerPool();
  WorkerPool(const WorkerPool&) = delete;
  WorkerPool& operator=(const WorkerPool&) = delete;

  // `work` must not throw. False, and nothing done, when too many wait already.
  bool Run(std::function<void()> work);

 private:
  void Serve();

  const std::size_t bound_;
  std::mutex mutex_;
  std::condition_variable wake_;
  std::deque<std::function<void()>> queue_;
  bool stopping_ = false;
  std::vector<std::thread> threads_;
};

}  // namespace vela::host

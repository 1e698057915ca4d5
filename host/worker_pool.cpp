#include "host/worker_pool.h"

#include <utility>

namespace vela::host {

WorkerPool::WorkerPool(unsigned threads, std::size_t queue) : bound_(queue) {
  for (unsigned i = 0; i < threads; ++i) threads_.emplace_back([this] { Serve(); });
}

WorkerPool::~WorkerPool() {
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  wake_.notify_all();
  for (std::thread& thread : threads_) thread.join();
}

bool WorkerPool::Run(std::function<void()> work) {
  {
    const std::lock_guard lock(mutex_);
    if (queue_.size() >= bound_) return false;
    queue_.push_back(std::move(work));
  }
  wake_.notify_one();
  return true;
}

void WorkerPool::Serve() {
  std::unique_lock lock(mutex_);
  while (true) {
    wake_.wait(lock, [this] { return stopping_ || !queue_.empty(); });
    if (queue_.empty()) return;
    const std::function<void()> work = std::move(queue_.front());
    queue_.pop_front();
    lock.unlock();
    work();
    lock.lock();
  }
}

}  // namespace vela::host

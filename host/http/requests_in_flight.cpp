#include "host/http/requests_in_flight.h"

#include <microhttpd.h>

#include <algorithm>
#include <utility>

namespace host {
namespace {

// As many as there are queries outside of a demo, so that no query waits for another one.
constexpr unsigned kWorkers = 10;
// Half of all connections: the others stay free for what needs no machine.
constexpr std::size_t kMostWaiting = 256;

}  // namespace

RequestsInFlight::RequestsInFlight(Ask ask, Wakeup& server, std::chrono::seconds hangsAfter)
    : ask_(std::move(ask)), server_(server), hangsAfter_(hangsAfter) {
  try {
    for (unsigned i = 0; i < kWorkers; ++i) workers_.emplace_back([this] { Work(); });
  } catch (...) {
    EndWorkers();
    throw;
  }
}

RequestsInFlight::~RequestsInFlight() { EndWorkers(); }

void RequestsInFlight::EndWorkers() {
  {
    const std::lock_guard lock(mutex_);
    ending_ = true;
  }
  changed_.notify_all();
  for (std::thread& worker : workers_) worker.join();
}

// Suspended before any worker can resume it.
bool RequestsInFlight::Add(MachineQuery query, RequestInFlight& request) {
  const std::lock_guard lock(mutex_);
  if (waiting_ >= kMostWaiting) return false;
  auto same = std::find_if(queries_.begin(), queries_.end(),
                           [&query](const Query& other) { return other.query == query; });
  if (same == queries_.end()) same = queries_.insert(same, {std::move(query), {}, false, {}});
  same->waiting.push_back(&request);
  ++waiting_;
  MHD_suspend_connection(request.connection);
  if (!same->running) changed_.notify_one();
  return true;
}

bool RequestsInFlight::AnyHangs() {
  const auto begun = Clock::now() - hangsAfter_;
  const std::lock_guard lock(mutex_);
  return std::any_of(queries_.begin(), queries_.end(),
                     [begun](const Query& query) { return query.running && query.since <= begun; });
}

// A query is asked by one worker at a time, so that a slow one takes no other's worker.
std::list<RequestsInFlight::Query>::iterator RequestsInFlight::FindDueQuery() {
  return std::find_if(queries_.begin(), queries_.end(),
                      [](const Query& query) { return !query.running && !query.waiting.empty(); });
}

void RequestsInFlight::Work() {
  std::unique_lock lock(mutex_);
  while (!ending_) {
    const auto due = FindDueQuery();
    if (due == queries_.end()) {
      changed_.wait(lock);
    } else {
      AskMachine(due, lock);
    }
  }
}

void RequestsInFlight::AskMachine(std::list<Query>::iterator due,
                                  std::unique_lock<std::mutex>& lock) {
  const std::vector<RequestInFlight*> requests = std::exchange(due->waiting, {});
  waiting_ -= requests.size();
  due->running = true;
  due->since = Clock::now();
  lock.unlock();
  const PreparedAnswer answer = ask_(due->query, requests.size());
  lock.lock();
  for (RequestInFlight* request : requests) {
    request->answer = answer;
    MHD_resume_connection(request->connection);
  }
  server_.Wake();
  due->running = false;
  if (due->waiting.empty()) {
    queries_.erase(due);
  } else {
    queries_.splice(queries_.end(), queries_, due);
  }
}

}  // namespace host

// The requests that wait for the machine, and the few threads that ask it. Requests that wait
// together with equal queries share one answer. All of them arrived before the machine was asked,
// so nobody gets an answer that is older than the request.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <list>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "host/http/http.h"
#include "host/http/http_response.h"
#include "host/http/request_head.h"
#include "host/http/wakeup.h"

namespace host {

// From the first line of a request until it was answered or its connection closed.
struct RequestInFlight {
  MHD_Connection* connection;
  RawTarget target;
  bool begun = false;                         // its whole head is there
  std::optional<PreparedAnswer> answer = {};  // the machine's, once it is there
};

class RequestsInFlight {
 public:
  // Asks the machine for so many requests. Throws nothing.
  using Ask = std::function<PreparedAnswer(const MachineQuery& query, std::size_t requests)>;

  // Wakes the server's thread when answers are there. A query that runs for `hangsAfter` hangs.
  // Throws std::system_error when the system gives no more threads.
  RequestsInFlight(Ask ask, Wakeup& server, std::chrono::seconds hangsAfter);
  // No request may be in flight any more.
  ~RequestsInFlight();
  RequestsInFlight(const RequestsInFlight&) = delete;
  RequestsInFlight& operator=(const RequestsInFlight&) = delete;

  // Within the connection's handler, which is called again when the answer is there. Until then
  // the connection is suspended, so the request cannot end. False when too many wait already.
  bool Add(MachineQuery query, RequestInFlight& request);

  bool AnyHangs();

 private:
  using Clock = std::chrono::steady_clock;

  struct Query {
    const MachineQuery query;
    std::vector<RequestInFlight*> waiting;  // for the machine to be asked (once more)
    bool running;                           // asked just now, by one worker, for earlier requests
    Clock::time_point since;                // when it runs
  };

  void Work();
  std::list<Query>::iterator FindDueQuery();
  void AskMachine(std::list<Query>::iterator due, std::unique_lock<std::mutex>& lock);
  void EndWorkers();

  const Ask ask_;
  Wakeup& server_;
  const std::chrono::seconds hangsAfter_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::list<Query> queries_;  // one each; who waits longest comes first
  std::size_t waiting_ = 0;   // requests, over all queries
  bool ending_ = false;
  std::vector<std::thread> workers_;
};

}  // namespace host

// The requests that wait for the machine, by what they ask. Those that ask the same and wait
// together when it is asked share the answer. All of them arrived before the query began, so
// nobody gets an answer that is older than the question.
#pragma once

#include <atomic>
#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "host/http/bell.h"
#include "host/http/http.h"
#include "host/http/http_response.h"

namespace host {

// One request; lives on until its query ends, also when its client has gone.
class Waiter {
 public:
  explicit Waiter(MHD_Connection* connection) : connection_(connection) {}

 private:
  friend class WaitingRoom;
  MHD_Connection* const connection_;
  bool asked_ = false;      // its query has begun
  bool suspended_ = false;  // only then may another thread than the loop's touch the connection
  std::optional<PreparedAnswer> answer_;
};

struct Query {
  Question question;
  std::vector<std::shared_ptr<Waiter>> waiters;
};

class WaitingRoom {
 public:
  // The bell rings when connections are resumed.
  explicit WaitingRoom(const Bell& resumed) : resumed_(resumed) {}

  // Requests whose query has not begun.
  std::size_t Waiting() const { return waiting_; }

  // The loop's side. Enter and AnswerOf are called within a request's handler.
  std::shared_ptr<Waiter> Enter(MHD_Connection* connection, Question question);
  // None yet: the handler is called again in the next turn, at once when the query `followsTurn`,
  // else when the answer is there. Until then the connection is suspended.
  std::optional<PreparedAnswer> AnswerOf(Waiter& waiter, bool followsTurn);

  // Any thread's side: the query that waits longest, and its answer.
  std::optional<Query> Begin();
  void End(const Query& query, const PreparedAnswer& answer);

 private:
  const Bell& resumed_;
  std::mutex mutex_;
  std::deque<Query> queries_;
  std::atomic<std::size_t> waiting_{0};
};

}  // namespace host

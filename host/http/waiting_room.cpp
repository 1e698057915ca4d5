#include "host/http/waiting_room.h"

#include <microhttpd.h>

#include <algorithm>
#include <utility>

namespace host {

std::shared_ptr<Waiter> WaitingRoom::Enter(MHD_Connection* connection, Question question) {
  auto waiter = std::make_shared<Waiter>(connection);
  const std::lock_guard lock(mutex_);
  auto same = std::find_if(queries_.begin(), queries_.end(),
                           [&question](const Query& query) { return query.question == question; });
  if (same == queries_.end()) same = queries_.insert(same, {std::move(question), {}});
  same->waiters.push_back(waiter);
  ++waiting_;
  return waiter;
}

std::optional<PreparedAnswer> WaitingRoom::AnswerOf(Waiter& waiter, bool followsTurn) {
  const std::lock_guard lock(mutex_);
  if (waiter.answer_ || (followsTurn && !waiter.asked_)) return waiter.answer_;
  waiter.suspended_ = true;
  MHD_suspend_connection(waiter.connection_);
  return std::nullopt;
}

std::optional<Query> WaitingRoom::Begin() {
  const std::lock_guard lock(mutex_);
  if (queries_.empty()) return std::nullopt;
  Query query = std::move(queries_.front());
  queries_.pop_front();
  waiting_ -= query.waiters.size();
  for (const auto& waiter : query.waiters) waiter->asked_ = true;
  return query;
}

void WaitingRoom::End(const Query& query, const PreparedAnswer& answer) {
  const std::lock_guard lock(mutex_);
  bool resumed = false;
  for (const auto& waiter : query.waiters) {
    waiter->answer_ = answer;
    if (!waiter->suspended_) continue;
    MHD_resume_connection(waiter->connection_);
    resumed = true;
  }
  if (resumed) resumed_.Ring();
}

}  // namespace host

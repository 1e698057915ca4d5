#include "host/http/leader_followers.h"

#include <utility>

namespace host {
namespace {

// How long the loop may stand still. Most answers take less.
constexpr std::chrono::milliseconds kLeaderMayBeAway(5);

}  // namespace

void LeaderFollowers::Start() {
  Lock lock(mutex_);  // nobody begins before all are there
  try {
    for (unsigned i = 0; i <= workers_; ++i) threads_.emplace_back([this] { Follow(); });
  } catch (...) {
    ended_ = true;
    lock.unlock();
    Join();
    throw;
  }
}

void LeaderFollowers::Join() {
  for (std::thread& thread : threads_) thread.join();
  threads_.clear();
}

bool LeaderFollowers::JoinWithin(std::chrono::seconds patience) {
  Lock lock(mutex_);
  if (!end_.wait_for(lock, patience, [this] { return ended_ && busy_ == 0; })) return false;
  lock.unlock();
  Join();
  return true;
}

void LeaderFollowers::Follow() {
  Lock lock(mutex_);
  while (!ended_) {
    if (watched_) {
      others_.wait(lock);
      continue;
    }
    watched_ = true;
    AwaitLead(lock);
    watched_ = false;
    others_.notify_one();
    if (!ended_) Lead(lock);
  }
}

bool LeaderFollowers::LeaderIsOverdue() const {
  return away_ && Clock::now() - *away_ >= kLeaderMayBeAway;
}

// Looks now and then while leaders go to work, and sleeps without a timer when none does: an
// idle server wakes nobody up.
void LeaderFollowers::AwaitLead(Lock& lock) {
  for (std::uint64_t seen = 0; !ended_ && !LeaderIsOverdue();) {
    if (std::exchange(seen, absences_) != absences_) {
      watcher_.wait_for(lock, kLeaderMayBeAway);
    } else {
      watcherSleeps_ = true;
      watcher_.wait(lock, [this] { return ended_ || !watcherSleeps_; });
    }
  }
}

// Until the loop ends, or another one took it over.
void LeaderFollowers::Lead(Lock& lock) {
  const std::uint64_t mine = ++term_;
  away_.reset();
  while (term_ == mine) {
    workFollows_ = busy_ < workers_;
    lock.unlock();
    const bool more = loop_.Turn();
    lock.lock();
    if (!more) {
      ended_ = true;
      watcher_.notify_all();
      others_.notify_all();
      end_.notify_all();
      return;
    }
    if (!loop_.HasWork() || busy_ == workers_) continue;
    away_ = Clock::now();
    ++absences_;
    if (std::exchange(watcherSleeps_, false)) watcher_.notify_one();
    WorkAll(lock);
    if (term_ == mine) away_.reset();
  }
}

// A leader that found all workers busy left its work to them: whoever stops looks once more.
void LeaderFollowers::WorkAll(Lock& lock) {
  ++busy_;
  do {
    lock.unlock();
    loop_.Work();
    lock.lock();
  } while (loop_.HasWork());
  --busy_;
  if (ended_) end_.notify_all();
}

}  // namespace host

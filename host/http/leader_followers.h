// Threads that take turns (the Leader/Followers pattern). One of them, the leader, turns the
// loop and does itself what the turn brought: quick work costs no hand-over to another thread.
// When its work takes long, a follower leads on, so slow work never holds up the loop.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace host {

// What the threads share. Nothing here may throw.
class Loop {
 public:
  virtual ~Loop() = default;
  // Waits for events and handles them; false when there will be no more. Only the leader calls
  // it, so never two threads at once.
  virtual bool Turn() = 0;
  virtual bool HasWork() const = 0;
  // Does one piece of what the turns brought, if there is one. Several threads at once.
  virtual void Work() = 0;
};

class LeaderFollowers {
 public:
  // At most `workers` threads are at work at once; one more, so that one always leads.
  LeaderFollowers(Loop& loop, unsigned workers) : loop_(loop), workers_(workers) {}
  // Waits for the loop's end, and for the work that runs then.
  ~LeaderFollowers() { Join(); }
  LeaderFollowers(const LeaderFollowers&) = delete;
  LeaderFollowers& operator=(const LeaderFollowers&) = delete;

  // Throws std::system_error when a thread cannot be started; then none runs.
  void Start();
  // False when the loop, or work, still runs after this time.
  bool JoinWithin(std::chrono::seconds patience);
  // For the leader within its turn: whether what this turn brings is begun right after it. Not
  // when all workers are busy: one of them comes to it later.
  bool WorkFollowsTurn() const { return workFollows_; }

 private:
  using Clock = std::chrono::steady_clock;
  using Lock = std::unique_lock<std::mutex>;

  void Join();
  void Follow();
  void AwaitLead(Lock& lock);
  void Lead(Lock& lock);
  void WorkAll(Lock& lock);
  bool LeaderIsOverdue() const;

  Loop& loop_;
  const unsigned workers_;
  mutable std::mutex mutex_;
  std::condition_variable watcher_;  // the one follower who looks after the leader
  std::condition_variable others_;
  std::condition_variable end_;
  bool workFollows_ = false;  // the leader's, for its turn
  bool watched_ = false;
  bool watcherSleeps_ = false;
  bool ended_ = false;
  unsigned busy_ = 0;                                            // threads at work
  std::uint64_t term_ = 0;                                       // counts the leaders
  std::uint64_t absences_ = 0;                                   // times that a leader went to work
  std::optional<Clock::time_point> away_ = Clock::time_point();  // since then the leader works
  std::vector<std::thread> threads_;
};

}  // namespace host

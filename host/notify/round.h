// One round: what a look brought is compared with what was told, and the hooks are run.
#pragma once

#include <string>
#include <vector>

#include "host/notify/hook.h"
#include "host/notify/store.h"

namespace host {

struct HookFolder {
  std::filesystem::path path;
  std::chrono::seconds timeout;  // for each of them
};

// Below the folder: hooks that are run once a round, whatever the answer is.
constexpr const char* kEveryRound = "every-round";

// Says on standard error what went wrong; throws what ListHooks throws before anything is told.
class Round {
 public:
  Round(Store& store, HookFolder hooks, const Texts& texts);

  // Keeps what is to be told until each hook has taken it. One that fails is tried again in the
  // next round, and keeps no other from its turn.
  void Tell(const Look& look);
  // Those of every round, which are not tried again.
  void RunEveryRound(const Look& look);

  bool Delivered() const { return delivered_; }
  bool Saved() const { return saved_; }

 private:
  void Queue(const Look& look, const std::vector<ItemChange>& changes, const std::string& note);
  void Save();
  void Deliver(const std::string& hook);

  Store& store_;
  const HookFolder hooks_;
  const std::vector<std::string> names_;  // of those that are told of changes
  const Texts& texts_;
  std::string damage_;  // the file of a state that cannot be read
  State state_;
  bool delivered_ = true, saved_ = true, saidProblem_ = false;
};

// What each hook makes of a sample: "mail: told".
struct HookTest {
  std::string hook;
  HookResult result;
};
std::vector<HookTest> TestHooks(const HookFolder& hooks, const Look& look, const Texts& texts);

}  // namespace host

#include "host/notify/round.h"

#include <iostream>
#include <utility>

#include "host/text/escape.h"

namespace host {
namespace {

bool IsDone(const HookResult& result) {
  return result.kind == HookResult::Kind::Told || result.kind == HookResult::Kind::Off;
}

std::vector<std::string> ListEveryRound(const std::filesystem::path& folder) {
  std::error_code error;
  if (!std::filesystem::exists(folder / kEveryRound, error)) return {};
  return ListHooks(folder / kEveryRound);
}

void Say(const std::string& words) { std::cerr << "vela-health: " << Sanitize(words) << '\n'; }

}  // namespace

Round::Round(Store& store, HookFolder hooks, const Texts& texts)
    : store_(store),
      hooks_(std::move(hooks)),
      names_(ListHooks(hooks_.path)),
      texts_(texts),
      state_(store.Load(damage_)) {
  if (!damage_.empty()) Say("Cannot read " + damage_ + ": it is damaged. All is told anew.");
}

void Round::Save() {
  std::string problem;
  saved_ = store_.Save(state_, problem);
  if (!problem.empty() && !std::exchange(saidProblem_, true))
    Say(problem + (saved_ ? ". What was told is kept in memory until the next start."
                          : ". What was told will be told again: make room, or name another "
                            "folder with --state."));
}

void Round::Queue(const Look& look, const std::vector<ItemChange>& changes,
                  const std::string& note) {
  if (changes.empty() && note.empty()) return;
  AddMessage(state_, WriteMessage(look, changes, note, texts_), names_);
  if (names_.empty()) Say("Nobody was told: there is no hook in " + hooks_.path.string());
}

// That something counts as told is saved together with the message that tells it. When nothing can
// be saved no later round knows of this one, so nothing is waited for: what is there, or missing,
// counts as if it had been so for a second round.
void Round::Tell(const Look& look) {
  const std::string damage = std::exchange(damage_, "");
  Queue(look, state_.memory.Compare(look, !damage.empty()),
        damage.empty() ? "" : texts_.FormatUi("notify_state_lost", damage));
  Save();
  if (!saved_) Queue(look, state_.memory.Compare(look, true), "");
  for (const std::string& hook : names_) Deliver(hook);
}

// In their order, for about as long as one may take: a slow hook does not hold up the others.
void Round::Deliver(const std::string& hook) {
  const auto end = std::chrono::steady_clock::now() + hooks_.timeout;
  while (state_.hooks.contains(hook) && std::chrono::steady_clock::now() < end) {
    const Waiting& waiting = state_.hooks.at(hook);
    Message message = state_.messages.at(waiting.messages.front());
    if (waiting.leftOut > 0) AddLeftOut(message, waiting.leftOut, texts_);
    const HookResult result = RunHook(hooks_.path / hook, message, hooks_.timeout);
    if (!IsDone(result)) {
      delivered_ = false;
      Say("The hook " + hook + " did not take what it was told: " + result.reason + ". " +
          std::to_string(waiting.messages.size()) + " wait for the next round.");
      return;
    }
    TakeMessage(state_, hook);
    Save();
  }
}

void Round::RunEveryRound(const Look& look) {
  Message message = WriteMessage(look, "round", look.sentence, texts_);
  message.environment["VELA_WAITING"] = std::to_string(state_.messages.size());
  message.environment["VELA_ANSWERED"] = look.answered ? "1" : "0";
  const std::filesystem::path folder = hooks_.path / kEveryRound;
  for (const std::string& hook : ListEveryRound(hooks_.path)) {
    const HookResult result = RunHook(folder / hook, message, hooks_.timeout);
    if (IsDone(result)) continue;
    delivered_ = false;
    Say("The hook " + std::string(kEveryRound) + "/" + hook + " failed: " + result.reason);
  }
}

std::vector<HookTest> TestHooks(const HookFolder& hooks, const Look& look, const Texts& texts) {
  Message message = WriteMessage(look, "test", texts.FormatUi("notify_test"), texts);
  message.environment["VELA_ID"] = "test." + look.time;
  message.environment["VELA_WAITING"] = "0";
  message.environment["VELA_ANSWERED"] = look.answered ? "1" : "0";
  std::vector<std::string> names = ListHooks(hooks.path);
  for (const std::string& each : ListEveryRound(hooks.path))
    names.push_back(std::string(kEveryRound) + "/" + each);
  std::vector<HookTest> tests;
  for (const std::string& name : names)
    tests.push_back({name, RunHook(hooks.path / name, message, hooks.timeout)});
  return tests;
}

}  // namespace host

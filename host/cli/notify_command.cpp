#include <cstdlib>
#include <exception>
#include <iostream>

#include "host/cli/commands.h"
#include "host/notify/round.h"
#include "host/text/escape.h"

namespace host {
namespace {

constexpr const char* kUsualState = "/var/lib/vela-health-notify";

// The first of the folders that systemd names, separated by colons.
std::string FindUnitFolder(const char* variable) {
  const char* value = std::getenv(variable);
  const std::string folders = value != nullptr ? value : "";
  return folders.substr(0, folders.find(':'));
}

Store OpenStore(const NotifyOptions& options) {
  if (!options.state.empty()) return {options.state, ""};
  const std::string unit = FindUnitFolder("STATE_DIRECTORY");
  return {unit.empty() ? kUsualState : unit, FindUnitFolder("RUNTIME_DIRECTORY")};
}

// That the machine gives no answer is to be told, too: silence would be taken for health. A
// scenario that is not there is a mistake of whoever named it.
Look LookAtMachine(Session& session) {
  const Texts& texts = session.GetTexts();
  std::string reason;
  try {
    const SimulatedMachine machine = session.OpenMachine();
    return MakeLook(AskForEverything(session.GetHost(), machine), texts);
  } catch (const Failure& failure) {
    if (failure.Status() == kNoInput || failure.Status() == kUsage) throw;
    reason = failure.what();
  } catch (const std::exception& error) {
    reason = error.what();
  }
  std::cerr << "vela-health: " << Sanitize(reason) << '\n';
  return MakeLookWithoutAnswer(reason, texts);
}

std::string DescribeResult(const HookResult& result, const Texts& texts) {
  using Kind = HookResult::Kind;
  if (result.kind == Kind::Told) return texts.FormatUi("notify_told");
  if (result.kind == Kind::Off) return texts.FormatUi("notify_off");
  return texts.FormatUi("notify_failed", result.reason);
}

ExitStatus RunTest(const HookFolder& hooks, const Look& look, const Texts& texts) {
  bool told = false, failed = false;
  for (const auto& [hook, result] : TestHooks(hooks, look, texts)) {
    std::cout << texts.AddLabel(hook) << DescribeResult(result, texts) << '\n';
    told |= result.kind == HookResult::Kind::Told;
    failed |= result.kind == HookResult::Kind::Failed || result.kind == HookResult::Kind::Hung;
  }
  if (!told && !failed)
    std::cerr << "vela-health: Nobody was told: no hook in " << Sanitize(hooks.path.string())
              << " is switched on. Name a target in /etc/vela-health/notify.conf.\n";
  return told && !failed ? kHealthy : kUndelivered;
}

}  // namespace

ExitStatus RunNotify(Session& session, const NotifyOptions& options) {
  const Texts& texts = session.GetTexts();
  const HookFolder hooks{options.hooks, std::chrono::seconds(options.timeout)};
  if (options.test) return RunTest(hooks, LookAtMachine(session), texts);
  Store store = OpenStore(options);
  Round round(store, hooks, texts);
  // Told before the machine is asked again, which may come to no end this time, too.
  if (store.BeginAsking())
    round.Tell(MakeLookWithoutAnswer(texts.FormatUi("notify_no_end"), texts));
  const Look look = LookAtMachine(session);
  store.EndAsking();
  round.Tell(look);
  round.RunEveryRound(look);
  if (!round.Delivered()) return kUndelivered;
  if (!look.answered) return kUnavailable;
  return round.Saved() ? kHealthy : kCannotWrite;
}

}  // namespace host

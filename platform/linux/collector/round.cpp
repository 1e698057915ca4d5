#include "platform/linux/collector/round.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <iostream>

#include <json/writer.h>

#include "common/json_reader.h"
#include "platform/linux/base/snapshot.h"
#include "platform/linux/collector/children.h"
#include "platform/linux/collector/snapshot_folder.h"

namespace linux_platform {
namespace {

using common::ParseJson, common::TextMember;

std::string HowItEnded(const Part& part, const Outcome& outcome) {
  if (!outcome.reason.empty()) return outcome.reason;
  if (outcome.cut == Child::Cut::Late)
    return "no answer within " + std::to_string(part.bound.count() / 1000) + " s";
  if (outcome.cut == Child::Cut::Long) return "more than 1 MiB to say";
  if (outcome.status >= 0 && WIFSIGNALED(outcome.status))
    return std::string("its process was ended by: ") + strsignal(WTERMSIG(outcome.status));
  return "its process did not say what it found";
}

Json::Value MembersOf(const Part& part, const Outcome& outcome) {
  Json::Value members;
  if (outcome.status == 0 && outcome.cut == Child::Cut::None &&
      ParseJson(outcome.output, members) && (members.isNull() || members.isObject()))
    return members;
  return Unread(HowItEnded(part, outcome));
}

void Tell(const Part& part, const Json::Value& now, const Json::Value& before) {
  for (const char* member : {"error", "trouble"}) {
    const std::string words = TextMember(now, member);
    if (words.empty() || (words == TextMember(before, member) && !isatty(STDERR_FILENO))) continue;
    std::cerr << "vela-platform-collect: " << part.name << ": " << words << "\n";
  }
}

// With an error, what was known stays in the file: nobody takes it for the present, but
// people and the part itself may look it up.
Json::Value WithLastKnown(Json::Value now, Json::Value before) {
  if (!now.isMember("error") || !before.isObject()) return now;
  before.removeMember("trouble");
  before["error"] = now["error"];
  return before;
}

bool Store(const Part& part, Json::Value members) {
  Json::Value before = LastSnapshot(part.name);
  Tell(part, members, before);
  if (members.isNull()
          ? RemoveSnapshot(part.name)
          : WriteSnapshot(part.name, WithLastKnown(std::move(members), std::move(before))))
    return true;
  std::cerr << "vela-platform-collect: " << kSnapshotFolder << "/" << part.name
            << ".json could not be written: " << std::strerror(errno) << "\n";
  return false;
}

}  // namespace

std::string PrintedBy(const Part& part) {
  const auto lock = TakeLock(part.name);
  const Json::Value members =
      lock ? part.collect() : Unread("an earlier look at it is still stuck in the kernel");
  Json::StreamWriterBuilder builder;
  builder["indentation"] = isatty(STDOUT_FILENO) ? "  " : "";
  return Json::writeString(builder, members) + "\n";
}

bool RunRound(const std::vector<const Part*>& parts) {
  std::vector<Order> orders;
  for (const Part* part : parts)
    orders.push_back({ThisProgram({"--print", part->name}), {part->bound, kSnapshotCap}});
  const std::vector<Outcome> outcomes = RunTogether(orders);
  bool stored = true;
  for (std::size_t i = 0; i < parts.size(); ++i)
    stored = Store(*parts[i], MembersOf(*parts[i], outcomes[i])) && stored;
  return stored;
}

}  // namespace linux_platform

#include "platform/linux/collector/round.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <iostream>

#include "common/json_reader.h"
#include "common/sanitize.h"
#include "platform/linux/base/snapshot.h"
#include "platform/linux/collector/commands.h"
#include "platform/linux/collector/snapshot_folder.h"

namespace linux_platform {
namespace {

using common::ParseJson, common::TextMember;

std::string DescribeEnd(const Part& part, const CommandResult& result) {
  if (!result.reason.empty()) return result.reason;
  if (result.cut == Child::Cut::Late)
    return "no answer within " + std::to_string(part.bound.count() / 1000) + " s";
  if (result.cut == Child::Cut::Long) return "more than 1 MiB to say";
  if (result.status >= 0 && WIFSIGNALED(result.status))
    return std::string("its process was ended by: ") + strsignal(WTERMSIG(result.status));
  return "its process did not say what it found";
}

Json::Value ParseMembers(const Part& part, const CommandResult& result) {
  Json::Value members;
  if (result.status == 0 && result.cut == Child::Cut::None && ParseJson(result.output, members) &&
      (members.isNull() || members.isObject()))
    return members;
  return MakeError(DescribeEnd(part, result));
}

void PrintFailures(const Part& part, const Json::Value& now, const Json::Value& before) {
  for (const char* member : {kError, kTrouble}) {
    const std::string words = TextMember(now, member);
    if (words.empty() || (words == TextMember(before, member) && !isatty(STDERR_FILENO))) continue;
    std::cerr << "vela-platform-collect: " << part.name << ": " << common::Sanitize(words) << "\n";
  }
}

// With an error, what was known stays in the file: nobody takes it for the present, but
// people and the part itself may look it up.
Json::Value AddLastKnown(Json::Value now, Json::Value before) {
  if (!now.isMember(kError) || !before.isObject()) return now;
  before.removeMember(kTrouble);
  before[kError] = now[kError];
  return before;
}

bool Remember(const Part& part, const Json::Value& members) {
  PrintFailures(part, members, {});
  if (members.isMember(kError) || WriteMemory(part.name, members)) return true;
  std::cerr << "vela-platform-collect: " << kMemoryFolder << "/" << part.name
            << ".json could not be written: " << std::strerror(errno) << "\n";
  return false;
}

bool Store(const Part& part, Json::Value members) {
  if (part.isMemory) return Remember(part, members);
  Json::Value before = ReadLastSnapshot(part.name);
  PrintFailures(part, members, before);
  if (members.isNull()
          ? RemoveSnapshot(part.name)
          : WriteSnapshot(part.name, AddLastKnown(std::move(members), std::move(before))))
    return true;
  std::cerr << "vela-platform-collect: " << kSnapshotFolder << "/" << part.name
            << ".json could not be written: " << std::strerror(errno) << "\n";
  return false;
}

}  // namespace

std::string PrintPart(const Part& part) {
  const auto lock = TakeLock(part.name);
  return PrintJson(lock ? part.collect() : MakeError(kStillStuck));
}

bool RunRound(const std::vector<const Part*>& parts) {
  std::vector<Command> commands;
  for (const Part* part : parts)
    commands.push_back(BuildOwnCommand({"--print", part->name}, {part->bound, kSnapshotCap}));
  const std::vector<CommandResult> results = RunCommands(commands);
  bool stored = true;
  for (std::size_t i = 0; i < parts.size(); ++i)
    stored = Store(*parts[i], ParseMembers(*parts[i], results[i])) && stored;
  return stored;
}

}  // namespace linux_platform

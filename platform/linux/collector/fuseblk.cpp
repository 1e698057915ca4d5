// The capacity of file systems that are programs. The program may be dead while its mount
// stands, and who asks then sits in the kernel, where no signal reaches: each mount is
// asked by a process of its own, which is left behind when it does not come back.
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <optional>

#include "common/json_reader.h"
#include "platform/linux/base/snapshot.h"
#include "platform/linux/base/sysfs.h"
#include "platform/linux/collector/commands.h"
#include "platform/linux/collector/parts.h"
#include "platform/linux/collector/snapshot_folder.h"
#include "platform/linux/storage/filesystem.h"
#include "platform/linux/storage/mounts.h"
#include "platform/linux/storage/program_mount_snapshot.h"

namespace linux_platform {
namespace {

using common::ParseJson, common::TextMember;

constexpr Bounds kBounds = {std::chrono::seconds(4), 4096};
constexpr std::size_t kMostMounts = 32;

std::string FormatDevice(const Mount& mount) {
  return std::to_string(major(mount.device)) + ":" + std::to_string(minor(mount.device));
}

std::optional<dev_t> ParseDevice(const std::string& text) {
  const std::size_t colon = text.find(':');
  if (colon == std::string::npos) return std::nullopt;
  const auto first = ToNumber(text.substr(0, colon)), second = ToNumber(text.substr(colon + 1));
  if (!first || !second) return std::nullopt;
  return makedev(static_cast<unsigned>(*first), static_cast<unsigned>(*second));
}

std::vector<Mount> ChooseMounts(const Mounts& all) {
  std::vector<Mount> mounts;
  for (const Mount& mount : all)
    if (mount.type == "fuseblk" && all.FindAt(mount.target) == &mount &&
        mounts.size() < kMostMounts)
      mounts.push_back(mount);
  return mounts;
}

std::vector<CommandResult> MeasureMounts(const std::vector<Mount>& mounts) {
  std::vector<Command> commands;
  for (const Mount& mount : mounts)
    commands.push_back(
        BuildOwnCommand({"--measure", mount.target, "--device", FormatDevice(mount)}, kBounds));
  return RunCommands(commands);
}

Json::Value MeasureMount(const std::string& path, const std::string& device) {
  const auto lock = TakeLock("fuseblk-" + device);
  if (!lock) return MakeError(kStillStuck);
  const auto number = ParseDevice(device);
  Capacity capacity;
  if (!number) return MakeError("\"" + device + "\" is no device number");
  if (!ReadCapacity(path, *number, capacity)) return MakeError(std::strerror(errno));
  return ProgramMount{path, device, capacity.size, capacity.available}.ToJson();
}

Json::Value ParseAnswer(const CommandResult& result) {
  if (!result.reason.empty()) return MakeError(result.reason);
  if (result.cut == Child::Cut::Late) return MakeError("no answer within 4 s");
  Json::Value answer;
  if (!ParseJson(result.output, answer) || !answer.isObject())
    return MakeError("the process that asked it failed");
  return answer;
}

}  // namespace

std::string PrintMount(const std::string& path, const std::string& device) {
  return PrintJson(MeasureMount(path, device));
}

Json::Value CollectFuseblk() {
  MountTable all;
  if (!ReadMounts(all))
    return MakeError(std::string("the mount table could not be read: ") + std::strerror(errno));
  const std::vector<Mount> mounts = ChooseMounts(*all);
  if (mounts.empty()) return {};
  const std::vector<CommandResult> results = MeasureMounts(mounts);
  ProgramMountSnapshot snapshot;
  for (std::size_t i = 0; i < mounts.size(); ++i) {
    const Json::Value answer = ParseAnswer(results[i]);
    if (const std::string error = TextMember(answer, kError); !error.empty())
      snapshot.trouble = mounts[i].target + ": " + error;
    else
      snapshot.mounts.push_back(ProgramMount::FromJson(answer));
  }
  return snapshot.ToJson();
}

}  // namespace linux_platform

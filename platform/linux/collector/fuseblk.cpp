// The room on file systems that are programs. The program may be dead while its mount
// stands, and who asks then sits in the kernel, where no signal reaches: each mount is
// asked by a process of its own, which is left behind when it does not come back.
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "common/json_reader.h"
#include "platform/linux/base/sysfs.h"
#include "platform/linux/collector/children.h"
#include "platform/linux/collector/parts.h"
#include "platform/linux/collector/snapshot_folder.h"
#include "platform/linux/storage/filesystem.h"
#include "platform/linux/storage/mounts.h"

namespace linux_platform {
namespace {

using common::ParseJson, common::TextMember;

constexpr Bounds kBounds = {std::chrono::seconds(4), 4096};
constexpr std::size_t kMostMounts = 32;

std::string DeviceOf(const Mount& mount) {
  return std::to_string(major(mount.device)) + ":" + std::to_string(minor(mount.device));
}

std::vector<Mount> ProgramMounts(const std::vector<Mount>& all) {
  std::vector<Mount> mounts;
  for (const Mount& mount : all)
    if (mount.type == "fuseblk" && FindMount(all, mount.target) == &mount &&
        mounts.size() < kMostMounts)
      mounts.push_back(mount);
  return mounts;
}

std::vector<Outcome> Ask(const std::vector<Mount>& mounts) {
  std::vector<Order> orders;
  for (const Mount& mount : mounts)
    orders.push_back(
        {ThisProgram({"--measure", mount.target, "--device", DeviceOf(mount)}), kBounds});
  return RunTogether(orders);
}

Json::Value AnswerOf(const Outcome& outcome) {
  if (!outcome.reason.empty()) return Unread(outcome.reason);
  if (outcome.cut == Child::Cut::Late) return Unread("no answer within 4 s");
  Json::Value answer;
  if (!ParseJson(outcome.output, answer) || !answer.isObject())
    return Unread("the process that asked it failed");
  return answer;
}

}  // namespace

Json::Value MeasureMount(const std::string& path, const std::string& device) {
  const auto lock = TakeLock("fuseblk-" + device);
  if (!lock) return Unread("an earlier look at it is still stuck in the kernel");
  const std::size_t colon = device.find(':');
  const auto first = ToNumber(device.substr(0, colon));
  const auto second = ToNumber(device.substr(std::min(colon, device.size() - 1) + 1));
  Capacity capacity;
  if (!ReadCapacity(path,
                    makedev(static_cast<unsigned>(first.value_or(0)),
                            static_cast<unsigned>(second.value_or(0))),
                    capacity))
    return Unread(std::strerror(errno));
  Json::Value answer(Json::objectValue);
  answer["total"] = Json::UInt64{capacity.size};
  answer["free"] = Json::UInt64{capacity.available};
  return answer;
}

Json::Value CollectFuseblk() {
  MountTable all;
  if (!ReadMounts(all))
    return Unread(std::string("the mount table could not be read: ") + std::strerror(errno));
  const std::vector<Mount> mounts = ProgramMounts(*all);
  if (mounts.empty()) return {};
  const std::vector<Outcome> outcomes = Ask(mounts);
  Json::Value members(Json::objectValue);
  Json::Value& list = members["mounts"] = Json::Value(Json::arrayValue);
  for (std::size_t i = 0; i < mounts.size(); ++i) {
    Json::Value answer = AnswerOf(outcomes[i]);
    const std::string error = TextMember(answer, "error");
    if (!error.empty()) {
      members["trouble"] = mounts[i].target + ": " + error;
      continue;
    }
    answer["path"] = mounts[i].target;
    answer["device"] = DeviceOf(mounts[i]);
    list.append(std::move(answer));
  }
  return members;
}

}  // namespace linux_platform

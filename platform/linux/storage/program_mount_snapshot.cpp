#include "platform/linux/storage/program_mount_snapshot.h"

#include <algorithm>

#include "common/json_reader.h"
#include "platform/linux/base/snapshot.h"

namespace linux_platform {

using common::SizeMember, common::TextMember;

constexpr const char *kMounts = "mounts", *kPath = "path", *kDevice = "device", *kTotal = "total",
                     *kFree = "free";

Json::Value ProgramMount::ToJson() const {
  Json::Value entry(Json::objectValue);
  entry[kPath] = path;
  entry[kDevice] = device;
  entry[kTotal] = Json::UInt64{total};
  entry[kFree] = Json::UInt64{free};
  return entry;
}

ProgramMount ProgramMount::FromJson(const Json::Value& entry) {
  return {TextMember(entry, kPath), TextMember(entry, kDevice), SizeMember(entry, kTotal),
          SizeMember(entry, kFree)};
}

const ProgramMount* ProgramMountSnapshot::FindMount(const std::string& path) const {
  const auto found = std::ranges::find(mounts, path, &ProgramMount::path);
  return found == mounts.end() ? nullptr : &*found;
}

Json::Value ProgramMountSnapshot::ToJson() const {
  Json::Value members(Json::objectValue);
  Json::Value& list = members[kMounts] = Json::Value(Json::arrayValue);
  for (const ProgramMount& mount : mounts) list.append(mount.ToJson());
  if (!trouble.empty()) members[kTrouble] = trouble;
  return members;
}

ProgramMountSnapshot ProgramMountSnapshot::FromJson(const Json::Value& document) {
  ProgramMountSnapshot snapshot;
  for (const Json::Value& entry : ListMember(document, kMounts))
    snapshot.mounts.push_back(ProgramMount::FromJson(entry));
  snapshot.trouble = TextMember(document, kTrouble);
  return snapshot;
}

}  // namespace linux_platform

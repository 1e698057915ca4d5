#include "platform/linux/collector/snapshot_folder.h"

#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>

#include "common/json_reader.h"
#include "common/json_writer.h"
#include "platform/linux/base/replace_file.h"
#include "platform/linux/base/root.h"
#include "platform/linux/base/snapshot.h"

namespace linux_platform {
namespace {

std::string BuildPath(const std::string& file) { return BelowRoot(kSnapshotFolder) + "/" + file; }

}  // namespace

bool MakeSnapshotFolder() { return MakeFolder(BelowRoot(kSnapshotFolder), 0755); }

bool WriteSnapshot(const std::string& source, Json::Value members) {
  members[kWritten] = Json::Int64{std::time(nullptr)};
  members[kBootId] = BootId();
  members[kPeriod] = kSnapshotPeriod;
  return ReplaceFile(BuildPath(source + ".json"), common::WriteCompact(members) + "\n");
}

bool RemoveSnapshot(const std::string& source) { return RemoveFile(BuildPath(source + ".json")); }

Json::Value ReadLastSnapshot(const std::string& source) {
  Json::Value last;
  std::string text;
  if (ReadSmallFile(BuildPath(source + ".json").c_str(), kSnapshotCap, text) != ReadResult::Read ||
      !common::ParseJson(text, last) || common::TextMember(last, kBootId) != BootId())
    return {};
  return last;
}

bool WriteMemory(const std::string& source, const Json::Value& members) {
  const std::string folder = BelowRoot(kMemoryFolder), path = folder + "/" + source + ".json";
  if (members.isNull()) return RemoveFile(path) || errno == ENOENT;
  const std::string text = common::WriteCompact(members) + "\n";
  std::string before;
  if (ReadSmallFile(path.c_str(), kSnapshotCap, before) == ReadResult::Read && before == text)
    return true;  // a disk need not wake for it
  return MakeFolder(folder, 0755) && ReplaceFile(path, text);
}

std::optional<Descriptor> TakeLock(const std::string& name) {
  Descriptor file = OpenLock(BuildPath("." + name + ".lock"));
  if (file && flock(file.Get(), LOCK_EX | LOCK_NB) != 0) return {};
  return file;
}

std::string PrintJson(const Json::Value& document) {
  if (isatty(STDOUT_FILENO)) return common::WritePretty(document);
  return common::WriteCompact(document) + "\n";
}

}  // namespace linux_platform

#include "platform/linux/collector/snapshot_folder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>

#include <json/writer.h>

#include "common/json_reader.h"
#include "platform/linux/base/replace_file.h"
#include "platform/linux/base/root.h"
#include "platform/linux/base/snapshot.h"

namespace linux_platform {
namespace {

std::string PathOf(const std::string& file) { return BelowRoot(kSnapshotFolder) + "/" + file; }

}  // namespace

bool MakeSnapshotFolder() { return MakeFolder(BelowRoot(kSnapshotFolder)); }

bool WriteSnapshot(const std::string& source, Json::Value members) {
  members["written"] = Json::Int64{std::time(nullptr)};
  members["boot_id"] = BootId();
  members["period"] = kSnapshotPeriod;
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "";
  return ReplaceFile(PathOf(source + ".json"), Json::writeString(builder, members) + "\n");
}

bool RemoveSnapshot(const std::string& source) {
  return unlink(PathOf(source + ".json").c_str()) == 0 || errno == ENOENT;
}

Json::Value LastSnapshot(const std::string& source) {
  using namespace common;
  Json::Value last;
  std::string text;
  if (ReadSmallFile(PathOf(source + ".json").c_str(), kSnapshotCap, text) != ReadResult::Read ||
      !common::ParseJson(text, last) || common::TextMember(last, "boot_id") != BootId())
    return {};
  return last;
}

std::optional<Descriptor> TakeLock(const std::string& name) {
  Descriptor file(
      open(PathOf("." + name + ".lock").c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600));
  if (file && flock(file.Get(), LOCK_EX | LOCK_NB) != 0) return {};
  return file;
}

}  // namespace linux_platform

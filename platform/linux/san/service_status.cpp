#include "platform/linux/san/service_status.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include "platform/linux/base/root.h"
#include "platform/linux/base/settings.h"
#include "platform/linux/san/host_volumes.h"
#include "platform/linux/san/lun_status.h"
#include "platform/linux/san/target.h"
#include "platform/linux/storage/block.h"

namespace linux_platform {
namespace {

constexpr const char* kSaved = "/etc/rtslib-fb-target/saveconfig.json";
constexpr std::size_t kSavedCap = std::size_t{64} << 20;

// systemd keeps such a link for each unit that is active.
constexpr std::array kServices = {"/run/systemd/units/invocation:rtslib-fb-targetctl.service",
                                  "/run/systemd/units/invocation:target.service"};

bool IsServiceActive() {
  return std::ranges::any_of(kServices, [](const char* link) {
    struct stat status = {};
    return lstat(BelowRoot(link).c_str(), &status) == 0;
  });
}

bool IsLowCapacityWriteOn() {
  return ReadSettings(kCurrentSettings).settings.Yes("san.low_capacity_write");
}

void LookAtBacking(const Lun& lun, LunEvidence& evidence) {
  struct stat status = {};
  if (stat(BelowRoot(lun.backing).c_str(), &status) != 0) {
    evidence.hasStorage = errno != ENOENT && errno != ENOTDIR && errno != ENXIO && errno != EIO;
  } else if (S_ISBLK(status.st_mode)) {
    evidence.hasStorage = !ReadStack(status.st_rdev).gone;
  } else {
    evidence.hasStorage = status.st_size > 0;
    evidence.isThin = std::int64_t{status.st_blocks} * 512 < status.st_size;
  }
}

Json::Value EntryOf(const Lun& lun, bool isConfigured, HostVolumes& volumes) {
  LunEvidence evidence;
  evidence.isConfigured = isConfigured;
  evidence.isEnabled = lun.isEnabled;
  // What lies below /dev is a device, and in no volume.
  const bool isFile = !lun.backing.empty() && !lun.backing.starts_with("/dev/");
  const HostVolume* volume = isFile ? volumes.Of(lun.backing) : nullptr;
  if (volume != nullptr) {
    evidence.isHostCrashed = volume->isCrashed;
    evidence.isHostFull = volume->IsFull();
  }
  if (!lun.backing.empty() && (volume == nullptr || !volume->mayHang)) LookAtBacking(lun, evidence);
  Json::Value entry(Json::objectValue);
  entry["name"] = lun.name;
  entry["status"] = StatusOf(evidence);
  entry["location"] = volume != nullptr ? volume->path : "";
  return entry;
}

std::vector<Lun> SavedLuns(std::string& trouble) {
  std::vector<Lun> luns;
  std::string text;
  const ReadResult result = ReadSmallFile(BelowRoot(kSaved).c_str(), kSavedCap, text);
  if (result == ReadResult::Missing) return luns;
  if (result == ReadResult::Failed)
    trouble = std::string(kSaved) + " could not be read: " + std::strerror(errno);
  else if (result == ReadResult::TooLarge || !ParseSavedLuns(text, luns))
    trouble = std::string(kSaved) + " is no saved configuration";
  return luns;
}

}  // namespace

Json::Value ReadServiceStatus(std::string& trouble) {
  MountTable mounts;
  if (!ReadMounts(mounts))
    trouble = std::string("the mount table could not be read: ") + std::strerror(errno);
  HostVolumes volumes(*mounts);
  Json::Value document(Json::objectValue);
  document["low_capacity_write_on"] = IsLowCapacityWriteOn();
  Json::Value& luns = document["luns"] = Json::Value(Json::arrayValue);
  const Target target = ReadTarget();
  for (const Lun& lun : target.luns) luns.append(EntryOf(lun, true, volumes));
  // A target that was stopped has no LUNs; one that runs ought to have all that were saved.
  if (target.isServing || IsServiceActive())
    for (const Lun& lun : SavedLuns(trouble))
      if (!std::ranges::binary_search(target.names, lun.name))
        luns.append(EntryOf(lun, false, volumes));

  Json::Value& list = document["volumes"] = Json::Value(Json::arrayValue);
  for (const auto& [path, volume] : volumes.Asked()) {
    Json::Value entry(Json::objectValue);
    entry["path"] = path;
    entry["free_size"] = Json::UInt64{volume.capacity.available};
    entry["total_size"] = Json::UInt64{volume.Total()};
    list.append(std::move(entry));
  }
  return document;
}

}  // namespace linux_platform

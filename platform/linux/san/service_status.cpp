#include "platform/linux/san/service_status.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include "platform/linux/base/open.h"
#include "platform/linux/base/root.h"
#include "platform/linux/base/settings.h"
#include "platform/linux/san/host_volumes.h"
#include "platform/linux/san/target.h"

namespace linux_platform {
namespace {

constexpr const char* kSaved = "/etc/rtslib-fb-target/saveconfig.json";
constexpr std::size_t kSavedCap = std::size_t{32} << 20;  // 16,000 LUNs

// systemd keeps such a link for each unit that is active.
constexpr std::array kServices = {"/run/systemd/units/invocation:rtslib-fb-targetctl.service",
                                  "/run/systemd/units/invocation:target.service"};

bool IsServiceActive() {
  return std::ranges::any_of(kServices, [](const char* link) {
    return static_cast<bool>(Open(BelowRoot(link), O_PATH | O_NOFOLLOW));
  });
}

bool IsLowCapacityWriteOn() {
  return ReadSettings(kCurrentSettings).settings.Yes("san.low_capacity_write");
}

struct LunEvidence {
  bool isConfigured = true;    // the kernel has it; false: only the saved configuration does
  bool hasStorage = true;      // its file or device is there, not empty, and not too short
  bool isHostCrashed = false;  // the file system that holds its file has stopped working
  bool isEnabled = true;       // the kernel exports it
  bool isThin = false;         // its file has fewer bytes on disk than the LUN promises
  bool isHostFull = false;     // a tenth or less of that file system is free
};

// The first that holds decides. Only a LUN that is not "normal" can be reported for its volume's
// lack of space.
const char* ChooseStatus(const LunEvidence& lun) {
  if (!lun.isConfigured || !lun.hasStorage || lun.isHostCrashed) return "Unhealthy";
  if (!lun.isEnabled) return "unavailabling";
  if (lun.isThin && lun.isHostFull) return "low_space";
  return "normal";
}

void ReadBacking(const Lun& lun, HostVolumes& volumes, LunEvidence& evidence) {
  struct stat status = {};
  if (!Stat(BelowRoot(lun.backing), status)) {
    evidence.hasStorage = errno != ENOENT && errno != ENOTDIR && errno != ENXIO && errno != EIO;
  } else if (S_ISBLK(status.st_mode)) {
    evidence.hasStorage = !volumes.IsLost(status.st_rdev);
  } else {
    evidence.hasStorage = status.st_size > 0 && status.st_size >= lun.size;
    evidence.isThin = std::int64_t{status.st_blocks} * 512 < status.st_size;
  }
}

Json::Value DescribeLun(const Lun& lun, bool isConfigured, HostVolumes& volumes) {
  LunEvidence evidence;
  evidence.isConfigured = isConfigured;
  evidence.isEnabled = lun.isEnabled;
  // A path below /dev names a device, which lies in no volume.
  const bool isFile = !lun.backing.empty() && !lun.backing.starts_with("/dev/");
  const HostVolume* volume = isFile ? volumes.FindVolume(lun.backing) : nullptr;
  if (volume != nullptr) {
    evidence.isHostCrashed = volume->isCrashed;
    evidence.isHostFull = volume->IsFull();
  }
  if (!lun.backing.empty() && (volume == nullptr || !volume->mayHang))
    ReadBacking(lun, volumes, evidence);
  Json::Value entry(Json::objectValue);
  entry["name"] = lun.name;
  entry["status"] = ChooseStatus(evidence);
  entry["location"] = volume != nullptr ? volume->path : "";
  return entry;
}

std::vector<Lun> ReadSavedLuns(std::string& trouble) {
  std::vector<Lun> luns;
  std::string text;
  const ReadResult result = ReadSmallFile(BelowRoot(kSaved).c_str(), kSavedCap, text);
  if (result == ReadResult::Missing) return luns;
  if (result == ReadResult::Failed)
    trouble = std::string(kSaved) + " could not be read: " + std::strerror(errno);
  else if (result == ReadResult::TooLarge || !ParseSavedLuns(text, luns))
    trouble = std::string(kSaved) + " is no saved configuration, or is larger than can be read";
  return luns;
}

}  // namespace

Json::Value ReadServiceStatus(std::string& trouble) {
  MountTable mounts;
  if (!ReadMounts(mounts))
    trouble = std::string("the mount table could not be read: ") + std::strerror(errno);
  HostVolumes volumes(mounts);
  Json::Value document(Json::objectValue);
  document["low_capacity_write_on"] = IsLowCapacityWriteOn();
  Json::Value& luns = document["luns"] = Json::Value(Json::arrayValue);
  const Target target = ReadTarget();
  for (const Lun& lun : target.luns) luns.append(DescribeLun(lun, true, volumes));
  // A target that was stopped has no LUNs; one that runs ought to have all that were saved.
  if (target.isServing || IsServiceActive())
    for (const Lun& lun : ReadSavedLuns(trouble))
      if (!std::ranges::binary_search(target.names, lun.name))
        luns.append(DescribeLun(lun, false, volumes));

  Json::Value& list = document["volumes"] = Json::Value(Json::arrayValue);
  for (const auto& [path, volume] : volumes.GetVolumes()) {
    Json::Value entry(Json::objectValue);
    entry["path"] = path;
    entry["free_size"] = Json::UInt64{volume.capacity.available};
    entry["total_size"] = Json::UInt64{volume.capacity.Total()};
    list.append(std::move(entry));
  }
  return document;
}

}  // namespace linux_platform

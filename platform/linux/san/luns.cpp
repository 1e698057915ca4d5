#include "platform/linux/san/luns.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

#include "platform/linux/base/open.h"
#include "platform/linux/base/root.h"

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
LunStatus ChooseStatus(const LunEvidence& lun) {
  if (!lun.isConfigured || !lun.hasStorage || lun.isHostCrashed) return LunStatus::Unhealthy;
  if (!lun.isEnabled) return LunStatus::Unavailable;
  if (lun.isThin && lun.isHostFull) return LunStatus::LowSpace;
  return LunStatus::Normal;
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

JudgedLun JudgeLun(Lun lun, bool isConfigured, HostVolumes& volumes) {
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
  const bool mayHang = volume != nullptr && volume->mayHang;
  if (!lun.backing.empty() && !mayHang) ReadBacking(lun, volumes, evidence);
  return {std::move(lun), ChooseStatus(evidence), volume != nullptr ? volume->path : "", !mayHang};
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

std::vector<JudgedLun> ReadLuns(HostVolumes& volumes, std::string& trouble) {
  std::vector<JudgedLun> luns;
  Target target = ReadTarget();
  for (Lun& lun : target.luns) luns.push_back(JudgeLun(std::move(lun), true, volumes));
  // A target that was stopped has no LUNs; one that runs ought to have all that were saved.
  if (target.isServing || IsServiceActive())
    for (Lun& lun : ReadSavedLuns(trouble))
      if (!std::ranges::binary_search(target.names, lun.name))
        luns.push_back(JudgeLun(std::move(lun), false, volumes));
  return luns;
}

}  // namespace linux_platform

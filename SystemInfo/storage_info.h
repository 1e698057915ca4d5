// The internal storage: volumes with their usage, disks, and the overall verdict.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <vela_storage.h>

#include "SystemInfo/abstract_info.h"

namespace VELA::SystemHealth {

enum class StorageOverviewStatus : std::int32_t { Normal = 0, Abnormal = 1, Danger = 2 };

struct VolumeUsageInfo {
  VolumeUsageInfo(std::string spaceId, std::string status, std::string volumeId,
                  _tag_volume_usage usage, float warningRatio);

  std::string spaceId;   // as the storage manager names it: "volume_1"
  std::string status;    // "normal" for a healthy volume
  std::string volumeId;  // what stands behind the first "_": "1"
  _tag_volume_usage usage;
  float warningRatio;  // the free share below which the volume warns: 0.05 is five per cent

  // Whether the free share of the capacity (of the inodes) is below the volume's own
  // level (`threshold`, a fraction). Never true for a volume that is not "normal". A
  // total of zero follows the floating point.
  bool WarningOutOfSpace() const;
  bool WarningOutOfInode(double threshold) const;
};

struct DiskStatus {
  std::string name;
  std::string status;
  std::string overviewStatus;
  bool remoteDisconnected = false;
  bool inUse = false;  // a hot spare is not in use
};

class StorageInfo : public AbstractInfo {
 public:
  void Init() override;

  const std::vector<VolumeUsageInfo>& GetVolumes() const { return volumes_; }
  const std::vector<DiskStatus>& GetDisksStatus() const { return disks_; }
  StorageOverviewStatus GetStorageOverviewStatus() const { return overview_; }

 private:
  void LoadVolumeInfo(const ZRT::STORAGE_MANAGER::Space& space);
  void AddVolume(const ZRT::STORAGE_MANAGER::SpaceRecord& record);
  void LoadDiskInfo(const ZRT::STORAGE_MANAGER::Space& space);
  void LoadStorageOverviewStatus();

  std::vector<VolumeUsageInfo> volumes_;
  std::vector<DiskStatus> disks_;
  StorageOverviewStatus overview_ = StorageOverviewStatus::Normal;
};

}  // namespace VELA::SystemHealth

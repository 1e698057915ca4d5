// The block-storage (iSCSI) service: what its own tool prints about LUNs and volumes.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <json/value.h>

#include "SystemInfo/abstract_info.h"

namespace VELA::SystemHealth {

// Texts are empty, sizes 0 where the tool says nothing or something of another type.
struct LunInfo {
  std::string name;
  std::string status;
  std::string location;  // the path of the volume that holds the LUN
};

struct VolumeInfo {
  std::string path;
  std::uint64_t freeSize = 0;  // bytes
  std::uint64_t totalSize = 0;
};

class SanStatusInfo : public AbstractInfo {
 public:
  void Init() override;

  // Both in the tool's order.
  const std::vector<LunInfo>& GetLunsStatus() const { return luns_; }
  const std::vector<VolumeInfo>& GetVolumesStatus() const { return volumes_; }
  bool IsEnableLowCapacityWrite() const { return lowCapacityWrite_; }

 private:
  bool LoadSanStatusInfo();  // false on a model without the service
  void LoadLunInfo();
  void LoadVolumeInfo();
  void TakeOutput(std::string text);
  bool HasMember(const char* name) const;  // of the tool's output

  std::vector<LunInfo> luns_;
  std::vector<VolumeInfo> volumes_;
  bool lowCapacityWrite_ = false;
  // {"san": the tool's output without the elements of its lists}; null until loaded
  Json::Value rawStatus_;
};

}  // namespace VELA::SystemHealth

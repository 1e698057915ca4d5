// The mounted external volumes: USB disks, SD cards and eSATA disks.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include <json/value.h>

#include "SystemInfo/abstract_info.h"

namespace VELA::SystemHealth {

enum class ExternalVolumeType : std::int32_t {
  Usb = 0,
  SdCard = 1,  // a USB volume on a card reader
  Esata = 2,
};

struct ExternalVolume {
  ExternalVolume(std::string name, std::uint64_t total, std::uint64_t free)
      : volume(std::move(name)), totalSize(total), freeSize(free) {}

  std::string volume;       // as shown to the user: usbshare1-2, sdshare1, satashare1
  std::uint64_t totalSize;  // both in the platform's unit
  std::uint64_t freeSize;
};

class ExternalVolumeInfo : public AbstractInfo {
 public:
  void Init() override;

  // In the platform's order. Empty for a type that is none of the three.
  const std::vector<ExternalVolume>& GetExternalVolumes(ExternalVolumeType type) const;

  // An array of {"volume", "total_size", "free_size"}: USB, then SD cards, then eSATA.
  Json::Value ToJson() const;

 private:
  void InitESATAVolumeInfo();
  void InitUSBAndSDCardVolumeInfo();

  std::vector<ExternalVolume> esata_;
  std::vector<ExternalVolume> usb_;
  std::vector<ExternalVolume> sdCards_;
  std::vector<ExternalVolume> none_;
};

}  // namespace VELA::SystemHealth

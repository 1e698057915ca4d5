#include "SystemInfo/external_volume_info.h"

#include <vela_storage.h>
#include <velac.h>

#include "common/text.h"
#include "module/base/platform_list.h"

namespace VELA::SystemHealth {
namespace {

using ZRT::STORAGE_WEBUTILS::Volume;

constexpr int kUsbClass = 4;  // card readers included
constexpr int kEsataClass = 8;

ExternalVolume FromRecord(const VELA_MOUNT_VOL_INFO& record) {
  return {Volume::ToUIUsbSataVolumeStr(std::string(common::ViewText(record.name))),
          record.totalSize, record.freeSize};
}

std::vector<ExternalVolume> MountedVolumes(int volumeClass) {
  const PlatformList<VELA_MOUNT_VOL_INFO, VELAMountVolInfoFree> list(
      VELAMountVolAllEnum(0, volumeClass, 0));
  std::vector<ExternalVolume> volumes;
  volumes.reserve(LengthOf(list.Head()));
  for (const auto* record = list.Head(); record != nullptr; record = record->next)
    volumes.push_back(FromRecord(*record));
  return volumes;
}

}  // namespace

void ExternalVolumeInfo::Init() {
  InitESATAVolumeInfo();
  InitUSBAndSDCardVolumeInfo();
}

const std::vector<ExternalVolume>& ExternalVolumeInfo::GetExternalVolumes(
    ExternalVolumeType type) const {
  switch (type) {
    case ExternalVolumeType::Usb:
      return usb_;
    case ExternalVolumeType::SdCard:
      return sdCards_;
    case ExternalVolumeType::Esata:
      return esata_;
  }
  return none_;
}

Json::Value ExternalVolumeInfo::ToJson() const {
  Json::Value list(Json::arrayValue);
  for (const auto* volumes : {&usb_, &sdCards_, &esata_}) {
    for (const ExternalVolume& volume : *volumes) {
      Json::Value json(Json::objectValue);
      json["volume"] = volume.volume;
      json["total_size"] = Json::UInt64{volume.totalSize};
      json["free_size"] = Json::UInt64{volume.freeSize};
      list.append(std::move(json));
    }
  }
  return list;
}

void ExternalVolumeInfo::InitESATAVolumeInfo() { esata_ = MountedVolumes(kEsataClass); }

void ExternalVolumeInfo::InitUSBAndSDCardVolumeInfo() {
  usb_ = MountedVolumes(kUsbClass);
  std::erase_if(usb_, [this](const ExternalVolume& volume) {
    if (VELAUsbIsCardreader(volume.volume.c_str()) == 0) return false;
    sdCards_.push_back(volume);
    return true;
  });
}

}  // namespace VELA::SystemHealth

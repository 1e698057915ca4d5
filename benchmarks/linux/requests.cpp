#include <cstdio>

#include <json/value.h>

#include "benchmarks/get.h"
#include "benchmarks/linux/sides.h"
#include "platform/linux/storage_view.h"
#include "vela_conf.h"
#include "vela_network.h"
#include "vela_storage.h"
#include "velac.h"

using namespace VELA::ZRT;

void RequestAnswer() { Get(); }

void RequestNetwork() {
  VLIB_NET_INTERFACE entries[32] = {};
  const int count = VLIBNetGetInterfaceInfo(entries, 32, 18);
  for (int i = 0; i < count; ++i) {
    VELA_NETIF_INFO record = {};
    VELANetIFGetInfoEx(entries[i].name, 0, &record);
    vela::network::GetTypeString(vela::network::GetIfType(entries[i].name, nullptr));
  }
}

void RequestStorage() {
  vela::linuxplatform::ForgetStorage();
  for (const int volumeClass : {8, 4}) VELAMountVolInfoFree(VELAMountVolAllEnum(0, volumeClass, 0));
  const STORAGE_MANAGER::Space space(23);
  for (const auto* record = space.GetAll(); record != nullptr; record = record->next) {
    _tag_volume_usage usage = {};
    FS_INFO* info = nullptr;
    STORAGE_MANAGER::Volume::GetVolumeFSInfo(record->path, usage, info);
    FSInfoFree(info);
    VELAVolumeCapWarnPctGet(record->path);
    STORAGE_MANAGER::StorageUtil::ToUISpaceID(record->type, record->path);
    STORAGE_MANAGER::Volume::ToJsonSpaceStatus(*record);
  }
  Json::Value disks(Json::arrayValue);
  if (VLIBCMaxDiskGet() != 0) STORAGE_MANAGER::Disk(false, true).DumpDisks(space, disks);
  STORAGE_MANAGER::Space::GetOverviewStatus();
  STORAGE_WEBUTILS::Volume::IsSystemVolCrashed();
}

void RequestSpawn() {
  FILE* stream = VLIBCPopen("/bin/true", "r", nullptr);
  if (stream == nullptr) return;
  while (std::fgetc(stream) != EOF) continue;
  VLIBCPclose(stream);
}

#include <sys/sysinfo.h>
#include <unistd.h>

#include <cstdio>

#include <json/value.h>

#include "benchmarks/get.h"
#include "benchmarks/linux/sides.h"
#include "common/json_reader.h"
#include "vela_conf.h"
#include "vela_network.h"
#include "vela_storage.h"
#include "vela_webserver.h"
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
  const VelaConf request;
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

// The module's questions, in its order.
void RequestPlatform() {
  const VelaConf settings;
  RequestStorage();
  VELA_UPS_INFO ups = {};
  VELAUPSInfoGet(&ups);
  VELA_SYS_STATUS status = {};
  unsigned detail = 0;
  int state = 0;
  char text[1024] = {};
  for (int asked = 0; asked < 2; ++asked) VELASysStatusGet(&status);
  for (const int component : {4, 1, 6, 5}) VELAIsComponentFail(&status, component, &detail);
  VELARedundantPowerSupport();
  VLIBCFileGetKeyValue("/etc.defaults/velainfo.conf", "supportsystempwarning", text, 32, 0);
  VELAHWSysTempWarning(&state);
  VELAServiceIsHttpDefaultConf();
  Json::Value scan;
  common::ReadJsonFile("/var/lib/securityscan/systemResult.json", scan);
  VELA_EBOX_INFO* units = nullptr;
  VELAEBoxInfoEnum(&units);
  VELAEBoxInfoEnumFree(units);
  VLIBCFileExist("/usr/local/bin/velaiscsiep");
  for (int asked = 0; asked < 5; ++asked) settings.DefCheckValue("maxdisks", "0", false);
  for (int asked = 0; asked < 4; ++asked) settings.Info("disk_inode_warning_percent", "");
  if (VELAHAIsRunning() != 0) VELAHAGetOverviewStatusDL(text, sizeof text);
  gethostname(text, sizeof text);
  struct sysinfo uptime = {};
  sysinfo(&uptime);
  RequestNetwork();
}

void RequestSpawn() {
  FILE* stream = VLIBCPopen("/bin/true", "r", nullptr);
  if (stream == nullptr) return;
  while (std::fgetc(stream) != EOF) continue;
  VLIBCPclose(stream);
}

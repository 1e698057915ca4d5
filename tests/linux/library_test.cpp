// The shared library by itself: every declared call is there, answers on whatever
// machine this is, and leaves the host process as it was.
#include <gtest/gtest.h>

#include <string>

#include "platform/voice/voice.h"
#include "vela_conf.h"
#include "vela_network.h"
#include "vela_storage.h"
#include "vela_webserver.h"
#include "velac.h"

namespace {

using namespace VELA::ZRT;

void AskHardware() {
  VELA_SYS_STATUS status = {};
  EXPECT_EQ(VELASysStatusGet(&status), 0);
  for (const int component : {1, 4, 5, 6}) {
    unsigned detail = 0;
    EXPECT_GE(VELAIsComponentFail(&status, component, &detail), 0);
  }
  VELARedundantPowerSupport();
  int warning = 0;
  VELAHWSysTempWarning(&warning);
  EXPECT_GE(VELAServiceIsHttpDefaultConf(), 0);
  EXPECT_TRUE(velaw3::NginxConfManager(velaw3::NGINXCONF_APPLY).run());
  VELA_UPS_INFO ups = {};
  EXPECT_EQ(VELAUPSInfoGet(&ups), 0);
  VELA_EBOX_INFO* units = nullptr;
  EXPECT_EQ(VELAEBoxInfoEnum(&units), 0);
  VELAEBoxInfoEnumFree(units);
}

void AskStorage() {
  STORAGE_WEBUTILS::Volume::IsSystemVolCrashed();
  const STORAGE_MANAGER::Space space(23);
  for (const auto* record = space.GetAll(); record != nullptr; record = record->next) {
    if (record->type != 1) continue;
    _tag_volume_usage usage = {};
    FS_INFO* info = nullptr;
    STORAGE_MANAGER::Volume::GetVolumeFSInfo(record->path, usage, info);
    FSInfoFree(info);
    EXPECT_GT(VELAVolumeCapWarnPctGet(record->path), 0.0F);
    EXPECT_NE(STORAGE_MANAGER::Volume::ToJsonSpaceStatus(*record), "");
    EXPECT_EQ(STORAGE_MANAGER::StorageUtil::ToUISpaceID(1, record->path).rfind("volume_", 0), 0U);
  }
  Json::Value disks(Json::arrayValue);
  EXPECT_TRUE(STORAGE_MANAGER::Disk(false, true).DumpDisks(space, disks));
  EXPECT_GE(VLIBCMaxDiskGet(), 0);
  STORAGE_MANAGER::Space::GetOverviewStatus();
}

void AskTheRest() {
  const VelaConf conf;
  EXPECT_STREQ(conf.Info("no such key", "default"), "default");
  EXPECT_FALSE(conf.InfoCheckValue("no such key", "", false));
  EXPECT_FALSE(conf.DefCheckValue("no such key", "", false));
  EXPECT_STREQ(conf.Def("no such key", nullptr), "");
  char value[8];
  EXPECT_LT(VLIBCFileGetKeyValue("/no/such/file", "key", value, sizeof value, 0), 0);
  EXPECT_NE(VLIBCErrGet(), 0U);
  EXPECT_NE(VLIBCErrorGetFile(), nullptr);
  EXPECT_GT(VLIBCErrorGetLine(), 0);

  VLIB_NET_INTERFACE interfaces[32];
  const int count = VLIBNetGetInterfaceInfo(interfaces, 32, 18);
  EXPECT_GE(count, 0);
  for (int i = 0; i < count; ++i) {
    VELA_NETIF_INFO record = {};
    EXPECT_EQ(VELANetIFGetInfoEx(interfaces[i].name, 0, &record), 0);
    EXPECT_NE(vela::network::GetTypeString(vela::network::GetIfType(interfaces[i].name, nullptr)),
              nullptr);
  }
  for (const int volumeClass : {4, 8}) VELAMountVolInfoFree(VELAMountVolAllEnum(0, volumeClass, 0));
  EXPECT_TRUE(VELAUsbIsCardreader("sdshare1") || !VELAUsbIsCardreader("usbshare1"));
  EXPECT_EQ(STORAGE_WEBUTILS::Volume::ToUIUsbSataVolumeStr("usbshare1-2"), "usbshare1-2");
  VELAHAIsRunning();
  char status[1024] = {};
  VELAHAGetOverviewStatusDL(status, sizeof status);
  EXPECT_FALSE(VLIBCFileExist("/no/such/file"));
  FILE* stream = VLIBCPopen("/bin/true", "r", nullptr);
  ASSERT_NE(stream, nullptr);
  EXPECT_EQ(fgetc(stream), EOF);
  EXPECT_EQ(VLIBCPclose(stream), 0);
}

TEST(PlatformLibrary, EveryCallAnswersAndEverySourceSpeaks) {
  VELAPlatformSourcesReset();
  AskHardware();
  AskStorage();
  AskTheRest();
  VELASourceReport reports[16];
  ASSERT_EQ(VELAPlatformSources(reports, 16), 11);
  for (int i = 0; i < 11; ++i) {
    SCOPED_TRACE(reports[i].name);
    EXPECT_STRNE(reports[i].reason, "not asked");
    EXPECT_EQ(reports[i].state == 1, std::string(reports[i].reason).empty());
    printf("%-18s %d %6u us  %s\n", reports[i].name, reports[i].state, reports[i].microseconds,
           reports[i].reason);
  }
}

}  // namespace

// Many requests at once over the real machine; run under ThreadSanitizer too.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "vela_conf.h"
#include "vela_network.h"
#include "vela_storage.h"
#include "velac.h"

namespace {

using namespace VELA::ZRT;

// What one request reads that does not change from one to the next.
std::string Ask() {
  std::string seen;
  const VelaConf conf;
  seen += conf.Def("maxdisks", "");
  for (const int volumeClass : {8, 4}) VELAMountVolInfoFree(VELAMountVolAllEnum(0, volumeClass, 0));
  const STORAGE_MANAGER::Space space(23);
  for (const auto* record = space.GetAll(); record != nullptr; record = record->next)
    seen += "|" + STORAGE_MANAGER::StorageUtil::ToUISpaceID(1, record->path) +
            STORAGE_MANAGER::Volume::ToJsonSpaceStatus(*record);
  seen += STORAGE_MANAGER::Space::GetOverviewStatus();
  FILE* stream = VLIBCPopen("/bin/echo", "r", "tool", nullptr);
  char text[16] = {};
  if (stream != nullptr && fgets(text, sizeof text, stream) != nullptr) seen += text;
  if (stream != nullptr) VLIBCPclose(stream);
  VLIB_NET_INTERFACE interfaces[32];
  const int count = VLIBNetGetInterfaceInfo(interfaces, 32, 18);
  for (int i = 0; i < count; ++i) {
    VELA_NETIF_INFO record = {};
    VELANetIFGetInfoEx(interfaces[i].name, 0, &record);
    seen += std::string(interfaces[i].name) + record.address;
  }
  return seen;
}

TEST(Threads, RequestsAtTheSameTimeSeeTheSameMachine) {
  const std::string alone = Ask();
  EXPECT_NE(alone.find("tool\n"), std::string::npos);
  std::atomic<int> different = 0;
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i)
    threads.emplace_back([&] {
      for (int round = 0; round < 25; ++round)
        if (Ask() != alone) ++different;
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(different, 0);
}

}  // namespace

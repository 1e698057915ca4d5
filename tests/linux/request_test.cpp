// What belongs to one request, and what the next one reads afresh.
#include "platform/linux/contract/request.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>

#include "tests/linux/machine_tree.h"
#include "vela_conf.h"
#include "vela_storage.h"
#include "velac.h"

namespace {

using namespace std::chrono_literals;
using VELA::ZRT::STORAGE_MANAGER::Space;

// What a thread hears about each thing that a request reads once.
std::string Hear() {
  std::string heard = "settings ";
  char text[32] = {};
  VLIBCFileGetKeyValue("/etc/velainfo.conf", "k", text, sizeof text, 0);
  heard += std::string(text) + ", disks " + std::to_string(VLIBCMaxDiskGet());
  int hot = -1;
  VELAHWSysTempWarning(&hot);
  heard += ", hot " + std::to_string(hot);
  VELA_EBOX_INFO* units = nullptr;
  VELAEBoxInfoEnum(&units);
  int count = 0;
  for (const VELA_EBOX_INFO* unit = units; unit != nullptr; unit = unit->next) ++count;
  VELAEBoxInfoEnumFree(units);
  return heard + ", units " + std::to_string(count) + ", cluster " +
         std::to_string(VELAHAIsRunning());
}

class RequestTest : public testing::Test {
 protected:
  RequestTest() { Collect("ok", ""); }
  void Collect(const std::string& temperature, const std::string& unit) {
    const std::string begin =
        R"({"boot_id": "boot", "period": 60, "written": )" + std::to_string(std::time(nullptr));
    machine.Write("/proc/sys/kernel/random/boot_id", "boot\n");
    machine.Write("/run/vela-platform/ipmi.json",
                  begin + R"(, "temperatures": [{"name": "t", "state": ")" + temperature + "\"}]}");
    machine.Write("/run/vela-platform/ses.json", begin + ", \"enclosures\": [" + unit + "]}");
  }
  void Change() {
    machine.Write("/etc/velainfo.conf", "k=v\n");
    machine.Disk("sda", "pci0/ata1/host0/target0:0:0/0:0:0:0", 8, 0);
    Collect("critical", R"({"id": "1", "fans": []})");
    machine.Write("/proc/drbd", "");
  }
  MachineTree machine;
  const std::string before = "settings , disks 0, hot 0, units 0, cluster 0";
  const std::string after = "settings v, disks 1, hot 1, units 1, cluster 1";
};

TEST_F(RequestTest, EverythingIsReadOnceAndAfreshByTheNext) {
  auto conf = std::make_unique<VelaConf>();
  EXPECT_EQ(Hear(), before);
  Change();
  EXPECT_EQ(Hear(), before) << "the request goes on";
  conf.reset();
  EXPECT_EQ(Hear(), after) << "each call outside of a request is one of its own";
  conf = std::make_unique<VelaConf>();
  EXPECT_EQ(Hear(), after);
}

TEST_F(RequestTest, LastsAsLongAsTheLastOfItsSettings) {
  auto outer = std::make_unique<VelaConf>();
  EXPECT_EQ(Hear(), before);
  Change();
  auto inner = std::make_unique<VelaConf>();
  EXPECT_STREQ(inner->Info("k", "not set"), "not set");
  inner.reset();
  EXPECT_EQ(Hear(), before) << "the inner one did not open it";
  inner = std::make_unique<VelaConf>();
  outer.reset();
  EXPECT_EQ(Hear(), before) << "and keeps it open for as long as it needs it";
  inner.reset();
  EXPECT_EQ(Hear(), after);
}

TEST_F(RequestTest, IsItsThreadsOwn) {
  auto conf = std::make_unique<VelaConf>();
  EXPECT_EQ(Hear(), before);
  Change();
  std::thread([&] {
    const VelaConf own;
    EXPECT_EQ(Hear(), after);
    conf.reset();  // whoever closes it
  }).join();
  EXPECT_EQ(Hear(), after);
}

TEST_F(RequestTest, TwoAtOnceDoNotMeet) {
  const auto ask = [this] {
    for (int i = 0; i < 20; ++i) {
      const VelaConf conf;
      EXPECT_EQ(Hear(), before);
    }
  };
  std::thread other(ask);
  ask();
  other.join();
}

TEST(Request, ItsTimeBudgetBeginsWithIt) {
  {
    const linux_platform::RequestScope request;
    request->SetWaited(1h);
    EXPECT_FALSE(linux_platform::RequestScope()->GetTimeBudget().GrantsWholeTurn(1ms));
  }
  EXPECT_TRUE(linux_platform::RequestScope()->GetTimeBudget().GrantsWholeTurn(1h));
}

}  // namespace

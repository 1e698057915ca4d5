// The chassis from its snapshots and, on boards that umockdev makes up, through
// libsensors as it is.
#include "platform/linux/contract/request.h"

#include <gtest/gtest.h>
#include <locale.h>

#include <cstring>
#include <ctime>
#include <fstream>
#include <thread>

#include "platform/linux/base/sysfs.h"
#include "platform/linux/chassis/sensors.h"
#include "platform/status/source_status.h"
#include "tests/linux/system_log.h"
#include "tests/linux/temporary_root.h"
#include "velac.h"

namespace {

using namespace linux_platform;

constexpr const char* kBoot = "4f0c3b8e-0000-4000-8000-1234567890ab";

// What one request of its own hears.
struct Heard {
  int fan, power, unitFans, processorFan;
  unsigned supplies, units;
  int redundant, temperature;
  bool operator==(const Heard&) const = default;
};

void PrintTo(const Heard& heard, std::ostream* out) {
  *out << "fan " << heard.fan << ", power " << heard.power << " mask " << heard.supplies
       << ", unit fans " << heard.unitFans << ", processor fan " << heard.processorFan
       << ", redundant " << heard.redundant << ", temperature " << heard.temperature;
}

Heard Ask() {
  VELAPlatformSourcesReset();
  VELA_SYS_STATUS record;
  memset(&record, 0x55, sizeof record);
  EXPECT_EQ(VELASysStatusGet(&record), 0);
  Heard heard = {};
  unsigned none = 7;
  heard.fan = VELAIsComponentFail(&record, 1, &none);
  EXPECT_EQ(none, 0U);
  heard.power = VELAIsComponentFail(&record, 4, &heard.supplies);
  heard.unitFans = VELAIsComponentFail(&record, 5, &heard.units);
  heard.processorFan = VELAIsComponentFail(&record, 6, nullptr);
  EXPECT_EQ(VELAIsComponentFail(&record, 2, &none), -1);
  heard.redundant = VELARedundantPowerSupport();
  int state = 0;
  heard.temperature = VELAHWSysTempWarning(&state) == 0 ? state : -1;
  return heard;
}

VELASourceReport Said() {
  VELASourceReport reports[11];
  VELAPlatformSources(reports, 11);
  return reports[2];
}

class HardwareTest : public testing::Test {
 protected:
  HardwareTest() {
    root_.Write("/proc/sys/kernel/random/boot_id", std::string(kBoot) + "\n");
    Ask();
    TakeSystemLog();
  }
  void Collect(const std::string& source, const std::string& members, long long age = 0) {
    root_.Write("/run/vela-platform/" + source + ".json",
                R"({"written": )" + std::to_string(std::time(nullptr) - age) +
                    R"(, "period": 60, "boot_id": ")" + kBoot + "\", " + members + "}");
  }

  TemporaryRoot root_;
};

// A machine whose /sys is a folder without any device.
class NoSensorsTest : public HardwareTest {
 protected:
  NoSensorsTest() { SetSysRoot(root_.Path().string() + "/sys"); }
  ~NoSensorsTest() override { SetSysRoot("/sys"); }
};

TEST_F(NoSensorsTest, TheManagementControllerTellsSuppliesFansAndTemperature) {
  const auto supplies = [](const char* first, const char* second) {
    return std::string(R"("supplies": [{"name": "PS1", "state": ")") + first +
           R"("}, {"name": "PS2", "state": ")" + second + R"("}])";
  };
  const struct {
    std::string members;
    Heard heard;
  } cases[] = {
      {supplies("ok", "ok"), {0, 0, 0, 0, 0, 0, 1, -1}},
      {supplies("failed", "ok"), {0, 1, 0, 0, 0x100, 0, 1, -1}},
      {supplies("ok", "input_lost"), {0, 1, 0, 0, 0x200, 0, 1, -1}},
      {supplies("failed", "failed"), {0, 1, 0, 0, 0x300, 0, 1, -1}},
      {supplies("absent", "ok"), {0, 0, 0, 0, 0, 0, 0, -1}},
      {supplies("absent", "failed"), {0, 1, 0, 0, 0x200, 0, 0, -1}},
      {R"("fans": [{"name": "Fan 1", "state": "ok"}, {"name": "Fan 2", "state": "failed"}])",
       {1, 0, 0, 0, 0, 0, 0, -1}},
      {R"("fans": [{"name": "CPU 1 Fan", "state": "failed"}, {"name": "F", "state": "unknown"}])",
       {0, 0, 0, 1, 0, 0, 0, -1}},
      {R"("temperatures": [{"name": "In", "state": "ok"}, {"name": "Out", "state": "unknown"}])",
       {0, 0, 0, 0, 0, 0, 0, 0}},
      {R"("temperatures": [{"name": "In", "state": "critical"}, {"name": "Out", "state": "ok"}])",
       {0, 0, 0, 0, 0, 0, 0, 1}},
      {R"("supplies": 7, "fans": {"a": 1}, "temperatures": [1, null, {"state": 3}])",
       {0, 0, 0, 0, 0, 0, 0, -1}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.members);
    Collect("ipmi", c.members);
    EXPECT_EQ(Ask(), c.heard);
    EXPECT_EQ(Said().state, 1);
  }
}

TEST_F(NoSensorsTest, DataThatAreOldDoNotCountAndThoseInPartDo) {
  Collect("ipmi", R"("supplies": [{"name": "PS1", "state": "failed"}])", 200);
  EXPECT_EQ(Ask().power, 0);
  Collect("ipmi",
          R"("supplies": [{"name": "PS1", "state": "failed"}], "trouble": "SDR half read")");
  EXPECT_EQ(Ask().supplies, 0x100U);
  EXPECT_STREQ(Said().reason, "SDR half read");
}

TEST_F(NoSensorsTest, MainsAdaptersCountFromTwo) {
  const auto adapter = [this](const std::string& name, const std::string& online) {
    root_.Write("/sys/class/power_supply/" + name + "/type", "Mains\n");
    root_.Write("/sys/class/power_supply/" + name + "/online", online + "\n");
  };
  root_.Write("/sys/class/power_supply/BAT0/type", "Battery\n");
  adapter("ADP1", "0");
  EXPECT_EQ(Ask(), (Heard{0, 0, 0, 0, 0, 0, 0, -1})) << "a laptop's plug";
  adapter("ADP2", "1");
  EXPECT_EQ(Ask(), (Heard{0, 1, 0, 0, 0x100, 0, 1, -1}));
  adapter("ADP1", "1");
  EXPECT_EQ(Ask(), (Heard{0, 0, 0, 0, 0, 0, 1, -1}));
}

TEST_F(NoSensorsTest, AnExpectedFanThatNoChipHasIsSaid) {
  root_.Write("/etc/velainfo.conf", "fan.expect=\"nct6779:fan2\"\n");
  EXPECT_EQ(Ask().fan, 0);
  EXPECT_STREQ(Said().reason, "fan.expect names nct6779:fan2, which no sensor chip has");
}

// --- Only below umockdev-run with board.umockdev; the files are then the made-up ones.

class BoardTest : public HardwareTest {
 protected:
  void SetUp() override {
    if (std::string(getenv("UMOCKDEV_DIR") != nullptr ? getenv("UMOCKDEV_DIR") : "").empty())
      GTEST_SKIP() << "needs umockdev-run";
  }
  void Board(const std::string& attribute, const std::string& text) {
    std::ofstream("/sys/devices/platform/nct6775.656/hwmon/hwmon0/" + attribute) << text << '\n';
  }
  void Supply(const std::string& attribute, const std::string& text) {
    std::ofstream("/sys/devices/platform/cffps.2/hwmon/hwmon2/" + attribute) << text << '\n';
  }
};

TEST_F(BoardTest, EmptyHeadersOddLimitsAndHotDisksAreNoFault) {
  EXPECT_EQ(Ask(), (Heard{0, 0, 0, 0, 0, 0, 1, 0}));
  EXPECT_EQ(Said().state, 1);
  EXPECT_TRUE(TakeSystemLog().empty());
}

TEST_F(BoardTest, AFanThatTurnedAndStandsHasFailed) {
  Board("fan2_input", "0");
  EXPECT_EQ(Ask().processorFan, 0) << "never seen turning";
  const std::string stopped = std::to_string(std::time(nullptr) - 60);
  const std::string key = [] {
    SensorReadings readings;
    std::string reason;
    EXPECT_EQ(ReadSensors({}, readings, reason), SensorsState::Read);
    return readings.fans.at(1).key;
  }();
  Collect("fans", R"("fans": {")" + key + R"(": {"turned": true, "stopped": )" + stopped + "}}");
  EXPECT_EQ(Ask(), (Heard{0, 0, 0, 1, 0, 0, 1, 0}));
  Board("fan2_input", "1171");
  EXPECT_EQ(Ask(), (Heard{0, 0, 0, 0, 0, 0, 1, 0}));
}

TEST_F(BoardTest, AnExpectedFanMustTurn) {
  root_.Write("/etc/velainfo.conf", "fan.expect=nct6779:fan3");
  EXPECT_EQ(Ask().fan, 0);
  Board("fan3_input", "0");
  EXPECT_EQ(Ask(), (Heard{1, 0, 0, 0, 0, 0, 1, 0}));
  root_.Write("/etc/velainfo.conf", "fan.expect=nct6779:fan3=CPU");
  EXPECT_EQ(Ask(), (Heard{0, 0, 0, 1, 0, 0, 1, 0}));
  Board("fan3_input", "800");
}

TEST_F(BoardTest, ACriticalTemperatureIsTooHot) {
  Board("temp2_input", "95000");
  EXPECT_EQ(Ask().temperature, 1);
  Board("temp2_input", "61000");
  Board("temp2_crit_alarm", "1");
  EXPECT_EQ(Ask().temperature, 1);
  Board("temp2_crit_alarm", "0");
  EXPECT_EQ(Ask().temperature, 0);
}

TEST_F(BoardTest, ASupplyWithoutInputHasFailed) {
  Supply("in1_lcrit_alarm", "1");
  EXPECT_EQ(Ask(), (Heard{0, 1, 0, 0, 0x200, 0, 1, 0}));
  Supply("in1_lcrit_alarm", "0");
  Supply("fan1_fault", "1");
  EXPECT_EQ(Ask(), (Heard{1, 1, 0, 0, 0x200, 0, 1, 0}));
  Supply("fan1_fault", "0");
}

TEST_F(BoardTest, ManyThreadsAndAnotherLocaleAreServed) {
  const bool german = setlocale(LC_ALL, "de_DE.UTF-8") != nullptr || setlocale(LC_ALL, "C.UTF-8");
  const std::string before = setlocale(LC_ALL, nullptr);
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i)
    threads.emplace_back([] {
      for (int round = 0; round < 50; ++round) EXPECT_EQ(Ask(), (Heard{0, 0, 0, 0, 0, 0, 1, 0}));
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_TRUE(german);
  EXPECT_EQ(setlocale(LC_ALL, nullptr), before);
  setlocale(LC_ALL, "C");
}

}  // namespace

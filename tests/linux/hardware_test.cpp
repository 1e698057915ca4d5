// The chassis from its snapshots and, on boards that umockdev makes up, through
// libsensors as it is.
#include "platform/linux/contract/request.h"

#include <gtest/gtest.h>
#include <locale.h>

#include <atomic>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>
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

// What a request of its own hears: "supplies 2, redundant, hot".
std::string Ask() {
  VELAPlatformSourcesReset();
  VELA_SYS_STATUS record;
  memset(&record, 0x55, sizeof record);
  EXPECT_EQ(VELASysStatusGet(&record), 0);
  std::string heard;
  unsigned mask = 7;
  if (VELAIsComponentFail(&record, 1, &mask) == 1) heard += "fan, ";
  EXPECT_EQ(mask, 0U);
  if (VELAIsComponentFail(&record, 6, nullptr) == 1) heard += "processor fan, ";
  if (VELAIsComponentFail(&record, 4, &mask) == 1)
    heard += "supplies " + std::to_string(mask >> 8) + ", ";
  EXPECT_EQ(VELAIsComponentFail(&record, 5, &mask), 0);
  EXPECT_EQ(VELAIsComponentFail(&record, 2, &mask), -1);
  if (VELARedundantPowerSupport() == 1) heard += "redundant, ";
  int hot = 0;
  if (VELAHWSysTempWarning(&hot) != 0) return heard + "no temperature";
  return heard + (hot == 1 ? "hot" : "well");
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
  const std::pair<std::string, const char*> cases[] = {
      {supplies("ok", "ok"), "redundant, no temperature"},
      {supplies("failed", "ok"), "supplies 1, redundant, no temperature"},
      {supplies("ok", "input_lost"), "supplies 2, redundant, no temperature"},
      {supplies("failed", "failed"), "supplies 3, redundant, no temperature"},
      {supplies("absent", "ok"), "no temperature"},
      {supplies("absent", "failed"), "supplies 2, no temperature"},
      {R"("fans": [{"name": "Fan 1", "state": "failed"}, {"name": "Fan 2", "state": "ok"}])",
       "fan, no temperature"},
      {R"("fans": [{"name": "CPU 1 Fan", "state": "failed"}, {"name": "F", "state": "unknown"}])",
       "processor fan, no temperature"},
      {R"("temperatures": [{"name": "In", "state": "ok"}, {"name": "Out", "state": "unknown"}])",
       "well"},
      {R"("temperatures": [{"name": "In", "state": "critical"}, {"name": "Out", "state": "ok"}])",
       "hot"},
      {R"("temperatures": [{"name": "Out", "state": "unknown"}])", "no temperature"},
      {R"("supplies": 7, "fans": {"a": 1}, "temperatures": [1, null, {"state": 3}])",
       "no temperature"},
  };
  for (const auto& [members, heard] : cases) {
    Collect("ipmi", members);
    EXPECT_EQ(Ask(), heard) << members;
    EXPECT_EQ(Said().state, 1);
  }
  Collect("ipmi", R"("supplies": [{"name": "PS1", "state": "failed"}])", 200);
  EXPECT_EQ(Ask(), "no temperature") << "data that are old do not count";
  EXPECT_EQ(Said().state, 2);
}

TEST_F(NoSensorsTest, OnlyAsManySuppliesAreWatchedAsTheMaskHasBits) {
  for (const auto& [failed, heard] : {std::pair(24, "supplies 8388608, redundant, no temperature"),
                                      {25, "redundant, no temperature"}}) {
    std::string all = R"("supplies": [{"name": "1", "state": "ok"})";
    for (int bay = 2; bay <= 25; ++bay)
      all += R"(, {"name": "x", "state": ")" + std::string(bay == failed ? "failed" : "ok") + "\"}";
    Collect("ipmi", all + "]");
    EXPECT_EQ(Ask(), heard);
  }
}

TEST_F(NoSensorsTest, WithoutAControllerMainsAdaptersCountFromTwo) {
  const auto adapter = [this](const std::string& name, const std::string& online) {
    root_.Write("/sys/class/power_supply/" + name + "/type", "Mains\n");
    root_.Write("/sys/class/power_supply/" + name + "/online", online + "\n");
  };
  root_.Write("/sys/class/power_supply/BAT0/type", "Battery\n");
  EXPECT_EQ(Said().state, 0) << Said().reason;
  adapter("ADP1", "0");
  EXPECT_EQ(Ask(), "no temperature") << "a laptop's plug";
  adapter("ADP2", "1");
  EXPECT_EQ(Ask(), "supplies 1, redundant, no temperature");
  adapter("ADP1", "1");
  EXPECT_EQ(Ask(), "redundant, no temperature");
  EXPECT_EQ(Said().state, 1);
  root_.Write("/etc/velainfo.conf", "fan.expect=\"nct6779:fan2\"\n");
  EXPECT_EQ(Ask(), "redundant, no temperature");
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
  // Where umockdev keeps the second supply's chip in the list of chips.
  static std::filesystem::path ListedChip() {
    return std::filesystem::path(getenv("UMOCKDEV_DIR")) / "sys/class/hwmon/hwmon2";
  }
  static std::string FindKey(std::size_t fan) {
    SensorReadings readings;
    std::string reason;
    EXPECT_EQ(ReadSensors({}, readings, reason), SensorsState::Read) << reason;
    return readings.fans.at(fan).key;
  }
};

TEST_F(BoardTest, EmptyHeadersOddLimitsAndHotDisksAreNoFault) {
  EXPECT_EQ(Ask(), "redundant, well");
  EXPECT_EQ(Said().state, 1);
  EXPECT_TRUE(TakeSystemLog().empty());
}

TEST_F(BoardTest, AFanThatTurnedAndStandsHasFailed) {
  Board("fan2_input", "0");
  EXPECT_EQ(Ask(), "redundant, well") << "never seen turning";
  const std::string stopped = std::to_string(std::time(nullptr) - 60);
  const std::string known = R"("fans": {")" + FindKey(1) + R"(": {"turned": true, "stopped": )";
  Collect("fans", known + stopped + "}}");
  EXPECT_EQ(Ask(), "processor fan, redundant, well");
  // What the collector makes of it: the others turn, this one has stood since then.
  std::filesystem::create_directory_symlink(std::filesystem::path(getenv("UMOCKDEV_DIR")) / "sys",
                                            root_.Path() / "sys");
  FILE* collector =
      popen((VELA_COLLECTOR " --print fans --root " + root_.Path().string()).c_str(), "r");
  char text[4096] = {};
  EXPECT_GT(fread(text, 1, sizeof text - 1, collector), 0U);
  EXPECT_EQ(pclose(collector), 0);
  EXPECT_NE(std::string(text).find(stopped), std::string::npos) << text;
  EXPECT_NE(std::string(text).find(FindKey(2) + R"(":{"turned":true})"), std::string::npos) << text;
  Board("fan2_input", "1171");
  EXPECT_EQ(Ask(), "redundant, well");
}

TEST_F(BoardTest, AnExpectedFanMustTurn) {
  root_.Write("/etc/velainfo.conf", "fan.expect=nct6779:fan3");
  EXPECT_EQ(Ask(), "redundant, well");
  Board("fan3_input", "0");
  EXPECT_EQ(Ask(), "fan, redundant, well");
  root_.Write("/etc/velainfo.conf", "fan.expect=nct6779:fan3=CPU");
  EXPECT_EQ(Ask(), "processor fan, redundant, well");
  Board("fan3_input", "800");
}

TEST_F(BoardTest, OneCriticalTemperatureIsTooHotWhateverTheLastOneSays) {
  const std::pair<const char*, const char*> hot[] = {{"temp2_input", "95000"},
                                                     {"temp2_crit_alarm", "1"}};
  const char* usual[] = {"61000", "0"};
  for (int i = 0; i < 2; ++i) {
    Board(hot[i].first, hot[i].second);
    EXPECT_EQ(Ask(), "redundant, hot") << hot[i].first;
    Collect("ipmi", R"("temperatures": [{"name": "In", "state": "ok"}])");
    EXPECT_EQ(Ask(), "redundant, hot") << hot[i].first;
    Board(hot[i].first, usual[i]);
    EXPECT_EQ(Ask(), "redundant, well");
  }
}

TEST_F(BoardTest, ASupplyWithoutInputHasFailed) {
  Supply("in1_lcrit_alarm", "1");
  EXPECT_EQ(Ask(), "supplies 2, redundant, well");
  Supply("in1_lcrit_alarm", "0");
  Supply("fan1_fault", "1");
  EXPECT_EQ(Ask(), "fan, supplies 2, redundant, well");
  Supply("fan1_fault", "0");
}

TEST_F(BoardTest, AChipThatWentOrCameIsSeen) {
  const auto away = ListedChip().parent_path().parent_path() / "hwmon2-away";
  std::filesystem::rename(ListedChip(), away);
  EXPECT_EQ(Ask(), "well") << "one supply is not redundant";
  std::filesystem::rename(away, ListedChip());
  EXPECT_EQ(Ask(), "redundant, well");
}

// One chip is put in again and again, so that the library must be started again and again.
TEST_F(BoardTest, ManyThreadsAndAnotherLocaleAreServed) {
  const bool german = setlocale(LC_ALL, "de_DE.UTF-8") != nullptr || setlocale(LC_ALL, "C.UTF-8");
  const std::string before = setlocale(LC_ALL, nullptr);
  std::atomic<bool> done = false;
  std::thread plugging([&done] {
    const auto target = std::filesystem::read_symlink(ListedChip());
    const auto next = ListedChip().parent_path().parent_path() / "hwmon2-next";
    while (!done) {
      std::filesystem::create_symlink(target, next);
      std::filesystem::rename(next, ListedChip());
    }
  });
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i)
    threads.emplace_back([] {
      for (int round = 0; round < 50; ++round) EXPECT_EQ(Ask(), "redundant, well");
    });
  for (std::thread& thread : threads) thread.join();
  done = true;
  plugging.join();
  EXPECT_TRUE(german);
  EXPECT_EQ(setlocale(LC_ALL, nullptr), before);
  setlocale(LC_ALL, "C");
}

}  // namespace

// The chassis through libsensors as it is, on a board that umockdev makes up: only below
// umockdev-run with board.umockdev; the files of /sys are then the made-up ones.
#include <gtest/gtest.h>
#include <locale.h>

#include <atomic>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <thread>

#include "tests/linux/machine_snapshot.h"
#include "tests/linux/source_statuses.h"
#include "tests/linux/system_log.h"
#include "tests/linux/told_evidence.h"
#include "velac.h"

namespace {

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

class BoardTest : public testing::Test {
 protected:
  void SetUp() override {
    if (getenv("UMOCKDEV_DIR") == nullptr) GTEST_SKIP() << "needs umockdev-run";
    Ask();
    TakeSystemLog();
  }
  // What an attribute said before.
  static std::string Set(const std::string& attribute, const std::string& text) {
    std::string before;
    std::getline(std::ifstream("/sys/devices/platform/" + attribute), before);
    std::ofstream("/sys/devices/platform/" + attribute) << text << '\n';
    return before;
  }
  // Where umockdev keeps the second supply's chip in the list of chips.
  static std::filesystem::path ListedChip() {
    return std::filesystem::path(getenv("UMOCKDEV_DIR")) / "sys/class/hwmon/hwmon2";
  }

  MachineSnapshot root_;
};

TEST_F(BoardTest, EmptyHeadersOddLimitsAndHotDisksAreNoFault) {
  EXPECT_EQ(Ask(), "redundant, well");
  EXPECT_EQ(SourceReports()["hardware"].state, 3) << "nobody knows whether one of them turned";
  EXPECT_NE(SourceReports()["hardware"].reason.find(" stands, and"), std::string::npos);
  TakeSystemLog();
  root_.Write("fans", R"("fans":{})");
  EXPECT_EQ(Ask(), "redundant, well");
  EXPECT_EQ(SourceReports()["hardware"].state, 1);
  EXPECT_TRUE(TakeSystemLog().empty());
}

// The management controller finds its own temperature well.
TEST_F(BoardTest, OneAttributeDecidesWhateverTheOthersSay) {
  root_.Write("ipmi", R"("temperatures": [{"name": "In", "state": "ok"}])");
  const std::string board = "nct6775.656/hwmon/hwmon0/", supply = "cffps.2/hwmon/hwmon2/";
  const struct {
    std::string attribute, value, settings, heard, told;
  } cases[] = {
      {board + "temp2_input", "95000", "", "redundant, hot",
       "temperature_high temp2 95/95 [sensors]"},
      {board + "temp2_crit_alarm", "1", "", "redundant, hot",
       "temperature_critical temp2 61/95 [sensors]"},
      {board + "temp2_emergency_alarm", "1", "", "redundant, hot",
       "temperature_critical temp2 61/95 [sensors]"},
      {supply + "in1_lcrit_alarm", "1", "", "supplies 2, redundant, well",
       "supply_failed Power supply 2 0/0 [sensors]"},
      {supply + "in2_lcrit_alarm", "1", "", "redundant, well", ""},  // an output
      {supply + "temp1_crit_alarm", "1", "", "supplies 2, redundant, hot",
       "supply_failed Power supply 2 0/0 [sensors]; temperature_alarm temp1 (cffps1) 0/0 "
       "[sensors]"},
      {supply + "fan1_alarm", "1", "", "fan, redundant, well",
       "fan_failed fan1 (cffps1 2) 4000/0 [sensors]"},
      {supply + "fan1_min_alarm", "1", "", "fan, redundant, well",
       "fan_failed fan1 (cffps1 2) 4000/0 [sensors]"},
      {supply + "fan1_fault", "1", "", "fan, supplies 2, redundant, well",
       "fan_failed fan1 (cffps1 2) 4000/0 [sensors]; supply_failed Power supply 2 0/0 [sensors]"},
      {board + "fan2_input", "0", "", "redundant, well", ""},  // never seen turning
      {board + "fan3_input", "0", "fan.expect=nct6779:fan3", "fan, redundant, well",
       "fan_stopped fan3 0/0 [sensors]"},
      {board + "fan3_min", "900", "fan.expect=nct6779:fan3", "fan, redundant, well",
       "fan_slow fan3 800/900 [sensors]"},
      {board + "fan3_input", "0", "fan.expect=nct6779:fan3=CPU", "processor fan, redundant, well",
       "fan_stopped CPU 0/0 [sensors]"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.attribute);
    root_.TemporaryRoot::Write("/etc/velainfo.conf", c.settings);
    EXPECT_EQ(Ask(), "redundant, well");
    const std::string before = Set(c.attribute, c.value);
    EXPECT_EQ(Ask(), c.heard);
    EXPECT_EQ(ToldEvidence(), c.told);
    Set(c.attribute, before);
  }
}

TEST_F(BoardTest, AFanThatTurnedAndStandsHasFailed) {
  const std::string fan = "nct6775.656/hwmon/hwmon0/fan2_input", before = Set(fan, "0");
  const std::string known = R"("nct6779-virtual-0:fan2":{"stopped":)" +
                            std::to_string(std::time(nullptr) - 60) + R"(,"turned":true})";
  root_.Write("fans", R"("fans":{)" + known + "}");
  EXPECT_EQ(Ask(), "processor fan, redundant, well");
  EXPECT_TRUE(ToldEvidence().starts_with("fan_stopped CPU Fan 0/0 since "));
  // What the collector makes of it: the others turn, this one has stood since then.
  std::filesystem::create_directories(root_.Path() / "sys/class/hwmon/hwmon0");
  FILE* collector =
      popen((VELA_COLLECTOR " --print fans --root " + root_.Path().string()).c_str(), "r");
  char text[4096] = {};
  EXPECT_GT(fread(text, 1, sizeof text - 1, collector), 0U);
  EXPECT_EQ(pclose(collector), 0);
  EXPECT_EQ(text, R"({"fans":{"cffps1-virtual-0:fan1":{"turned":true},)" + known +
                      R"(,"nct6779-virtual-0:fan3":{"turned":true}}})" + "\n");
  Set(fan, before);
  EXPECT_EQ(Ask(), "redundant, well");
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
  ASSERT_TRUE(setlocale(LC_ALL, "de_DE.UTF-8") != nullptr || setlocale(LC_ALL, "C.UTF-8"));
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
  EXPECT_EQ(setlocale(LC_ALL, nullptr), before);
  setlocale(LC_ALL, "C");
}

}  // namespace

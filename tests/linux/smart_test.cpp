// What the collector makes of smartd's own files: machines with a file "smart" (machine_tree.h).
// With VELA_WRITE_EXPECTED=1 in the environment it is written down anew.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>

#include "common/json_writer.h"
#include "platform/linux/collector/parts.h"
#include "tests/linux/machine_tree.h"

namespace {

class SmartdFiles : public testing::TestWithParam<std::string> {};

// Files with "OLD" in their names are.
TEST_P(SmartdFiles, AreToldAsExpected) {
  const MachineTree machine(GetParam());
  std::error_code none;
  for (const auto& file :
       std::filesystem::directory_iterator(machine.Path() / "var/lib/smartmontools", none))
    if (file.path().string().find("OLD") != std::string::npos)
      last_write_time(file, std::filesystem::file_time_type::clock::now() - std::chrono::hours(48));
  Json::Value collected = linux_platform::CollectSmart();
  for (Json::Value& drive : collected.isNull() ? collected : collected["drives"])
    drive["read"] = std::time(nullptr) - drive["read"].asInt64() < 3600 ? "lately" : "long ago";
  const std::string text = common::WritePretty(collected);
  if (getenv("VELA_WRITE_EXPECTED") != nullptr)
    std::ofstream(FIXTURES "/machines/" + GetParam() + "/smart") << text;
  EXPECT_EQ(text, MachineTree::Read(GetParam(), "smart"));
}

TEST(SmartdFiles, OfALongLogTheEndCounts) {
  const MachineTree machine("files-of-smartd");
  const char* const log = "/var/lib/smartmontools/attrlog.WDC_WD40EFRX_68WT0N0-WD_WCC4E123.ata.csv";
  const auto collect = [] { return linux_platform::CollectSmart()["drives"]; };
  const Json::Value before = collect();
  const std::string path = machine.Path().string() + log;
  const auto written = std::filesystem::last_write_time(path);  // it is told, too
  std::ostringstream text;
  text << std::ifstream(path).rdbuf();
  machine.Write(log, std::string(300 << 10, '\n') + text.str());
  std::filesystem::last_write_time(path, written);
  EXPECT_EQ(collect(), before);
}

INSTANTIATE_TEST_SUITE_P(All, SmartdFiles, testing::ValuesIn(MachineTree::ListThoseWith("smart")),
                         MachineTree::GetTestName);

TEST(Smartd, StillWatchesWhenTheClockWasSetForwardAfterItsFirstRound) {
  const MachineTree machine("files-of-a-smartd-just-started");
  machine.AddLine("/proc/stat = btime {now-1000}");
  const auto isWatched = [&machine](long long unitStarted) {
    const auto link = machine.Path() / "run/systemd/units/invocation:smartmontools.service";
    machine.AddLine("/run/systemd/units/invocation:smartmontools.service -> /id");
    const auto age = [](const std::filesystem::path& path, long long seconds) {
      const timespec then = {std::time(nullptr) - seconds, 0}, times[] = {then, then};
      EXPECT_EQ(utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW), 0);
    };
    age(machine.Path() / "var/lib/smartmontools/smartd.M-OLD1.ata.state", 3000);
    age(link, unitStarted);
    return linux_platform::CollectSmart()["drives"][0]["device"] == "sda" &&
           linux_platform::CollectSmart()["drives"][0]["current"].asBool();
  };
  EXPECT_TRUE(isWatched(3001));
  EXPECT_FALSE(isWatched(2999));
}

}  // namespace

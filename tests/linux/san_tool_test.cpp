// The SAN tool as it is run, over a target of small files.
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <thread>

#include "common/json_reader.h"
#include "platform/linux/san/target.h"
#include "tests/linux/machine_tree.h"

namespace {

using namespace linux_platform;
namespace fs = std::filesystem;

TEST(Target, TheBackingFileIsFoundInTheObjectsOwnWords) {
  EXPECT_EQ(
      ParseBackingPath("Status: ACTIVATED  Max Queue Depth: 0  SectorSize: 512\n        TCM FILEIO "
                       "ID: 0        File: /volume1/a  b.img  Size: 67108864  Mode: Buffered\n"),
      "/volume1/a  b.img");
  EXPECT_EQ(
      ParseBackingPath("Status: ACTIVATED\n        iBlock device: sdb  UDEV PATH: /dev/sdb\n"), "");
  EXPECT_EQ(ParseBackingPath(" Size: 1 File: "), "");
}

TEST(Target, ASavedConfigurationOfAnyShapeIsReadOrRefused) {
  std::vector<Lun> luns;
  for (const char* text : {"", "[]", "{", "7"}) EXPECT_FALSE(ParseSavedLuns(text, luns)) << text;
  for (
      const char* text :
      {"{}", R"({"targets": 1, "storage_objects": {"a": 1}})",
       R"({"targets": [{"fabric": "iscsi", "tpgs": [{"enable": 1, "luns": [{"storage_object": "/b/f/x"}]}]}]})",
       R"({"targets": [7, {"fabric": "iscsi", "tpgs": [null, {"enable": true, "luns": [3, {}]}]}]})",
       R"({"targets": [{"fabric": "loopback", "tpgs": [{"enable": true, "luns": [{"storage_object": "/b/f/x"}]}]}]})"}) {
    SCOPED_TRACE(text);
    EXPECT_TRUE(ParseSavedLuns(text, luns));
    EXPECT_TRUE(luns.empty());
  }
}

class SanToolTest : public testing::Test {
 protected:
  SanToolTest() {
    // Anonymous devices are not held against the folders that stand for the mounts.
    root.Write("/proc/self/mountinfo",
               "20 1 0:20 / / rw - ext4 /dev/sda1 rw\n"
               "21 20 0:21 / /volume1 rw - ext4 /dev/sdb1 rw\n"
               "22 20 0:22 / /volume2 rw - btrfs /dev/none/sdc1 ro\n"
               "23 20 0:23 / /net rw - nfs4 server:/x rw\n");
    for (const char* folder : {"volume1", "volume2", "net"})
      fs::create_directories(root.Path() / folder);
    root.Disk("sdc", "pci0/ata9/host9/target9:0:0/9:0:0:0", 8, 32, 1);
    Attribute("iscsi/iqn.a/tpgt_1/enable", "1\n");
  }

  fs::path Configuration(const std::string& path) const {
    return root.Path().string() + "/sys/kernel/config/target/" + path;
  }
  void Attribute(const std::string& path, const std::string& text) const {
    root.Write("/sys/kernel/config/target/" + path, text);
  }

  // A file LUN of the first target, with all that the kernel and its tools leave there.
  void MakeLun(const std::string& name, const std::string& file, const char* group = "tpgt_1") {
    const std::string object = "core/fileio_0/" + name;
    Attribute(object + "/enable", "1\n");
    Attribute(object + "/udev_path", file + "\n");
    Attribute(object + "/statistics/scsi_lu/status", "available\n");
    const fs::path lun =
        Configuration("iscsi/iqn.a/") / group / "lun" / ("lun_" + std::to_string(next_++));
    fs::create_directories(lun);
    Attribute(fs::relative(lun, Configuration("")).string() + "/alua_tg_pt_gp", "x\n");
    fs::create_directory_symlink("../../../../../../target/" + object, lun / "a1b2c3");
  }
  void MakeFile(const std::string& file, std::uintmax_t size) {
    fs::resize_file(root.Write(file, "x"), size);
  }

  Json::Value Ask(int expected = 0) {
    const std::string command =
        VELA_SAN_TOOL " --get_service_status --root " + root.Path().string() + " 2>/dev/null";
    FILE* stream = popen(command.c_str(), "r");
    std::string text;
    char part[4096];
    while (const std::size_t got = fread(part, 1, sizeof part, stream)) text.append(part, got);
    EXPECT_EQ(WEXITSTATUS(pclose(stream)), expected);
    Json::Value document;
    EXPECT_TRUE(common::ParseJson(text, document));
    return document;
  }

  // "name status location;" of each LUN.
  std::string Told(int expected = 0) {
    const Json::Value document = Ask(expected);
    std::string text;
    for (const Json::Value& lun : document["luns"])
      text += lun["name"].asString() + " " + lun["status"].asString() + " " +
              lun["location"].asString() + ";";
    return text;
  }

  MachineTree root;

 private:
  int next_ = 0;
};

TEST_F(SanToolTest, AMachineWithoutATargetHasNothing) {
  fs::remove_all(root.Path() / "sys");
  EXPECT_EQ(Ask().toStyledString(),
            "{\n\t\"low_capacity_write_on\" : false,\n\t\"luns\" : [],\n\t\"volumes\" : []\n}\n");
}

TEST_F(SanToolTest, LunsAreOnTheVolumesThatAreListedWithTheirCapacity) {
  MakeFile("/volume1/lun1.img", 4096);
  MakeLun("lun1", "/volume1/lun1.img");
  MakeLun("dormant", "/volume1/lun1.img", "tpgt_2");  // of a group that is not enabled
  MakeLun("behind", "/net/x.img");
  MakeLun("deep", "/volume1/a/b/c.img");
  MakeLun("top", "/top.img");
  MakeLun("relative", "lun.img");
  root.Write("/etc/velainfo.conf", "san.low_capacity_write=\"yes\"\n");
  const Json::Value document = Ask();
  EXPECT_EQ(document["low_capacity_write_on"], true);
  EXPECT_EQ(Told(),
            "behind normal /net;deep Unhealthy /volume1;lun1 normal /volume1;"
            "relative Unhealthy ;top Unhealthy /;");
  ASSERT_EQ(document["volumes"].size(), 3U);
  EXPECT_EQ(document["volumes"][1]["path"], "/net");
  EXPECT_EQ(document["volumes"][1]["total_size"], 0) << "it may hang and is not asked";
}

// On a file system of a hundred pages.
TEST_F(SanToolTest, AThinLunIsShortOfSpaceWhenATenthOfItsVolumeIsFree) {
  const std::uintmax_t page = static_cast<std::uintmax_t>(sysconf(_SC_PAGESIZE));
  const std::string folder = root.Path() / "volume1";
  const auto fill = [&](const char* file, std::uintmax_t pages) {
    std::ofstream(folder + file, std::ios::app) << std::string(page * pages, 'x');
  };
  bool possible = false;
  std::thread([&] {
    const std::string size = "size=" + std::to_string(100 * page);
    possible = unshare(CLONE_NEWNS) == 0 &&
               mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
               mount("none", folder.c_str(), "tmpfs", 0, size.c_str()) == 0;
    if (!possible) return;
    fill("/thick.img", 80);
    fill("/thin.img", 9);
    fs::resize_file(folder + "/thin.img", page * 10);
    MakeLun("thick", "/volume1/thick.img");
    MakeLun("thin", "/volume1/thin.img");
    MakeLun("zoff", "/volume1/thin.img");
    Attribute("core/fileio_0/zoff/enable", "0\n");
    EXPECT_EQ(Told(), "thick normal /volume1;thin normal /volume1;zoff unavailabling /volume1;");
    fill("/other", 1);
    EXPECT_EQ(Told(), "thick normal /volume1;thin low_space /volume1;zoff unavailabling /volume1;");
    const Json::Value volume = Ask()["volumes"][0];
    EXPECT_EQ(volume["free_size"].asUInt64(), 10 * page);
    EXPECT_EQ(volume["total_size"].asUInt64(), 100 * page);
    fill("/other", 10);
    EXPECT_EQ(Ask()["volumes"][0]["free_size"].asUInt64(), 0U);
    EXPECT_EQ(Told(), "thick normal /volume1;thin low_space /volume1;zoff unavailabling /volume1;");
  }).join();
  if (!possible) GTEST_SKIP() << "needs root";
}

TEST_F(SanToolTest, ALunIsUnhealthyWhenWhatHoldsItHasCrashed) {
  root.Load("lun-hosts");
  std::string expected;
  for (const char* volume :
       {"1-broken Unhealthy", "2-degraded normal", "3-gone Unhealthy", "4-error Unhealthy",
        "5-earlier normal", "6-btrfs normal", "7-pool normal", "8-btrfs Unhealthy"}) {
    const std::string text = volume, name = text.substr(0, text.find(' '));
    MakeFile("/" + name + "/lun.img", 1);
    MakeLun(name, "/" + name + "/lun.img");
    expected += text + " /" + name + ";";
  }
  EXPECT_EQ(Told(), expected);
}

TEST_F(SanToolTest, ALunWithoutStorageIsUnhealthyAndOneThatIsOffUnavailable) {
  MakeFile("/volume1/empty.img", 0);
  MakeFile("/volume1/off.img", 4096);
  MakeFile("/volume1/hidden.img", 4096);
  MakeFile("/volume2/readonly.img", 4096);
  MakeLun("1-gone", "/volume1/gone.img");
  MakeLun("2-empty", "/volume1/empty.img");
  MakeLun("3-off", "/volume1/off.img");
  Attribute("core/fileio_0/3-off/enable", "0\n");
  MakeLun("4-hidden", "/volume1/hidden.img");
  Attribute("core/fileio_0/4-hidden/statistics/scsi_lu/status", "notavailable\n");
  MakeLun("5-forced", "/volume2/readonly.img");
  MakeLun("6-disk", "/dev/disk/by-id/none");
  EXPECT_EQ(Told(),
            "1-gone Unhealthy /volume1;2-empty Unhealthy /volume1;3-off unavailabling /volume1;"
            "4-hidden unavailabling /volume1;5-forced Unhealthy /volume2;6-disk Unhealthy ;");
}

TEST_F(SanToolTest, WhatWasSavedButIsMissingIsUnhealthyWhileTheTargetServes) {
  MakeFile("/volume1/lun1.img", 4096);
  MakeLun("lun1", "/volume1/lun1.img");
  Attribute("core/fileio_0/kept/enable", "1\n");  // configured, and taken off the target since
  root.Write("/etc/rtslib-fb-target/saveconfig.json", R"({
    "storage_objects": [{"plugin": "fileio", "name": "lost", "dev": "/volume1/lost.img"},
                        {"plugin": "fileio", "name": "lun1", "dev": "/volume1/lun1.img"}],
    "targets": [{"fabric": "iscsi", "wwn": "iqn.a", "tpgs": [
      {"enable": true, "luns": [{"storage_object": "/backstores/fileio/lost"},
                                {"storage_object": "/backstores/fileio/lun1"},
                                {"storage_object": "/backstores/fileio/kept"}]},
      {"enable": false, "luns": [{"storage_object": "/backstores/fileio/off"}]}]}]})");
  EXPECT_EQ(Told(), "lun1 normal /volume1;lost Unhealthy /volume1;");

  fs::remove_all(Configuration(""));
  EXPECT_EQ(Told(), "") << "a target that was stopped";
  fs::create_directories(root.Path() / "run/systemd/units");
  fs::create_symlink("0123456789abcdef",
                     root.Path() / "run/systemd/units/invocation:rtslib-fb-targetctl.service");
  EXPECT_EQ(Told(), "kept Unhealthy ;lost Unhealthy /volume1;lun1 Unhealthy /volume1;");
}

TEST_F(SanToolTest, ASavedConfigurationThatIsNoneCostsNothingElse) {
  MakeFile("/volume1/lun1.img", 4096);
  MakeLun("lun1", "/volume1/lun1.img");
  root.Write("/etc/rtslib-fb-target/saveconfig.json", "{\"targets\": [");
  EXPECT_EQ(Told(1), "lun1 normal /volume1;");
}

TEST_F(SanToolTest, OtherArgumentsGetTheRightOnes) {
  for (const char* arguments : {"", "--get_service_status x", "--status", "--root /"}) {
    FILE* stream = popen((std::string(VELA_SAN_TOOL " ") + arguments + " 2>&1").c_str(), "r");
    char text[256] = {};
    EXPECT_GT(fread(text, 1, sizeof text - 1, stream), 0U);
    EXPECT_NE(std::string(text).find("Usage: velaiscsiep"), std::string::npos) << arguments;
    while (fread(text, 1, sizeof text, stream) > 0) {
    }
    EXPECT_EQ(WEXITSTATUS(pclose(stream)), 64) << arguments;
  }
}

}  // namespace

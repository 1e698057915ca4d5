// The SAN tool as it is run, over machines as data (machine_tree.h).
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>

#include <sstream>
#include <thread>

#include "common/json_reader.h"
#include "tests/linux/machine_tree.h"

namespace {

namespace fs = std::filesystem;

// What the tool prints; its exit status in `status`.
std::string RunTool(const std::string& arguments, int& status) {
  FILE* stream = popen((VELA_SAN_TOOL " " + arguments).c_str(), "r");
  std::string text;
  char part[4096];
  while (const std::size_t got = fread(part, 1, sizeof part, stream)) text.append(part, got);
  status = WEXITSTATUS(pclose(stream));
  return text;
}

Json::Value GetStatus(const MachineTree& machine, int& status) {
  const std::string text =
      RunTool("--get_service_status --root " + machine.Path().string() + " 2>/dev/null", status);
  Json::Value document;
  EXPECT_TRUE(common::ParseJson(text, document)) << text;
  return document;
}

// The lines of a machine's "san": LUNs, volumes, and how the tool ended.
std::string Told(const MachineTree& machine) {
  int status = 0;
  const Json::Value document = GetStatus(machine, status);
  std::ostringstream out;
  EXPECT_TRUE(document["low_capacity_write_on"].isBool());
  if (document["low_capacity_write_on"].asBool()) out << "low capacity write on\n";
  EXPECT_TRUE(document["luns"].isArray() && document["volumes"].isArray());
  for (const Json::Value& lun : document["luns"])
    out << lun["name"].asString() << " " << lun["status"].asString() << " "
        << lun["location"].asString() << "\n";
  for (const Json::Value& volume : document["volumes"])
    out << "volume " << volume["path"].asString()
        << (volume["total_size"].asUInt64() > 0 ? ": has a capacity\n" : ": no capacity\n");
  if (status != 0) out << "exit status " << status << "\n";
  return out.str();
}

class SanMachine : public testing::TestWithParam<std::string> {};

TEST_P(SanMachine, IsToldAsExpected) {
  EXPECT_EQ(Told(MachineTree(GetParam())), MachineTree::Read(GetParam(), "san"));
}

INSTANTIATE_TEST_SUITE_P(All, SanMachine, testing::ValuesIn(MachineTree::ListThoseWith("san")),
                         MachineTree::GetTestName);

// Fills a file system of a hundred pages. False: not allowed here.
bool FillVolume(const MachineTree& machine) {
  const std::uintmax_t page = static_cast<std::uintmax_t>(sysconf(_SC_PAGESIZE));
  const std::string folder = machine.Path() / "volume1";
  const std::string size = "size=" + std::to_string(100 * page);
  if (unshare(CLONE_NEWNS) != 0 || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
      mount("none", folder.c_str(), "tmpfs", 0, size.c_str()) != 0)
    return false;
  const auto fill = [&](const char* file, std::uintmax_t pages) {
    std::ofstream(folder + file, std::ios::app) << std::string(page * pages, 'x');
  };
  const auto told = [&](const std::string& thin, std::uintmax_t free) {
    int status = 0;
    const Json::Value volume = GetStatus(machine, status)["volumes"][0];
    EXPECT_EQ(volume["free_size"].asUInt64(), free * page);
    EXPECT_EQ(volume["total_size"].asUInt64(), 100 * page);
    EXPECT_EQ(Told(machine),
              "thick normal /volume1\nthin " + thin +
                  " /volume1\nzoff unavailabling /volume1\nvolume /volume1: has a capacity\n");
  };
  fill("/thick.img", 80);
  fill("/thin.img", 9);
  fs::resize_file(folder + "/thin.img", page * 10);
  told("normal", 11);
  fill("/other", 1);
  told("low_space", 10);
  fill("/other", 10);
  told("low_space", 0);
  return true;
}

TEST(SanTool, AThinLunIsShortOfSpaceWhenATenthOfItsVolumeIsFree) {
  const MachineTree machine("san-on-a-volume-that-fills");
  bool possible = false;
  std::thread([&] { possible = FillVolume(machine); }).join();
  if (!possible) GTEST_SKIP() << "needs root";
}

TEST(SanTool, OtherArgumentsGetTheRightOnes) {
  for (const std::string arguments : {"", "--get_service_status x", "--status", "--root /"}) {
    int status = 0;
    EXPECT_NE(RunTool(arguments + " 2>&1", status).find("Usage: velaiscsiep"), std::string::npos);
    EXPECT_EQ(status, 64) << arguments;
  }
}

}  // namespace

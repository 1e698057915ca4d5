// What the collectors ask and log, and what of theirs no answer shows.
#include <pthread.h>

#include <cerrno>
#include <new>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "module/base/log.h"
#include "tests/support/simulated_test.h"

namespace VELA::SystemHealth {
namespace {

class Collectors : public SimulatedTest {};

TEST_F(Collectors, AskThePlatformInTheirFixedOrder) {
  std::vector<std::string> calls, expected;
  Simulated().ledger.onCall = [&calls](const char* name) { calls.emplace_back(name); };
  Simulated().sanOutput = "{}";
  Simulated().volumes.resize(1);
  Simulated().usb.resize(1);
  Simulated().units.resize(1);
  Simulated().httpDefaultConf = 1;
  { const SystemInfoHandler info; }
  std::istringstream order(
      "VELAMountVolAllEnum VELAMountVolAllEnum Volume::ToUIUsbSataVolumeStr VELAUsbIsCardreader "
      "Space::Space Space::GetAll Volume::GetVolumeFSInfo VELAVolumeCapWarnPctGet "
      "StorageUtil::ToUISpaceID Volume::ToJsonSpaceStatus VLIBCMaxDiskGet Disk::DumpDisks "
      "Space::GetOverviewStatus VELAUPSInfoGet VELASysStatusGet VELAIsComponentFail "
      "VELAIsComponentFail VELAIsComponentFail VELARedundantPowerSupport VELAIsComponentFail "
      "Volume::IsSystemVolCrashed VLIBCFileGetKeyValue VELAHWSysTempWarning "
      "VELAServiceIsHttpDefaultConf NginxConfManager::run VELASysStatusGet VELAIsComponentFail "
      "VELAEBoxInfoEnum VELA_EBOX_INFO::name VELA_EBOX_INFO::power VELA_EBOX_INFO::name "
      "VLIBCFileExist VLIBCPopen");
  for (std::string call; order >> call;) expected.push_back(call);
  EXPECT_EQ(calls, expected);
}

// The volumes that are listed when reading the first of two does `harm`.
std::string VolumesAfter(simulator::Machine& machine, void (*harm)()) {
  machine.volumes = {{"/volume1", "volume_1"}, {"/volume2", "volume_2"}};
  machine.ledger.onCall = [harm, first = true](std::string_view name) mutable {
    if (name == "Volume::ToJsonSpaceStatus" && std::exchange(first, false)) harm();
  };
  RecordedLog().clear();
  simulator::Enter(&machine);
  StorageInfo storage;
  storage.Init();
  std::string listed;
  for (const VolumeUsageInfo& volume : storage.GetVolumes()) listed += volume.volumeId;
  return listed;
}

TEST_F(Collectors, LeaveOutAVolumeWhateverItsReadingThrows) {
  const auto expectReason = [this](const std::string& reason, void (*harm)()) {
    EXPECT_EQ(VolumesAfter(Simulated(), harm), "2") << reason;
    const std::string line = "7 SystemInfo/storage_info:143 Failed to parse volume info, reason: [";
    EXPECT_EQ(Log(), std::vector{line + reason + "]"});
  };
  struct Mute : std::exception {
    const char* what() const noexcept override { return nullptr; }
  };
  expectReason("its words", [] { throw std::runtime_error("its words"); });
  expectReason("", [] { throw Mute(); });
  expectReason("an exception of an unknown type", [] { throw 7; });
}

TEST_F(Collectors, HoldUpNeitherExhaustedMemoryNorAThreadThatEnds) {
  EXPECT_THROW(VolumesAfter(Simulated(), [] { throw std::bad_alloc(); }), std::bad_alloc);
  std::string listed = "none";
  std::thread([&] { listed = VolumesAfter(Simulated(), [] { pthread_exit(nullptr); }); }).join();
  EXPECT_EQ(listed, "none");
}

TEST_F(Collectors, ReadAllOfTheSanToolsOutputOrNoneThatIsTooLargeAndSaySo) {
  std::string& output = Simulated().sanOutput.emplace(R"({"luns": [{}], "volumes": []})");
  output.resize(16 << 20, ' ');
  for (const std::size_t more : {0U, 1U}) {
    output.append(more, ' ');
    SanStatusInfo san;
    errno = ENOMEM;  // of somebody before
    san.Init();
    EXPECT_EQ(san.GetLunsStatus().size(), 1 - more);
    ASSERT_EQ(Log().size(), 3 * more);
  }
  EXPECT_NE(Log()[0].find("it is more than 16 MiB"), std::string::npos) << Log()[0];
}

TEST_F(Collectors, ALogLineIsWholeWhateverItsLength) {
  for (std::size_t length = 490; length < 520; ++length) {
    RecordedLog().clear();
    const std::string text(length, 'x');
    LogError({"source", 7}, "%s!", text.c_str());
    EXPECT_EQ(Log(), std::vector{"3 source:7 " + text + "!"});
  }
}

TEST_F(Collectors, ConfigurationKeepsItsTwoSourcesApart) {
  Simulated().settings = {{"maxdisks", "4"}, {"hex", "0x10"}, {"low", "-3"}};
  Simulated().defaults = {{"maxdisks", "8"}};
  const VelaConfInfo conf;
  EXPECT_EQ(conf.Info("maxdisks", "1") + conf.Def("maxdisks", "1") + conf.Info("other", "1"),
            "481");
  EXPECT_TRUE(conf.InfoCheckValue("maxdisks", "4", false));
  EXPECT_FALSE(conf.InfoCheckValue("maxdisks", "8", false));
  EXPECT_TRUE(conf.DefCheckValue("maxdisks", "8", false));
  EXPECT_FALSE(conf.DefCheckValue("other", "", false));
  EXPECT_EQ(conf.InfoDouble("hex", 0.05) + conf.InfoDouble("low", 0.05), 13);
  Simulated().settingsNull = true;
  EXPECT_EQ(conf.Info("maxdisks", "1") + conf.Def("maxdisks", "1"), "");
}

TEST_F(Collectors, ExternalVolumesAreListedByKind) {
  Simulated().usb = {{.name = "sdshare1", .total = 10, .free = 1},
                     {.name = "usbshare1", .total = 20, .free = 2},
                     {.name = "data", .total = 30, .free = 3, .cardReader = true}};
  Simulated().esata = {{.name = "esata", .total = 40, .free = 4}};
  const SystemInfoHandler info;
  std::string listed;
  for (const Json::Value& each : info.GetExternalVolumeInfo().ToJson())
    for (const char* member : {"volume", "total_size", "free_size"})
      listed += each[member].asString() + " ";
  EXPECT_EQ(listed, "usbshare1 20 2 sdshare1 10 1 data 30 3 esata 40 4 ");
  EXPECT_EQ(ExternalVolumeInfo().ToJson(), Json::Value(Json::arrayValue));
}

}  // namespace
}  // namespace VELA::SystemHealth

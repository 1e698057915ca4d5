// What each collector asks, what it makes of the answer, and the line it logs on failure.
#include <cerrno>

#include "SystemChecker/checkers.h"
#include "module/base/log.h"
#include "tests/support/simulated_test.h"

namespace VELA::SystemHealth {
namespace {

using Lines = std::vector<std::string>;

class Collectors : public SimulatedTest {};

TEST_F(Collectors, AskThePlatformInTheirFixedOrder) {
  std::vector<std::string> calls;
  Simulated().ledger.calls = &calls;
  Simulated().sanOutput = "{}";
  Simulated().volumes.resize(1);
  Simulated().usb.resize(1);
  Simulated().units.resize(1);
  Simulated().httpDefaultConf = 1;
  { const SystemInfoHandler info; }
  EXPECT_EQ(calls, (std::vector<std::string>{"VELAMountVolAllEnum",
                                             "VELAMountVolAllEnum",
                                             "Volume::ToUIUsbSataVolumeStr",
                                             "VELAUsbIsCardreader",
                                             "Space::Space",
                                             "Space::GetAll",
                                             "Volume::GetVolumeFSInfo",
                                             "VELAVolumeCapWarnPctGet",
                                             "StorageUtil::ToUISpaceID",
                                             "Volume::ToJsonSpaceStatus",
                                             "VLIBCMaxDiskGet",
                                             "Disk::DumpDisks",
                                             "Space::GetOverviewStatus",
                                             "VELAUPSInfoGet",
                                             "VELASysStatusGet",
                                             "VELAIsComponentFail",
                                             "VELAIsComponentFail",
                                             "VELAIsComponentFail",
                                             "VELARedundantPowerSupport",
                                             "VELAIsComponentFail",
                                             "Volume::IsSystemVolCrashed",
                                             "VLIBCFileGetKeyValue",
                                             "VELAHWSysTempWarning",
                                             "VELAServiceIsHttpDefaultConf",
                                             "NginxConfManager::run",
                                             "VELASysStatusGet",
                                             "VELAIsComponentFail",
                                             "VELAEBoxInfoEnum",
                                             "VELA_EBOX_INFO::name",
                                             "VELA_EBOX_INFO::power",
                                             "VELA_EBOX_INFO::name",
                                             "VLIBCFileExist",
                                             "VLIBCPopen"}));
}

// The collector tells a failed getline from the end by errno, which others have set before.
TEST_F(Collectors, AnEarlierErrorIsNotExhaustedMemory) {
  Simulated().sanOutput = "{}";
  SanStatusInfo san;
  errno = ENOMEM;
  EXPECT_NO_THROW(san.Init());
}

TEST_F(Collectors, EachKindOfExternalVolumeHasAMarkOfItsOwn) {
  const char* keys[] = {"usb_partition_warning_percent", "sdcard_partition_warning_percent",
                        "esata_partition_warning_percent"};
  Simulated().usb = {{.name = "usbshare1", .total = 100, .free = 30},
                     {.name = "sdshare1", .total = 100, .free = 30}};
  Simulated().esata = {{.name = "satashare1", .total = 100, .free = 30}};
  const char* found[] = {"USB {0} 1{1} {2}", "{0} 1{1} {2}", "eSATA {0} 1{1} {2}"};
  for (int kind = 0; kind < 3; ++kind) {
    Simulated().settings = {{keys[kind], "0.4"}};
    const auto rule = ExternalVolumeChecker(SystemInfoHandler());
    ASSERT_TRUE(rule) << keys[kind];
    EXPECT_EQ(rule->description.format, found[kind]);
  }
}

TEST_F(Collectors, ALogLineIsWholeWhateverItsLength) {
  for (std::size_t length = 490; length < 520; ++length) {
    RecordedLog().clear();
    const std::string text(length, 'x');
    LogError({"source", 7}, "%s!", text.c_str());
    EXPECT_EQ(Log(), Lines{"3 source:7 " + text + "!"});
  }
}

TEST_F(Collectors, InfoDoubleReadsTheLeadingNumberOrFallsBack) {
  const struct {
    const char* value;
    double number;
    bool logged;
  } cases[] = {{"0.2", 0.2, false},   {"  0.1abc", 0.1, false}, {"-3", -3, false},
               {"0x10", 16, false},   {"", 0.05, false},        {"abc", 0.05, true},
               {"1e999", 0.05, true}, {"1e-999", 0.05, true},   {"%s%n", 0.05, true},
               {"0,2", 0, false},     {".", 0.05, true}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.value);
    Reset();
    Simulated().settings["k"] = c.value;
    EXPECT_EQ(VelaConfInfo().InfoDouble("k", 0.05), c.number);
    const std::string line =
        std::string("3 SystemInfo/vela_conf_info:35 Failed to convert string [") + c.value +
        "] to double, use default.";
    EXPECT_EQ(Log(), c.logged ? Lines{line} : Lines{});
  }
  EXPECT_EQ(VelaConfInfo().InfoDouble("absent", 0.05), 0.05);
}

TEST_F(Collectors, ConfigurationKeepsItsTwoSourcesApart) {
  Simulated().settings = {{"maxdisks", "4"}};
  Simulated().defaults = {{"maxdisks", "8"}};
  const VelaConfInfo conf;
  EXPECT_EQ(conf.Info("maxdisks", "1"), "4");
  EXPECT_EQ(conf.Def("maxdisks", "1"), "8");
  EXPECT_EQ(conf.Info("other", "1"), "1");
  EXPECT_TRUE(conf.InfoCheckValue("maxdisks", "4", false));
  EXPECT_FALSE(conf.InfoCheckValue("maxdisks", "8", false));
  EXPECT_TRUE(conf.DefCheckValue("maxdisks", "8", false));
  EXPECT_FALSE(conf.DefCheckValue("other", "", false));
}

TEST_F(Collectors, OnlyTheLowestFailedSupplyIsMarked) {
  const struct {
    unsigned detail;
    std::array<bool, 2> ok;
  } cases[] = {{0x100, {false, true}}, {0x200, {true, false}}, {0x300, {false, true}},
               {0x400, {true, true}},  {0x600, {true, false}}, {0x0FF, {true, true}}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.detail);
    Simulated().powerFailed = true;
    Simulated().powerDetail = c.detail;
    const SystemInfoHandler info;
    EXPECT_TRUE(info.GetSystemStatusInfo().powerFail);
    EXPECT_EQ(info.GetSystemStatusInfo().powerSupplyOk, c.ok);
  }
}

TEST_F(Collectors, TemperatureIsAskedOnlyOfModelsThatHaveTheWarning) {
  const struct {
    const char* supported;
    int result, state;
    bool warning;
  } cases[] = {{"yes", 0, 1, true}, {"yes", 0, 2, false}, {"yes", -1, 1, false},
               {"no", 0, 1, false}, {"Yes", 0, 1, false}, {"yes ", 0, 1, false}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.supported);
    std::vector<std::string> calls;
    Simulated().ledger.calls = &calls;
    Simulated().defaults["supportsystempwarning"] = c.supported;
    Simulated().temperatureResult = c.result;
    Simulated().temperatureState = c.state;
    EXPECT_EQ(SystemInfoHandler().GetSystemStatusInfo().temperatureWarning, c.warning);
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "VELAHWSysTempWarning"),
              std::string(c.supported) == "yes");
  }
  EXPECT_EQ(Log(), Lines{});
}

TEST_F(Collectors, UsageWarningsFollowTheFloatingPoint) {
  const auto volume = [](const char* status, _tag_volume_usage usage) {
    return VolumeUsageInfo("volume_1", status, "1", usage, 0.05F);
  };
  EXPECT_TRUE(volume("normal", {96, 100, 0, 0}).WarningOutOfSpace());
  EXPECT_FALSE(volume("normal", {94, 100, 0, 0}).WarningOutOfSpace());
  EXPECT_FALSE(volume("degraded", {100, 100, 0, 0}).WarningOutOfSpace());
  EXPECT_TRUE(volume("normal", {1, 0, 0, 0}).WarningOutOfSpace());   // minus infinity
  EXPECT_FALSE(volume("normal", {0, 0, 0, 0}).WarningOutOfSpace());  // not a number
  EXPECT_TRUE(volume("normal", {0, 1, 1000, 40}).WarningOutOfInode(0.05));
  EXPECT_FALSE(volume("normal", {0, 1, 1000, 60}).WarningOutOfInode(0.05));
  EXPECT_FALSE(volume("crashed", {0, 1, 1000, 0}).WarningOutOfInode(0.05));
  EXPECT_FALSE(volume("normal", {0, 1, 0, 0}).WarningOutOfInode(0.05));
}

TEST_F(Collectors, ExpansionUnitsKeepWhatTheirRecordCannotTell) {
  auto& machine = Simulated();
  machine.unitFansFailed = true;
  machine.unitFansDetail = 0x200;
  machine.units.resize(4);
  machine.units[0] = {.name = "RX", .slot = 1, .number = 4000000000U, .power = {{255, 0}}};
  machine.units[1] = {.name = std::nullopt, .slot = 33, .power = {{1, 2}}};
  machine.units[2] = {.name = "RX", .naming = false, .slot = 0, .power = std::nullopt};
  machine.units[3] = {.name = "", .number = 0, .power = {{0, 0}}};

  const SystemInfoHandler info;
  const auto& units = info.GetEboxStatusInfo().GetEboxes();
  ASSERT_EQ(units.size(), 4U);
  EXPECT_EQ(units[0].name, "RX-4000000000");
  EXPECT_EQ(units[1].name, "Expansion Unit");
  EXPECT_EQ(units[2].name, "Expansion Unit");
  EXPECT_EQ(units[3].name, "-0");
  const std::array<bool, 2> both = {true, true};
  EXPECT_EQ(units[0].powerSupplyOk, both) << "255 is unknown";
  EXPECT_EQ(units[1].powerSupplyOk, (std::array<bool, 2>{false, true}));
  EXPECT_EQ(units[2].powerSupplyOk, both) << "no such function";
  EXPECT_EQ(units[3].powerSupplyOk, both) << "0 is unknown";
  EXPECT_TRUE(units[0].fanFail && units[1].fanFail) << "slot 33 has bit 1";
  EXPECT_FALSE(units[2].fanFail);
}

TEST_F(Collectors, ExternalVolumesAreSortedByKind) {
  auto& machine = Simulated();
  machine.usb = {{.name = "sdshare1", .total = 10, .free = 1},
                 {.name = "usbshare1", .total = 20, .free = 2},
                 {.name = "data", .total = 30, .free = 3, .cardReader = true}};
  machine.esata = {{.name = std::string(36, 's'), .total = 40, .free = 4}};

  const SystemInfoHandler info;
  const auto& external = info.GetExternalVolumeInfo();
  EXPECT_EQ(external.GetExternalVolumes(ExternalVolumeType::SdCard).size(), 2U);
  EXPECT_TRUE(external.GetExternalVolumes(ExternalVolumeType{3}).empty());
  const Json::Value json = external.ToJson();
  ASSERT_EQ(json.size(), 4U);
  EXPECT_EQ(json[0]["volume"], "usbshare1");
  EXPECT_EQ(json[1]["volume"], "sdshare1");
  EXPECT_EQ(json[2]["volume"], "data");
  EXPECT_EQ(json[3]["volume"], std::string(36, 's')) << "the field has no room for a NUL";
  EXPECT_EQ(json[3]["total_size"], Json::UInt64{40});
  EXPECT_EQ(json[3]["free_size"], Json::UInt64{4});

  machine.usb.clear();
  machine.esata.clear();
  EXPECT_EQ(SystemInfoHandler().GetExternalVolumeInfo().ToJson(), Json::Value(Json::arrayValue));
}

}  // namespace
}  // namespace VELA::SystemHealth

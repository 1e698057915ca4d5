// Documents and names as nobody should write them: the answer, the log, never an exception.
#include <algorithm>
#include <optional>
#include <sstream>

#include <json/reader.h>

#include "SystemChecker/system_checker_handler.h"
#include "tests/support/comma_locale.h"
#include "tests/support/simulated_test.h"

namespace VELA::SystemHealth {
namespace {

using Lines = std::vector<std::string>;

const Lines kNothing;
const Lines kNoSan = {"3 SystemInfo/san_status_info:50 Failed to load lun info for SAN Manager",
                      "3 SystemInfo/san_status_info:66 Failed to load volume info for SAN Manager"};

std::string Times(std::size_t count, const std::string& text) {
  std::string all;
  for (; count > 0; --count) all += text;
  return all;
}

Lines Words(const std::string& text, char between = ' ') {
  Lines words;
  std::istringstream stream(text);
  for (std::string word; std::getline(stream, word, between);) words.push_back(word);
  return words;
}

class HostileInput : public SimulatedTest {
 protected:
  // The winning finding's format, or the text that it names, and the values behind it.
  std::string Verdict() {
    RecordedLog().clear();
    const Json::Value json = SystemCheckerHandler().Check(SystemInfoHandler()).ToJson();
    const Json::Value& description = json["description"];
    std::string text = description["description_format"].asString();
    for (const Json::Value& value : description["description_params"])
      text += " " + value.asString();
    return text;
  }

  std::string VerdictOnSan(const std::string& output) {
    Simulated().sanOutput = output;
    return Verdict();
  }

  std::string VerdictOnScan(const std::string& file) {
    Simulated().securityScan = file;
    return Verdict();
  }
};

const std::string kWell = "{0} widget:system_ok";
const std::string kCrashed = "iscsimgr:lun_crash_warning 1";
const std::string kScanDanger = "{0} securityscan:securityscan_system_danger_desc";

TEST_F(HostileInput, ACutDocumentIsNone) {
  const std::string san = R"({"luns": [{"status": "Unhealthy", "n": -1.5e3}], "volumes": []})";
  const std::string scan = R"({"other": [1, {}], "sysStatus": "danger"})";
  for (std::size_t length = 0; length < san.size(); ++length) {
    EXPECT_EQ(VerdictOnSan(san.substr(0, length)), kWell) << length;
    EXPECT_EQ(Log(), kNoSan) << length;
  }
  EXPECT_EQ(VerdictOnSan(san), kCrashed);
  EXPECT_EQ(Log(), kNothing);
  EXPECT_EQ(VerdictOnSan(R"({"luns": [], "volumes": []})"), kWell);
  for (std::size_t length = 0; length < scan.size(); ++length) {
    EXPECT_EQ(VerdictOnScan(scan.substr(0, length)), kWell) << length;
    EXPECT_EQ(Log(), kNothing) << length;
  }
  EXPECT_EQ(VerdictOnScan(scan), kScanDanger);
}

TEST_F(HostileInput, NestingEndsWhereTheParserEndsIt) {
  const auto deep = [](std::size_t levels) { return Times(levels, "[") + Times(levels, "]"); };
  const std::string luns = R"({"luns": [{"status": "Unhealthy"}], "volumes": [], "deep": )";
  EXPECT_EQ(VerdictOnSan(luns + deep(900) + "}"), kCrashed);
  for (const std::string& document :
       {luns + deep(100'000) + "}", deep(100'000), Times(100'000, R"({"luns":)"),
        Times(100'000, "["), Times(100'000, "/*"), "//" + Times(100'000, "\n//")}) {
    EXPECT_EQ(VerdictOnSan(document), kWell);
    EXPECT_EQ(Log(), kNoSan);
  }
  Simulated().sanOutput.reset();
  EXPECT_EQ(VerdictOnScan(R"({"sysStatus": "danger", "deep": )" + deep(900) + "}"), kScanDanger);
  EXPECT_EQ(VerdictOnScan(R"({"sysStatus": "danger", "deep": )" + deep(100'000) + "}"), kWell);
  EXPECT_EQ(Log(), kNothing);
}

const std::string kHard = "iscsimgr:lun_reach_hard_limit 1";

TEST_F(HostileInput, SizesKeepToSixtyFourBitsInAnyLocale) {
  const struct {
    std::string verdict;
    const Lines& log;
    const char* sizes;
  } cases[] = {
      {kHard, kNothing, "0 -0.0 -1 -9223372036854775809 -1e300 134217727.9 \"1.5e10\""},
      {kHard, kNothing, "18446744073709551616 1e300"},
      {"iscsimgr:lun_reach_soft_limit 1", kNothing, "134217728 1.34217728e8 1073741823.9 1.5E+8"},
      {"iscsimgr:lun_space_warning 1", kNothing, "1073741824 1.5e9 1500000000."},
      {kWell, kNothing, "18446744073709551615 1e13"},
      {kWell, kNoSan, "NaN Infinity 0x10 1e999 1,5 1.5.5 1e"},
  };
  const std::string before =
      R"({"luns": [{"name": "\"1.5", "status": "degraded", "location": "/v1.5"}],
      "volumes": [{"path": "/v1"}, {"path": "/v1.5", /* "1.5 */ "total_size": 1e13, "free_size": )";
  std::optional<CommaLocale> locale;
  for (int pass = 0; pass < 2; ++pass, locale.emplace()) {
    for (const auto& c : cases) {
      for (const std::string& size : Words(c.sizes)) {
        EXPECT_EQ(VerdictOnSan(before + size + "}]}"), c.verdict) << size;
        EXPECT_EQ(Log(), c.log) << size;
      }
    }
  }
}

TEST_F(HostileInput, NamesAreShownByteForByte) {
  for (const std::string name :
       {"{0}", "{}", "{1} {2}", "\"'\\", "\x01\x1b[31m\n\t", "\xff\xfe\xc3(", "%s%n", "<b>&amp;",
        "\xe2\x80\xae"
        "abc",
        " "}) {
    SCOPED_TRACE(testing::PrintToString(name));
    Reset();
    auto& machine = Simulated();
    machine.units = {{.name = name, .power = {{1, 2}}}};
    EXPECT_EQ(
        Verdict(),
        name + "-1{0}1{1} {2} system:power_supply common:colon common:enclosure_status_abnormal");
    machine.units.clear();
    machine.volumes[0] = {.path = name, .spaceId = "volume_" + name, .used = 99, .total = 100};
    EXPECT_EQ(
        Verdict(),
        "{0} " + name + "{1} {2} volume:volume common:colon widget:available_volume_space_warning");
    machine.volumes.clear();
    machine.usb = {{.name = name, .total = 100, .free = 1}};
    EXPECT_TRUE(Verdict().starts_with(name + "{0} {1} common:colon ")) << Verdict();
    EXPECT_EQ(Log(), kNothing);
  }
}

TEST_F(HostileInput, FieldsWithoutATerminatorEndWhereTheyEnd) {
  auto& machine = Simulated();
  machine.usb = {{.name = "usbshare1" + std::string(27, '7'), .total = 100, .free = 1}};
  EXPECT_TRUE(Verdict().starts_with("USB {0} 1" + std::string(27, '7') + "{1} {2}")) << Verdict();
  machine.usb = {{.name = "sdshare1-" + std::string(27, '7'), .total = 100, .free = 1}};
  EXPECT_TRUE(Verdict().starts_with("{0} 1-" + std::string(27, '7') + "{1} {2}")) << Verdict();
  machine.volumes = {
      {.path = std::string(716, 'p'), .spaceId = "volume_7", .used = 99, .total = 100}};
  machine.usb.clear();
  EXPECT_TRUE(Verdict().starts_with("{0} 7{1} {2}")) << Verdict();
}

}  // namespace
}  // namespace VELA::SystemHealth

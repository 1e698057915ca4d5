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

TEST_F(HostileInput, AMemberOfAnotherTypeIsAnAbsentOne) {
  const char* san = R"({"low_capacity_write_on": false,
      "luns": [{"name": "a", "status": "degraded", "location": "/volume1"}],
      "volumes": [{"path": "/volume1", "free_size": 5, "total_size": 100}]})";
  const struct {
    const std::string& verdict;
    const char* members;
  } cases[] = {{kHard, "low_capacity_write_on luns.0.name luns.0.status volumes.0.free_size"},
               {kWell, "luns luns.0 luns.0.location"},
               {kWell, "volumes volumes.0 volumes.0.path volumes.0.total_size"}};
  for (const auto& c : cases) {
    for (const std::string& path : Words(c.members)) {
      for (const char* wrong : {"null", "true", "3", "-1.5", "\"x\"", "[]", "[[]]", "{}",
                                R"({"a": {"status": "Unhealthy"}})"}) {
        SCOPED_TRACE(path + ": " + wrong);
        Json::Value document;
        Json::Reader().parse(san, document);
        Json::Value* member = &document;
        for (const std::string& name : Words(path, '.'))
          member = name == "0" ? &(*member)[0] : &(*member)[name];
        Json::Reader().parse(wrong, *member, false);
        EXPECT_EQ(VerdictOnSan(document.toStyledString()), c.verdict);
        EXPECT_EQ(Log(), kNothing);
      }
    }
  }
}

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

TEST_F(HostileInput, AHundredThousandLunsAreCounted) {
  std::string luns, volumes;
  for (int i = 0; i < 100'000; ++i) {
    const std::string path = "\"/volume" + std::to_string(i % 1000) + "\"";
    luns += (i > 0 ? "," : "") + (R"({"status": "degraded", "location": )" + path) + "}";
    if (i < 1000)
      volumes +=
          (i > 0 ? "," : "") + (R"({"path": )" + path) + R"(, "free_size": 1, "total_size": 100})";
  }
  EXPECT_EQ(VerdictOnSan(R"({"luns": [)" + luns + R"(], "volumes": [)" + volumes + "]}"),
            "iscsimgr:luns_reach_hard_limit 100000");
  EXPECT_EQ(VerdictOnSan(R"({"luns": [{"status": "Unhealthy"})" +
                         Times(99'999, R"(,{"status": "Unhealthy"})") + R"(], "volumes": []})"),
            "iscsimgr:luns_crash_warning 100000");
  EXPECT_EQ(Log(), kNothing);
}

TEST_F(HostileInput, ATextWithANulIsAnotherText) {
  EXPECT_EQ(VerdictOnSan(R"({"luns": [{"status": "normal\u0000"}], "volumes": [{"path": ""}]})"),
            "iscsimgr:lun_reach_hard_limit 1");
  EXPECT_EQ(VerdictOnSan(R"({"luns": [{"status": "Unhealthy\u0000"}], "volumes": []})"), kWell);
  EXPECT_EQ(VerdictOnSan(R"({"luns\u0000": [{"status": "Unhealthy"}], "volumes": []})"), kWell);
  EXPECT_EQ(Log(), Lines{kNoSan[0]});
  EXPECT_EQ(VerdictOnScan(R"({"sysStatus": "danger\u0000"})"), kWell);
  EXPECT_EQ(VerdictOnScan(R"({"sysStatus\u0000": "danger", "sysStatus": 1})"), kWell);
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

TEST_F(HostileInput, EveryEntryOfALongListIsNamed) {
  auto& machine = Simulated();
  const auto pieces = [](const std::string& text) {
    return std::count(text.begin(), text.end(), ',');
  };
  const std::size_t many = 2000;
  machine.usb.assign(many, {.name = "usbshare1", .total = 100, .free = 1});
  EXPECT_EQ(pieces(Verdict()), many - 1);
  machine.volumes.assign(many, {.path = "/v", .spaceId = "volume_1", .used = 99, .total = 100});
  EXPECT_EQ(pieces(Verdict()), many - 1);
  EXPECT_TRUE(Verdict().starts_with("{0} 1, {0} 1, "));
  machine.units.assign(many, {.name = "RX", .power = {{1, 4}}});
  EXPECT_EQ(pieces(Verdict()), 2 * many - 1);
  for (std::size_t i = 0; i < many; ++i)
    machine.disks.Append(simulator::MakeDisk("d", "system_crashed", ""));
  EXPECT_EQ(Verdict(), "{0} widget:storage_is_warning");
}

}  // namespace
}  // namespace VELA::SystemHealth

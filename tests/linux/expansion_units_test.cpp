#include "platform/linux/contract/request.h"

#include <gtest/gtest.h>

#include "platform/status/source_status.h"
#include "tests/linux/machine_snapshot.h"
#include "velac.h"

namespace {

unsigned FansOfUnits() {
  const linux_platform::RequestScope request;
  return MaskFailedUnitFans(request->GetExpansionUnits().units);
}

struct Seen {
  std::string name;
  int slot = 0;
  unsigned number = 0;
  int power = 0;
  unsigned word = 0;
};

std::vector<Seen> Enumerate() {
  VELA_EBOX_INFO* list = nullptr;
  EXPECT_EQ(VELAEBoxInfoEnum(&list), 0);
  std::vector<Seen> all;
  for (VELA_EBOX_INFO* unit = list; unit != nullptr; unit = unit->next) {
    Seen& seen = all.emplace_back();
    const char* name = unit->name(unit->context);
    seen.name = name != nullptr ? name : "(none)";
    seen.slot = unit->slotIndex;
    seen.number = unit->unitNumber;
    seen.power = unit->power(unit->context, &seen.word);
  }
  VELAEBoxInfoEnumFree(list);
  return all;
}

VELASourceReport Voice() {
  VELASourceReport reports[16];
  VELAPlatformSources(reports, 16);
  return reports[static_cast<int>(source_status::Source::ExpansionUnits)];
}

std::string Part(const std::string& state) { return R"({"name": "x", "state": ")" + state + "\"}"; }

TEST(ExpansionUnits, AUnitTellsItsFansAndSuppliesBitByBit) {
  const struct {
    const char* what;
    std::string fans, supplies;
    unsigned fanMask;
    int power;
    unsigned word;
  } cases[] = {
      {"all well", Part("ok"), Part("ok") + "," + Part("ok"), 0, 1, 3},
      {"the first supply", Part("ok"), Part("failed") + "," + Part("ok"), 0, 1, 2},
      {"the second supply", Part("ok"), Part("ok") + "," + Part("failed"), 0, 1, 1},
      {"the third counts as the second", Part("ok"),
       Part("ok") + "," + Part("ok") + "," + Part("failed"), 0, 1, 1},
      {"the second of two fans", Part("ok") + "," + Part("failed"), Part("ok"), 1, 1, 3},
      {"empty and silent places", Part("absent") + "," + Part("unknown"),
       Part("absent") + "," + Part("unknown"), 0, 1, 3},
      {"no supplies", Part("failed"), "", 1, 0, 3},
      {"odd elements", "7, null, [], \"failed\"", "{\"state\": 1}, 3", 0, 1, 3},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const MachineSnapshot machine;
    machine.Write("ses", R"("enclosures": [{"id": "5", "product": "JBOD-24", "fans": [)" + c.fans +
                             R"(], "supplies": [)" + c.supplies + "]}]");
    EXPECT_EQ(FansOfUnits(), c.fanMask);
    const auto units = Enumerate();
    ASSERT_EQ(units.size(), 1U);
    EXPECT_EQ(units[0].name, "JBOD-24");
    EXPECT_EQ(units[0].number, 1U);
    EXPECT_EQ(units[0].power, c.power);
    EXPECT_EQ(units[0].word, c.word);
  }
}

TEST(ExpansionUnits, SilentOnesKeepTheirPlaceAndInternalOnesHaveNone) {
  const MachineSnapshot machine;
  machine.TemporaryRoot::Write("/etc/velainfo.conf", "ebox.internal=\"0xa1, 0xa3\"\n");
  machine.Write("ses", R"("enclosures": [
    {"id": "a0", "product": "E", "unread": "the command timed out"},
    {"id": "a1", "product": "Backplane", "fans": [{"state": "failed"}], "supplies": []},
    {"id": "a2", "product": "a name of more than sixteen", "fans": [{"state": "failed"}]},
    {"id": "a4", "product": 7, "fans": {}, "supplies": 5}, 12])");
  VELAPlatformSourcesReset();
  const auto units = Enumerate();
  ASSERT_EQ(units.size(), 3U);
  EXPECT_EQ(units[0].name, "E");
  EXPECT_EQ(units[0].power, 0);
  EXPECT_EQ(units[1].name, "a name of more t");
  EXPECT_EQ(units[1].slot, 1);
  EXPECT_EQ(units[1].number, 2U);
  EXPECT_EQ(units[2].name, "(none)");
  EXPECT_EQ(FansOfUnits(), 2U);
  EXPECT_EQ(Voice().state, 2);
  EXPECT_STREQ(Voice().reason, "enclosure E a0: the command timed out");
}

TEST(ExpansionUnits, BeyondTheTwentyFourthAFanIsNotWatchedAndThatIsSaid) {
  const MachineSnapshot machine;
  std::string all;
  for (int i = 0; i < 34; ++i)
    all += std::string(i > 0 ? "," : "") + R"({"id": ")" + std::to_string(100 + i) +
           R"(", "product": "E", "fans": [{"state": ")" + (i >= 23 ? "failed" : "ok") + "\"}]}";
  machine.Write("ses", "\"enclosures\": [" + all + "]");
  VELAPlatformSourcesReset();
  const auto units = Enumerate();
  ASSERT_EQ(units.size(), 34U);
  EXPECT_EQ(units[33].slot, 31) << "a bit that no mask of component 5 can carry";
  EXPECT_EQ(FansOfUnits(), 0x800000U);
  EXPECT_STREQ(Voice().reason, "34 units; the fans of only the first 24 are watched");
}

TEST(ExpansionUnits, WithoutAUsableSnapshotThereIsNoneAndTheVoiceSaysWhy) {
  const MachineSnapshot machine;
  const std::string failing = R"("enclosures": [{"id": "5", "product": "E",
    "fans": [{"state": "failed"}]}])";
  const struct {
    const char* what;
    int state;
    const char* reason;
  } cases[] = {
      {"nothing", 0, "no enclosure with SES"},
      {"old", 2,
       "ses.json is 181 s old: vela-platform-collect is stuck or off. See systemctl status "
       "vela-platform-collect, and enable --now vela-platform-collect.timer"},
      {"error", 2, "ses: no right to open /dev/sg3"},
      {"none", 0, "no enclosure is an expansion unit"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const std::string what = c.what;
    if (what == "old") machine.Write("ses", failing, 181);
    if (what == "error") machine.Write("ses", R"("error": "no right to open /dev/sg3")");
    if (what == "none") machine.Write("ses", R"("enclosures": {"5": 1})");
    VELAPlatformSourcesReset();
    EXPECT_TRUE(Enumerate().empty());
    EXPECT_EQ(FansOfUnits(), 0U);
    EXPECT_EQ(Voice().state, c.state);
    EXPECT_STREQ(Voice().reason, c.reason);
  }
}

}  // namespace

// Whole machines as data (machine_tree.h): all that the platform says of each. With
// VELA_WRITE_EXPECTED=1 in the environment it is written down anew: read what has changed.
#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <regex>
#include <sstream>
#include <thread>

#include <json/json.h>

#include "platform/linux/contract/request.h"
#include "platform/linux/notes/notes.h"
#include "platform/status/evidence.h"
#include "tests/linux/machine_tree.h"
#include "tests/linux/source_statuses.h"
#include "vela_conf.h"
#include "vela_storage.h"
#include "vela_webserver.h"
#include "velac.h"

namespace {

using namespace VELA::ZRT;
namespace manager = STORAGE_MANAGER;

bool IsFull(const char* path) {
  _tag_volume_usage usage = {};
  FS_INFO* info = nullptr;
  return manager::Volume::GetVolumeFSInfo(path, usage, info) && usage.u0 == usage.u1;
}

// "volume_1 /volume1: normal, warns below 0.05, full"
void TellVolumes(std::ostream& out) {
  const manager::Space space(23);
  for (const auto* record = space.GetAll(); record != nullptr; record = record->next)
    out << manager::StorageUtil::ToUISpaceID(record->type, record->path) << " " << record->path
        << ": " << manager::Volume::ToJsonSpaceStatus(*record) << ", warns below "
        << VELAVolumeCapWarnPctGet(record->path) << (IsFull(record->path) ? ", full\n" : "\n");
  if (STORAGE_WEBUTILS::Volume::IsSystemVolCrashed()) out << "system volume: crashed\n";
}

// "Disk 1: normal, used by md0"
void TellDisks(std::ostream& out) {
  Json::Value disks(Json::arrayValue);
  manager::Disk(false, true).DumpDisks(manager::Space(23), disks);
  for (const Json::Value& disk : disks) {
    out << disk["name"].asString() << ": " << disk["status"].asString();
    if (disk["overview_status"] != "normal")
      out << ", overview " << disk["overview_status"].asString();
    if (disk["used_by"] != "") out << ", used by " << disk["used_by"].asString();
    out << (disk.isMember("remote_info") ? ", disconnected\n" : "\n");
  }
  out << "storage: " << manager::Space::GetOverviewStatus() << "\n";
  EXPECT_EQ(VLIBCMaxDiskGet(), static_cast<int>(disks.size()));
}

// All external volumes, then those whose capacity somebody knows: a real mount or the collector.
void TellExternal(std::ostream& out) {
  const linux_platform::RequestScope request;
  for (const auto& volume : request->GetStorage().external)
    out << "external " << volume.name << " " << volume.path << "\n";
  for (const int volumeClass : {4, 8}) {
    VELA_MOUNT_VOL_INFO* list = VELAMountVolAllEnum(0, volumeClass, 0);
    for (const auto* volume = list; volume != nullptr; volume = volume->next)
      out << volume->name << ": " << volume->freeSize << " of " << volume->totalSize << " free\n";
    VELAMountVolInfoFree(list);
  }
}

// "unit JBOD-24 1: working supplies 3"
void TellUnits(std::ostream& out) {
  VELA_EBOX_INFO* units = nullptr;
  VELAEBoxInfoEnum(&units);
  for (VELA_EBOX_INFO* unit = units; unit != nullptr; unit = unit->next) {
    unsigned supplies = 0;
    const bool known = unit->power(unit->context, &supplies) == 1;
    const char* name = unit->name(unit->context);
    out << "unit " << (name != nullptr ? name : "(none)") << " " << unit->unitNumber
        << ": working supplies " << (known ? std::to_string(supplies) : "unknown") << "\n";
  }
  VELAEBoxInfoEnumFree(units);
}

void TellHardware(std::ostream& out) {
  VELA_SYS_STATUS record;
  EXPECT_EQ(VELASysStatusGet(&record), 0);
  const std::pair<int, const char*> components[] = {
      {1, "fan"}, {6, "processor fan"}, {4, "power supply"}, {5, "unit fan"}};
  for (const auto& [component, name] : components) {
    unsigned detail = 0;
    if (VELAIsComponentFail(&record, component, &detail) == 0) continue;
    out << name << " failed";
    if (detail != 0) out << ": mask " << (detail >> 8);
    out << "\n";
  }
  if (VELARedundantPowerSupport() != 0) out << "redundant supplies\n";
  int hot = 0;
  if (VELAHWSysTempWarning(&hot) == 0) out << "temperature: " << (hot != 0 ? "hot\n" : "well\n");
}

void TellServices(std::ostream& out) {
  VELA_UPS_INFO ups = {};
  VELAUPSInfoGet(&ups);
  if (ups.enabled != 0)
    out << "UPS: connected " << ups.connected << ", state " << ups.state << "\n";
  if (VELAServiceIsHttpDefaultConf() > 0) out << "web server: suspicious\n";
  char text[64] = {};
  if (VELAHAIsRunning() == 0) return;
  VELAHAGetOverviewStatusDL(text, sizeof text);
  out << "cluster: " << text << "\n";
}

// "is 201 s old" as "is 200 s old": writing a machine down and asking it takes its time.
std::string RoundAge(std::string reason) {
  if (const auto end = reason.find(" s old"); end != reason.npos) reason.replace(end - 2, 2, "00");
  return reason;
}

// "Disk 1: failing by pending sectors, 8 from 1 on", and whose health nobody watches. For want
// of the collector, which most machines here lack, that is told only beside a stray record.
void TellSmart(std::ostream& out) {
  constexpr const char* kVerdicts[] = {"well", "note on ", "failing by "};
  const linux_platform::RequestScope request;
  for (const linux_platform::WholeDisk& disk : request->GetStorage().disks)
    for (const linux_platform::DriveRemark& remark : disk.smart.remarks)
      out << disk.name << ": " << kVerdicts[static_cast<int>(remark.health)]
          << (remark.grown ? "new " : "") << remark.what
          << (remark.serial.empty() ? "" : " of " + remark.serial) << ", " << remark.value
          << " from " << remark.mark << " on\n";
  const linux_platform::SmartCoverage& smart = request->GetStorage().smart;
  for (const linux_platform::Trouble& gap : smart.gaps)
    if (!gap.reason.starts_with("nobody looks") || !smart.stray.IsNone())
      out << "unwatched: " << RoundAge(gap.reason) << " [" << gap.remedy << "]\n";
  if (!smart.stray.IsNone()) out << smart.stray.reason << " [" << smart.stray.remedy << "]\n";
  const SourceReport report = SourceReports()["SMART"];
  const bool remark = report.state == 1 && report.reason != "";
  if (smart.watched)
    out << "SMART: " << report.Name() << (remark ? ", " + report.reason : "") << "\n";
}

// What failed or is not watched, but for capacities: only a real mount has one. What is missing.
void TellSources(std::ostream& out) {
  for (const auto& [name, report] : SourceReports())
    if ((report.state >= 2 || name == "volumes") && name != "SMART" && report.reason != "" &&
        !report.reason.starts_with("the capacity of "))
      out << report.Name() << " " << name << ": " << RoundAge(report.reason) << "\n";
}

// "note: paths_lost data 1 of 2 [multipath -ll data]". Of a clock that nobody set right for days.
void TellNotes(std::ostream& out) {
  linux_platform::GatherNotes();
  linux_platform::TellClock({true, 16'000'000});
  out << ToldNotes("note: ", "\n");
}

// The part, and what of it is known: "part: disk well Disk 1 sda; ...".
void TellParts(std::ostream& out) {
  VELAPlatformParts(
      [](void* taker, const VELAPart* part) {
        std::ostream& told = *static_cast<std::ostream*>(taker);
        // Those are the kernel's, not the machine's.
        if (part->kind == source_status::PartKind::Interface) return;
        told << "part: " << source_status::kPartKindNames[static_cast<std::size_t>(part->kind)]
             << " " << source_status::kPartStateNames[static_cast<std::size_t>(part->state)] << " "
             << part->name;
        const std::pair<const char*, const char*> texts[] = {
            {"device", part->device}, {"path", part->path},   {"in", part->parent},
            {"bay", part->bay},       {"slot", part->slot},   {"port", part->port},
            {"at", part->mountPoint}, {"model", part->model}, {"serial", part->serial}};
        for (const auto& [name, text] : texts)
          if (*text != '\0') told << "; " << name << " " << text;
        if (part->size != 0) told << "; " << part->size << " bytes";
        // What is used of a real mount changes while the test runs.
        if (part->total != 0) told << "; has a capacity";
        if (*part->unit != '\0') told << "; " << part->reading << " " << part->unit;
        if (part->mark != 0) told << " against " << part->mark;
        told << "\n";
      },
      &out);
}

// "evidence: array_degraded for storage overview: md0 3 of 4; missing Disk 3 [show] [mend]"
void TellEvidence(std::ostream& out) {
  VELAPlatformEvidence(
      [](void* taker, const VELAEvidence* record) {
        std::ostream& told = *static_cast<std::ostream*>(taker);
        told << "evidence: " << record->key << " for " << record->check << ": " << record->part;
        told << " " << record->figure << " of " << record->mark;
        if (record->other != 0) told << ", " << record->other;
        if (*record->words != '\0') told << ", \"" << record->words << "\"";
        if (*record->path != '\0') told << ", in " << record->path;
        if (record->since != 0) told << ", since " << record->since;
        for (std::uint32_t i = 0; i < record->relatedCount; ++i)
          told << "; " << record->related[i].relation << " " << record->related[i].part;
        if (record->moreRelated != 0) told << "; " << record->moreRelated << " more";
        told << " [" << record->show << "]";
        for (const char* command : record->mend)
          if (*command != '\0') told << " [" << command << "]";
        told << "\n";
      },
      &out);
}

std::string TellAll() {
  VELAPlatformSourcesReset();
  std::ostringstream out;
  TellVolumes(out);
  TellDisks(out);
  TellExternal(out);
  TellUnits(out);
  TellHardware(out);
  TellServices(out);
  TellSmart(out);
  TellSources(out);
  TellNotes(out);
  TellParts(out);
  TellEvidence(out);
  return out.str();
}

// What is bad of chassis, units, UPS and cluster is explained, and nothing else is.
void ExpectVerdictsExplained(const std::string& told) {
  const std::pair<const char*, const char*> verdicts[] = {
      {"(^|\n)(processor )?fan failed", "fan_.*for system status"},
      {"\npower supply failed", "supply_.*for system status"},
      {"\ntemperature: hot", "temperature_.*for system status"},
      {"\nunit fan failed|\nunit .*: working supplies [012]\n", "unit_.*for expansion units"},
      {"\nUPS: connected 1, state [23]", "ups_.*for UPS"},
      {"\ncluster: (warning|danger|empty)", ".*for high availability"}};
  for (const auto& [verdict, evidence] : verdicts)
    EXPECT_EQ(std::regex_search(told, std::regex(verdict)),
              std::regex_search(told, std::regex(std::string("\nevidence: ") + evidence)))
        << verdict;
}

class Machine : public testing::TestWithParam<std::string> {};

TEST_P(Machine, IsToldAsExpected) {
  const MachineTree machine(GetParam());
  const VelaConf request;
  const std::string told = TellAll();
  if (getenv("VELA_WRITE_EXPECTED") != nullptr)
    std::ofstream(FIXTURES "/machines/" + GetParam() + "/expected") << told;
  EXPECT_EQ(told, MachineTree::Read(GetParam(), "expected"));
  ExpectVerdictsExplained(told);
}

INSTANTIATE_TEST_SUITE_P(All, Machine, testing::ValuesIn(MachineTree::ListThoseWith("expected")),
                         MachineTree::GetTestName);

// Everything is read once in a request, and afresh by the next: settings, storage, chassis, units.
class RequestTest : public testing::Test {
 protected:
  void Change() { machine.Load("everything-else"); }
  MachineTree machine = MachineTree("full");
  const std::string before = TellAll();
};

TEST_F(RequestTest, LastsAsLongAsTheLastOfItsSettings) {
  auto outer = std::make_unique<VelaConf>();
  EXPECT_EQ(TellAll(), before);
  Change();
  EXPECT_EQ(TellAll(), before);
  auto inner = std::make_unique<VelaConf>();
  EXPECT_STREQ(inner->Info("volume_warning_percent", "not set"), "not set");
  inner.reset();
  EXPECT_EQ(TellAll(), before) << "the inner one did not open it";
  inner = std::make_unique<VelaConf>();
  outer.reset();
  EXPECT_EQ(TellAll(), before) << "and keeps it open for as long as it needs it";
  inner.reset();
  EXPECT_EQ(TellAll(), MachineTree::Read("everything-else", "expected"))
      << "each call outside of a request is one of its own";
}

TEST_F(RequestTest, IsItsThreadsOwn) {
  auto conf = std::make_unique<VelaConf>();
  EXPECT_EQ(TellAll(), before);
  Change();
  std::thread([&] {
    const VelaConf own;
    EXPECT_NE(TellAll(), before);
    conf.reset();  // whoever closes it
  }).join();
  EXPECT_NE(TellAll(), before);
}

TEST_F(RequestTest, TwoAtOnceDoNotMeet) {
  const auto ask = [this] {
    for (int i = 0; i < 20; ++i) {
      const VelaConf conf;
      EXPECT_EQ(TellAll(), before);
    }
  };
  std::thread other(ask);
  ask();
  other.join();
}

}  // namespace

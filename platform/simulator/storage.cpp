// The storage manager, external volumes and expansion units.
#include <cstring>
#include <memory>
#include <string_view>

#include <vela_storage.h>
#include <velac.h>

#include "common/text.h"
#include "platform/simulator/call.h"

using simulator::Call;
using simulator::ExternalVolume;
using simulator::Machine;
using simulator::Simulated;
using source_status::Source;

struct FS_INFO {};

// A machine answers only calls whose fixed arguments are as the interface states them.
namespace {

constexpr int kAllSpaces = 23;

const simulator::Volume* FindVolume(const Machine& machine, std::string_view path) {
  for (const auto& volume : machine.volumes)
    if (volume.path == path) return &volume;
  return nullptr;
}

// A list of one record for each element, in one array; null when there is none.
template <typename Record, typename Element, typename Fill>
Record* MakeList(const std::vector<Element>& elements, Fill fill) {
  if (elements.empty()) return nullptr;
  // What no field names is left as it is: it is the platform's, and nobody may read it.
  auto records = std::make_unique_for_overwrite<Record[]>(elements.size());
  for (std::size_t i = 0; i < elements.size(); ++i) {
    fill(elements[i], records[i]);
    records[i].next = i + 1 < elements.size() ? &records[i + 1] : nullptr;
  }
  return records.release();
}

// No call is SMART's own: who watches the disks' health is told with the disks.
void ReportSmart(const Machine& machine) {
  const auto stated = machine.sources.find(common::SourceName(Source::Smart));
  if (stated == machine.sources.end()) return source_status::SayRead(Source::Smart);
  ReportStatus(Source::Smart, stated->second);
}

// A record's private context holds a pointer to its unit.
const simulator::ExpansionUnit& GetUnit(void* context) {
  const simulator::ExpansionUnit* unit = nullptr;
  std::memcpy(&unit, context, sizeof unit);
  return *unit;
}

const char* UnitName(void* context) {
  Call call(Source::ExpansionUnits, "VELA_EBOX_INFO::name");
  return simulator::OrNull(GetUnit(context).name);
}

int UnitPower(void* context, unsigned* word) {
  Call call(Source::ExpansionUnits, "VELA_EBOX_INFO::power");
  const auto& power = GetUnit(context).power;
  *word = power->word;
  return power->result;
}

}  // namespace

namespace VELA::ZRT {

namespace STORAGE_WEBUTILS {

bool Volume::IsSystemVolCrashed() {
  return Call(Source::Volumes, "Volume::IsSystemVolCrashed")->systemVolumeCrashed;
}

std::string Volume::ToUIUsbSataVolumeStr(const std::string& name) {
  const Call call(Source::ExternalVolumes, "Volume::ToUIUsbSataVolumeStr");
  return name;
}

}  // namespace STORAGE_WEBUTILS

namespace STORAGE_MANAGER {

Space::Space(int selection) : list_(nullptr) {
  Call call(Source::Volumes, "Space::Space");
  if (selection == kAllSpaces)
    list_ = MakeList<SpaceRecord>(call->volumes, [](const auto& volume, SpaceRecord& record) {
      simulator::CopyToField(volume.path, record.path);
      record.type = volume.type;
    });
  ++call->ledger.objects;
}

Space::~Space() {
  delete[] static_cast<SpaceRecord*>(list_);
  --Simulated().ledger.objects;
}

const SpaceRecord* Space::GetAll() const {
  const Call call(Source::Volumes, "Space::GetAll");
  return static_cast<const SpaceRecord*>(list_);
}

std::string Space::GetOverviewStatus() {
  return Call(Source::Disks, "Space::GetOverviewStatus")->overview;
}

Disk::Disk(bool first, bool second) : state_(!first && second ? &Simulated() : nullptr) {
  ++Simulated().ledger.objects;
}

Disk::~Disk() { --Simulated().ledger.objects; }

bool Disk::DumpDisks(const Space&, Json::Value& array) {
  Call call(Source::Disks, "Disk::DumpDisks");
  ReportSmart(*call);
  if (call->disksFail || state_ == nullptr) {
    call.Fail("dumping the disks failed");
    return false;
  }
  array = call->disks.View();
  return true;
}

bool Volume::GetVolumeFSInfo(const char* path, _tag_volume_usage& usage, FS_INFO*& info) {
  Call call(Source::Volumes, "Volume::GetVolumeFSInfo");
  const auto* volume = FindVolume(*call, path);
  ++call->ledger.lists;
  static FS_INFO opaque;
  info = &opaque;
  if (volume == nullptr || volume->fails) {
    call.Fail("reading a volume's file system failed");
    return false;
  }
  usage = {volume->used, volume->total, volume->inodes, volume->freeInodes};
  return true;
}

std::string Volume::ToJsonSpaceStatus(const SpaceRecord& record) {
  Call call(Source::Volumes, "Volume::ToJsonSpaceStatus");
  const auto* volume = FindVolume(*call, common::ViewText(record.path));
  return volume != nullptr ? volume->status : "";
}

std::string StorageUtil::ToUISpaceID(int type, const char* path) {
  Call call(Source::Volumes, "StorageUtil::ToUISpaceID");
  const auto* volume = FindVolume(*call, path);
  return volume != nullptr && volume->type == type ? volume->spaceId : "";
}

}  // namespace STORAGE_MANAGER
}  // namespace VELA::ZRT

float VELAVolumeCapWarnPctGet(const char* path) {
  Call call(Source::Volumes, __func__);
  const auto* volume = FindVolume(*call, path);
  return volume != nullptr ? volume->warningShare : 0.05F;
}

void FSInfoFree(FS_INFO*) { --Simulated().ledger.lists; }

int VLIBCMaxDiskGet() { return Call(Source::Disks, __func__)->maxDisks; }

VELA_MOUNT_VOL_INFO* VELAMountVolAllEnum(int first, int volumeClass, int last) {
  Call call(Source::ExternalVolumes, __func__);
  static const std::vector<ExternalVolume> none;
  const bool all = first == 0 && last == 0;
  const auto& volumes = all && volumeClass == 4   ? call->usb
                        : all && volumeClass == 8 ? call->esata
                                                  : none;
  auto* list = MakeList<VELA_MOUNT_VOL_INFO>(
      volumes, [](const ExternalVolume& volume, VELA_MOUNT_VOL_INFO& record) {
        simulator::CopyToField(volume.name, record.name);
        record.freeSize = volume.free;
        record.totalSize = volume.total;
      });
  ++call->ledger.lists;  // now it is out; a list that memory did not suffice for never was
  return list;
}

void VELAMountVolInfoFree(VELA_MOUNT_VOL_INFO* list) {
  delete[] list;
  --Simulated().ledger.lists;
}

int VELAUsbIsCardreader(const char* name) {
  Call call(Source::ExternalVolumes, __func__);
  for (const auto& volume : call->usb)
    if (volume.cardReader && volume.name == name) return *volume.cardReader ? 1 : 0;
  return simulator::IsNamedLikeACard(name) ? 1 : 0;
}

int VELAEBoxInfoEnum(VELA_EBOX_INFO** list) {
  Call call(Source::ExpansionUnits, __func__);
  ++call->ledger.lists;
  if (call->unitsFail) {
    call.Fail("listing the expansion units failed");
    return -1;
  }
  *list = MakeList<VELA_EBOX_INFO>(
      call->units, [](const simulator::ExpansionUnit& unit, VELA_EBOX_INFO& record) {
        record.slotIndex = unit.slot;
        record.unitNumber = unit.number;
        const auto* context = &unit;
        std::memcpy(record.context, &context, sizeof context);
        record.name = unit.naming ? UnitName : nullptr;
        record.power = unit.power ? UnitPower : nullptr;
      });
  return 0;
}

void VELAEBoxInfoEnumFree(VELA_EBOX_INFO* list) {
  delete[] list;
  --Simulated().ledger.lists;
}

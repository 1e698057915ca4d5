// The storage manager's calls, over one request's view of the internal storage.
#include <algorithm>
#include <cstring>
#include <memory>

#include "platform/linux/base/log_once.h"
#include "platform/linux/contract/error.h"
#include "platform/linux/contract/request.h"
#include "platform/status/source_status.h"
#include "vela_storage.h"
#include "velac.h"

using namespace linux_platform;
using source_status::Source, source_status::SourceScope;

namespace {

constexpr std::int32_t kVolume = 1;

const InternalVolume* FindVolume(Request& request, const char* path) {
  const auto& volumes = request.GetStorage().volumes;
  const auto found =
      std::ranges::lower_bound(volumes, std::string(path), {}, &InternalVolume::path);
  return found == volumes.end() || found->path != path ? nullptr : &*found;
}

_tag_volume_usage ToUsage(const Capacity& capacity) {
  return {capacity.Used(), capacity.Total(), capacity.files, capacity.freeFiles};
}

// Text that is not copied: there are five keys for each disk.
using Static = Json::StaticString;

Json::Value ToJson(const WholeDisk& disk) {
  Json::Value object(Json::objectValue);
  object[Static("name")] = disk.name;
  object[Static("status")] = Static(disk.status);
  object[Static("overview_status")] = Static(disk.health == Health::Normal ? "normal" : "abnormal");
  object[Static("used_by")] = disk.usedBy;
  if (disk.disconnected) object[Static("remote_info")][Static("disconnect")] = 1;
  return object;
}

constexpr const char* kRemedy = "journalctl -k -b";

constinit LogOnce volumeFailures("volumes", kRemedy), diskFailures("disks", kRemedy),
    smartGaps("SMART", "");

std::string DescribeFailure(const InternalVolume& volume) {
  return "the capacity of " + volume.path + " could not be read: " + std::strerror(volume.error);
}

// The first thing that could not be read; empty when all could.
std::string DescribeFailure(const StorageView& view) {
  const auto failed = std::ranges::find_if(view.volumes, &InternalVolume::error);
  if (!view.failure.empty()) return view.failure;
  return failed == view.volumes.end() ? view.hidden : DescribeFailure(*failed);
}

void ReportSmart(const SmartCoverage& smart) {
  SourceScope scope(Source::Smart);
  if (!smart.watched && smart.gaps.empty()) scope.Absent("no disk here has health values");
  if (!smart.stray.IsNone())
    scope.ReadWithRemark(smart.stray.remedy.c_str(), "%s", smart.stray.reason.c_str());
  smartGaps.Report(scope, smart.gaps);
}

// What is configured and not there, by name: the answer says only how bad that is.
void TellMissing(const StorageView& view, SourceScope& scope) {
  for (const MissingStorage& each : view.missing)
    scope.ReadWithRemark(each.remedy.c_str(), "%s", each.what.c_str());
}

const StorageView& ReportDisks(Request& request, SourceScope& scope) {
  const StorageView& view = request.GetStorage();
  ReportSmart(view.smart);
  if (!view.listsDisks) scope.Absent("/sys/block lists no disks");
  diskFailures.Report(scope, view.diskFailures);
  return view;
}

}  // namespace

namespace VELA::ZRT {

bool STORAGE_WEBUTILS::Volume::IsSystemVolCrashed() {
  SourceScope scope(Source::Volumes);
  const RequestScope request;
  const StorageView& view = request->GetStorage();
  if (!view.failure.empty()) scope.Failed(kRemedy, "%s", view.failure.c_str());
  return view.systemCrashed;
}

namespace STORAGE_MANAGER {

Space::Space(int) : list_(nullptr) {
  SourceScope scope(Source::Volumes);
  const RequestScope request;
  const StorageView& view = request->GetStorage();
  const std::string reason = DescribeFailure(view);
  volumeFailures.Report(scope, reason);
  TellMissing(view, scope);
  if (view.volumes.empty()) return;
  auto records = std::make_unique<SpaceRecord[]>(view.volumes.size());
  for (std::size_t i = 0; i < view.volumes.size(); ++i) {
    view.volumes[i].path.copy(records[i].path, sizeof records[i].path - 1);
    records[i].type = kVolume;
    if (i > 0) records[i - 1].next = &records[i];
  }
  list_ = records.release();
}

Space::~Space() { delete[] static_cast<SpaceRecord*>(list_); }

const SpaceRecord* Space::GetAll() const { return static_cast<const SpaceRecord*>(list_); }

std::string Space::GetOverviewStatus() {
  SourceScope scope(Source::Disks);
  const RequestScope request;
  constexpr const char* kTexts[] = {"normal", "abnormal", "danger"};
  return kTexts[static_cast<std::size_t>(ReportDisks(*request, scope).overview)];
}

Disk::Disk(bool, bool) : state_(nullptr) {}
Disk::~Disk() {}

bool Disk::DumpDisks(const Space&, Json::Value& array) {
  SourceScope scope(Source::Disks);
  const RequestScope request;
  for (const WholeDisk& disk : ReportDisks(*request, scope).disks) array.append(ToJson(disk));
  return true;
}

bool Volume::GetVolumeFSInfo(const char* path, _tag_volume_usage& usage, FS_INFO*& info) {
  SourceScope scope(Source::Volumes);
  const RequestScope request;
  info = nullptr;
  const InternalVolume* volume = FindVolume(*request, path);
  if (volume != nullptr && volume->error == 0) {
    usage = ToUsage(volume->capacity);
    return true;
  }
  if (volume != nullptr) scope.Failed(kRemedy, "%s", DescribeFailure(*volume).c_str());
  SetError(Error::SourceFailed);
  return false;
}

std::string Volume::ToJsonSpaceStatus(const SpaceRecord& record) {
  const RequestScope request;
  const InternalVolume* volume = FindVolume(*request, record.path);
  return volume != nullptr ? volume->status : "crashed";
}

std::string StorageUtil::ToUISpaceID(int, const char* path) {
  const RequestScope request;
  const InternalVolume* volume = FindVolume(*request, path);
  return volume != nullptr ? "volume_" + std::to_string(volume->number) : std::string();
}

}  // namespace STORAGE_MANAGER
}  // namespace VELA::ZRT

float VELAVolumeCapWarnPctGet(const char* path) {
  const RequestScope request;
  const InternalVolume* volume = FindVolume(*request, path);
  return volume != nullptr ? volume->warningLevel : 0.05F;
}

void FSInfoFree(FS_INFO*) {}  // none is ever handed out

int VLIBCMaxDiskGet(void) {
  SourceScope scope(Source::Disks);
  const RequestScope request;
  return static_cast<int>(ReportDisks(*request, scope).disks.size());
}

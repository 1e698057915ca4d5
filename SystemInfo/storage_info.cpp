#include "SystemInfo/storage_info.h"

#include <cxxabi.h>

#include <new>
#include <stdexcept>
#include <utility>

#include <velac.h>

#include "common/json_reader.h"
#include "common/text.h"
#include "module/base/log.h"
#include "module/base/platform_list.h"

namespace VELA::SystemHealth {
namespace {

using ZRT::STORAGE_MANAGER::Disk;
using ZRT::STORAGE_MANAGER::Space;
using ZRT::STORAGE_MANAGER::SpaceRecord;
using ZRT::STORAGE_MANAGER::StorageUtil;
using ZRT::STORAGE_MANAGER::Volume;

constexpr LogPosition kVolumeSkipped{"SystemInfo/storage_info", 143};
constexpr LogPosition kDumpFailed{"SystemInfo/storage_info", 159};
constexpr LogPosition kOverviewUnknown{"SystemInfo/storage_info", 183};

constexpr int kSpaceSelection = 23;  // the storage manager's, as every caller passes it
constexpr int kVolumeType = 1;

// The second of the pieces between underscores. Cut by hand: a general splitter takes six
// allocations a volume.
std::string VolumeIdOf(const std::string& spaceId) {
  const std::size_t first = spaceId.find('_');
  if (first == spaceId.npos)  // in the words of a list of pieces that has only one
    throw std::out_of_range(
        "vector::_M_range_check: __n (which is 1) >= this->size() (which is 1)");
  std::string volumeId = spaceId.substr(first + 1, spaceId.find('_', first + 1) - first - 1);
  if (volumeId.empty()) throw std::runtime_error("Failed to parse volume_id from : " + spaceId);
  return volumeId;
}

VolumeUsageInfo FromRecord(const SpaceRecord& record) {
  const std::string path(common::ViewText(record.path));
  _tag_volume_usage usage = {};
  PlatformList<FS_INFO, FSInfoFree> fileSystem;
  if (!Volume::GetVolumeFSInfo(path.c_str(), usage, fileSystem.Out()))
    throw std::runtime_error("Failed to get file system info from volume");

  const float warningRatio = VELAVolumeCapWarnPctGet(path.c_str());
  std::string spaceId = StorageUtil::ToUISpaceID(record.type, path.c_str());
  std::string volumeId = VolumeIdOf(spaceId);
  std::string status = Volume::ToJsonSpaceStatus(record);
  return {std::move(spaceId), std::move(status), std::move(volumeId), usage, warningRatio};
}

bool IsDisconnected(const Json::Value& remote) {
  const Json::Value* disconnect = common::FindMember(remote, "disconnect");
  return disconnect != nullptr && disconnect->isInt();
}

bool IsInUse(std::string_view usedBy) { return !usedBy.empty() && usedBy != "hotspare"; }

// One walk over the members: asking for each by its name costs more than all the rest.
DiskStatus FromJson(const Json::Value& disk) {
  DiskStatus status;
  if (!disk.isObject()) return status;
  const auto end = disk.end();
  for (auto member = disk.begin(); member != end; ++member) {
    const std::string_view name = common::MemberName(member);
    if (name == "name") {
      status.name = common::ViewText(*member);
    } else if (name == "status") {
      status.status = common::ViewText(*member);
    } else if (name == "overview_status") {
      status.overviewStatus = common::ViewText(*member);
    } else if (name == "used_by") {
      status.inUse = IsInUse(common::ViewText(*member));
    } else if (name == "remote_info") {
      status.remoteDisconnected = IsDisconnected(*member);
    }
  }
  return status;
}

}  // namespace

VolumeUsageInfo::VolumeUsageInfo(std::string space, std::string state, std::string volume,
                                 _tag_volume_usage counters, float ratio)
    : spaceId(std::move(space)),
      status(std::move(state)),
      volumeId(std::move(volume)),
      usage(counters),
      warningRatio(ratio) {}

bool VolumeUsageInfo::WarningOutOfSpace() const {
  if (status != "normal") return false;
  return double{warningRatio} > 1.0 - static_cast<double>(usage.u0) / static_cast<double>(usage.u1);
}

bool VolumeUsageInfo::WarningOutOfInode(double threshold) const {
  if (status != "normal") return false;
  const auto total = static_cast<double>(usage.u2);
  return threshold > 1.0 - (total - static_cast<double>(usage.u3)) / total;
}

void StorageInfo::Init() {
  const Space space(kSpaceSelection);
  LoadVolumeInfo(space);
  LoadDiskInfo(space);
  LoadStorageOverviewStatus();
}

void StorageInfo::LoadVolumeInfo(const Space& space) {
  volumes_.reserve(4);  // most machines have no more; counting reads a long list twice
  for (const SpaceRecord* record = space.GetAll(); record != nullptr; record = record->next) {
    if (record->type != kVolumeType) continue;
    AddVolume(*record);
  }
}

// Whatever reading the volume throws costs that volume only.
void StorageInfo::AddVolume(const SpaceRecord& record) {
  constexpr const char* kSkipped = "Failed to parse volume info, reason: [%s]";
  try {
    volumes_.push_back(FromRecord(record));
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const abi::__forced_unwind&) {
    throw;  // the thread is being cancelled, which nothing may hold up
  } catch (const std::exception& error) {
    LogDebug(kVolumeSkipped, kSkipped, common::OrEmpty(error.what()));
  } catch (...) {
    LogDebug(kVolumeSkipped, kSkipped, "an exception of an unknown type");
  }
}

void StorageInfo::LoadDiskInfo(const Space& space) {
  if (VLIBCMaxDiskGet() == 0) return;
  Disk disk(false, true);
  Json::Value array(Json::arrayValue);
  if (!disk.DumpDisks(space, array)) {
    LogError(kDumpFailed, "Failed to dump disk information.");
    return;
  }
  if (!array.isArray()) return;
  disks_.reserve(array.size());
  for (const Json::Value& element : array) disks_.push_back(FromJson(element));
}

void StorageInfo::LoadStorageOverviewStatus() {
  const std::string status = Space::GetOverviewStatus();
  if (status == "danger") {
    overview_ = StorageOverviewStatus::Danger;
  } else if (status == "abnormal") {
    overview_ = StorageOverviewStatus::Abnormal;
  } else if (status == "normal") {
    overview_ = StorageOverviewStatus::Normal;
  } else {
    LogError(kOverviewUnknown, "Failed to load storage overview status, unknown status: [%s]",
             status.c_str());
  }
}

}  // namespace VELA::SystemHealth

#include "platform/linux/san/service_status.h"

#include <cerrno>
#include <cstring>

#include "platform/linux/base/settings.h"
#include "platform/linux/san/luns.h"

namespace linux_platform {
namespace {

bool IsLowCapacityWriteOn() {
  return ReadSettings(kCurrentSettings).settings.Yes("san.low_capacity_write");
}

Json::Value DescribeLun(const JudgedLun& judged) {
  Json::Value entry(Json::objectValue);
  entry["name"] = judged.lun.name;
  entry["status"] = kLunStatusNames[static_cast<std::size_t>(judged.status)];
  entry["location"] = judged.location;
  return entry;
}

}  // namespace

Json::Value ReadServiceStatus(std::string& trouble) {
  MountTable mounts;
  if (!ReadMounts(mounts))
    trouble = std::string("the mount table could not be read: ") + std::strerror(errno);
  HostVolumes volumes(mounts);
  Json::Value document(Json::objectValue);
  document["low_capacity_write_on"] = IsLowCapacityWriteOn();
  Json::Value& luns = document["luns"] = Json::Value(Json::arrayValue);
  for (const JudgedLun& lun : ReadLuns(volumes, trouble)) luns.append(DescribeLun(lun));

  Json::Value& list = document["volumes"] = Json::Value(Json::arrayValue);
  for (const auto& [path, volume] : volumes.GetVolumes()) {
    Json::Value entry(Json::objectValue);
    entry["path"] = path;
    entry["free_size"] = Json::UInt64{volume.capacity.available};
    entry["total_size"] = Json::UInt64{volume.capacity.Total()};
    list.append(std::move(entry));
  }
  return document;
}

}  // namespace linux_platform

#include "SystemInfo/san_status_info.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <new>

#include <velac.h>
#include <boost/scope_exit.hpp>

#include "common/json_reader.h"
#include "module/base/log.h"

namespace VELA::SystemHealth {
namespace {

constexpr LogPosition kNoLuns{"SystemInfo/san_status_info", 50};
constexpr LogPosition kNoVolumes{"SystemInfo/san_status_info", 66};
constexpr LogPosition kExecFailed{"SystemInfo/san_status_info", 104};

constexpr const char* kTool = "/usr/local/bin/velaiscsiep";

std::string ReadLines(FILE* stream) {
  std::string text;
  char* line = nullptr;
  std::size_t room = 0;
  BOOST_SCOPE_EXIT_ALL(&line) { std::free(line); };
  errno = 0;
  for (ssize_t length = 0; (length = getline(&line, &room, stream)) > 0;)
    text.append(line, static_cast<std::size_t>(length));
  if (errno == ENOMEM) throw std::bad_alloc();
  return text;
}

LunInfo LunFromJson(const Json::Value& lun) {
  return {common::TextMember(lun, "name"), common::TextMember(lun, "status"),
          common::TextMember(lun, "location")};
}

VolumeInfo VolumeFromJson(const Json::Value& volume) {
  return {common::TextMember(volume, "path"), common::SizeMember(volume, "free_size"),
          common::SizeMember(volume, "total_size")};
}

// One record for each element; a value that is no array has no elements.
template <typename Record>
void Append(const Json::Value& array, Record (*fromJson)(const Json::Value&),
            std::vector<Record>& records) {
  if (!array.isArray()) return;
  records.reserve(array.size());
  for (const Json::Value& element : array) records.push_back(fromJson(element));
}

}  // namespace

void SanStatusInfo::Init() {
  if (!LoadSanStatusInfo()) return;
  LoadLunInfo();
  LoadVolumeInfo();
}

bool SanStatusInfo::LoadSanStatusInfo() {
  if (VLIBCFileExist(kTool) == 0) return false;

  FILE* stream = VLIBCPopen(kTool, "r", "--get_service_status", static_cast<char*>(nullptr));
  if (stream == nullptr) {
    LogError(kExecFailed, "Failed to exec cmd [%s --get_service_status] ", kTool);
    return true;
  }
  BOOST_SCOPE_EXIT_ALL(stream) { VLIBCPclose(stream); };

  Json::Value san;
  if (common::ParseJson(ReadLines(stream), san)) {
    const Json::Value* lowCapacityWrite = common::FindMember(san, "low_capacity_write_on");
    lowCapacityWrite_ =
        lowCapacityWrite != nullptr && lowCapacityWrite->isBool() && lowCapacityWrite->asBool();
    // Static: a name that the library copies fails in its own words when memory is short.
    rawStatus_[Json::StaticString("san")].swap(san);
  }
  return true;
}

void SanStatusInfo::LoadLunInfo() {
  const Json::Value* san = common::FindMember(rawStatus_, "san");
  const Json::Value* luns = san != nullptr ? common::FindMember(*san, "luns") : nullptr;
  if (luns == nullptr) {
    LogError(kNoLuns, "Failed to load lun info for SAN Manager");
    return;
  }
  Append(*luns, LunFromJson, luns_);
}

void SanStatusInfo::LoadVolumeInfo() {
  const Json::Value* san = common::FindMember(rawStatus_, "san");
  const Json::Value* volumes = san != nullptr ? common::FindMember(*san, "volumes") : nullptr;
  if (volumes == nullptr) {
    LogError(kNoVolumes, "Failed to load volume info for SAN Manager");
    return;
  }
  Append(*volumes, VolumeFromJson, volumes_);
}

}  // namespace VELA::SystemHealth

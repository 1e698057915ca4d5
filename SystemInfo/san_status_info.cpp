#include "SystemInfo/san_status_info.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <new>
#include <string_view>

#include <velac.h>
#include <boost/scope_exit.hpp>

#include "common/json_lists.h"
#include "common/json_reader.h"
#include "module/base/log.h"

namespace VELA::SystemHealth {
namespace {

constexpr LogPosition kNoLuns{"SystemInfo/san_status_info", 50};
constexpr LogPosition kNoVolumes{"SystemInfo/san_status_info", 66};
constexpr LogPosition kExecFailed{"SystemInfo/san_status_info", 104};

constexpr const char* kTool = "/usr/local/bin/velaiscsiep";
constexpr const char *kLuns = "luns", *kVolumes = "volumes";

constexpr std::size_t kLargestOutput = 16U << 20U;

// The whole output; of one that is too large a little more than may be.
std::string ReadOutput(FILE* stream) {
  std::string text;
  std::array<char, 4096> part;
  for (std::size_t length = 1; length > 0 && text.size() <= kLargestOutput;) {
    errno = 0;
    length = std::fread(part.data(), 1, part.size(), stream);
    // Before the text grows: an allocation that succeeds at the second attempt leaves ENOMEM, too.
    if (errno == ENOMEM) throw std::bad_alloc();
    text.append(part.data(), length);
  }
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

  TakeOutput(ReadOutput(stream));
  return true;
}

void SanStatusInfo::TakeOutput(std::string text) {
  std::vector<LunInfo> luns;
  std::vector<VolumeInfo> volumes;
  const auto take = [&](std::string_view list, const Json::Value& element) {
    if (list == kLuns) luns.push_back(LunFromJson(element));
    if (list == kVolumes) volumes.push_back(VolumeFromJson(element));
  };
  Json::Value san;
  const common::Parsed parsed = text.size() > kLargestOutput
                                    ? common::Parsed::TooLarge
                                    : common::ParseJsonLists(std::move(text), san, take);
  if (parsed == common::Parsed::TooLarge)
    LogError({"SystemInfo/san_status_info", __LINE__},
             "Failed to read the output of [%s --get_service_status], it is more than %zu MiB or "
             "%zu LUNs and volumes",
             kTool, kLargestOutput >> 20U, common::kMostElements);
  if (parsed != common::Parsed::Whole) return;
  luns_.swap(luns);
  volumes_.swap(volumes);
  const Json::Value* lowCapacityWrite = common::FindMember(san, "low_capacity_write_on");
  lowCapacityWrite_ =
      lowCapacityWrite != nullptr && lowCapacityWrite->isBool() && lowCapacityWrite->asBool();
  // Static: a name that the library copies fails in its own words when memory is short.
  rawStatus_[Json::StaticString("san")].swap(san);
}

bool SanStatusInfo::HasMember(const char* name) const {
  const Json::Value* san = common::FindMember(rawStatus_, "san");
  return san != nullptr && common::FindMember(*san, name) != nullptr;
}

void SanStatusInfo::LoadLunInfo() {
  if (!HasMember(kLuns)) LogError(kNoLuns, "Failed to load lun info for SAN Manager");
}

void SanStatusInfo::LoadVolumeInfo() {
  if (!HasMember(kVolumes)) LogError(kNoVolumes, "Failed to load volume info for SAN Manager");
}

}  // namespace VELA::SystemHealth

// The appliance's storage manager: spaces (volumes and pools), disks and file systems.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include <json/value.h>

#pragma GCC visibility push(default)

struct FS_INFO;

// u0 / u1 is the used share of the capacity; u2 inodes, of which u3 are free.
struct _tag_volume_usage {
  std::uint64_t u0, u1, u2, u3;
};
static_assert(sizeof(_tag_volume_usage) == 32);

namespace VELA::ZRT {

namespace STORAGE_WEBUTILS {

class Volume {
 public:
  static bool IsSystemVolCrashed();
  // The user-facing name of a mount record: usbshare1-2, sdshare1, satashare1.
  static std::string ToUIUsbSataVolumeStr(const std::string& name);
};

}  // namespace STORAGE_WEBUTILS

namespace STORAGE_MANAGER {

struct SpaceRecord {
  char reserved0[128];
  char path[716];     // mount point, NUL-terminated
  std::int32_t type;  // 1: a volume
  char reserved1[32];
  SpaceRecord* next;
};
static_assert(sizeof(SpaceRecord) == 888);
static_assert(offsetof(SpaceRecord, path) == 128);
static_assert(offsetof(SpaceRecord, type) == 844);
static_assert(offsetof(SpaceRecord, next) == 880);

class Space {
 public:
  explicit Space(int selection);
  ~Space();
  Space(const Space&) = delete;
  Space& operator=(const Space&) = delete;

  const SpaceRecord* GetAll() const;       // owned by this object; null when there is none
  static std::string GetOverviewStatus();  // "normal", "abnormal" or "danger"

 private:
  [[maybe_unused]] void* list_;
};
static_assert(sizeof(Space) == 8);

class Disk {
 public:
  Disk(bool, bool);
  ~Disk();
  Disk(const Disk&) = delete;
  Disk& operator=(const Disk&) = delete;

  // Appends one object per internal disk: "name", "status", "overview_status" and
  // "used_by" (texts), "remote_info" {"disconnect": 1} only for a remote disk that
  // is disconnected.
  bool DumpDisks(const Space& space, Json::Value& array);

 private:
  [[maybe_unused]] void* state_;
};
static_assert(sizeof(Disk) == 8);

class Volume {
 public:
  // On either result a non-null `info` is owed to FSInfoFree.
  static bool GetVolumeFSInfo(const char* path, _tag_volume_usage& usage, FS_INFO*& info);
  static std::string ToJsonSpaceStatus(const SpaceRecord& record);  // "normal", ...
};

class StorageUtil {
 public:
  static std::string ToUISpaceID(int type, const char* path);  // "volume_1"
};

}  // namespace STORAGE_MANAGER
}  // namespace VELA::ZRT

#pragma GCC visibility pop

#include "platform/linux/storage/udev_marks.h"

#include <libudev.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <string_view>

#include "platform/linux/base/open.h"
#include "platform/linux/base/root.h"

namespace linux_platform {
namespace {

using Udev = std::unique_ptr<udev, udev* (*)(udev*)>;
using Device = std::unique_ptr<udev_device, udev_device* (*)(udev_device*)>;

constexpr std::size_t kMostKept = 1024;  // disks come and go for as long as the host runs

// Which version of udev's record of a block device it is; all 0 when there is none.
struct RecordVersion {
  ino_t inode = 0;
  time_t seconds = 0;
  long nanoseconds = 0;
  bool operator==(const RecordVersion&) const = default;
};

RecordVersion ReadRecordVersion(dev_t device) {
  const std::string record = BelowRoot("/run/udev/data/b", std::to_string(major(device)), ":",
                                       std::to_string(minor(device)));
  struct stat status = {};
  if (!Stat(record, status)) return {};
  return {status.st_ino, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
}

struct Answer {
  dev_t device = 0;
  RecordVersion version;
  std::optional<UdevMarks> marks;
};

bool HasProperty(udev_device* device, const char* key, const char* value) {
  const char* set = udev_device_get_property_value(device, key);
  return set != nullptr && std::strcmp(set, value) == 0;
}

bool HasFlashProperty(udev_device* device) {
  udev_list_entry* entry = nullptr;
  udev_list_entry_foreach(entry, udev_device_get_properties_list_entry(device)) {
    if (std::string_view(udev_list_entry_get_name(entry)).starts_with("ID_DRIVE_FLASH"))
      return true;
  }
  return false;
}

Answer AskUdev(const std::string& path) {
  Answer answer;
  const Udev context(udev_new(), udev_unref);
  const Device disk(context ? udev_device_new_from_syspath(context.get(), path.c_str()) : nullptr,
                    udev_device_unref);
  if (!disk) return answer;
  answer.device = udev_device_get_devnum(disk.get());
  // Before the record is read: a later one must not be taken for it.
  answer.version = ReadRecordVersion(answer.device);
  UdevMarks& marks = answer.marks.emplace();
  marks.cardReader = HasProperty(disk.get(), "VELA_SDCARD", "1") || HasFlashProperty(disk.get());
  marks.esata =
      HasProperty(disk.get(), "VELA_BAY", "esata") || HasProperty(disk.get(), "UDISKS_SYSTEM", "0");
  return answer;
}

class KeptAnswers {
 public:
  bool Get(const std::string& path, Answer& answer) {
    const std::lock_guard lock(mutex_);
    const auto found = all_.find(path);
    if (found != all_.end()) answer = found->second;
    return found != all_.end();
  }
  void Keep(const std::string& path, const Answer& answer) {
    const std::lock_guard lock(mutex_);
    if (all_.size() >= kMostKept) all_.clear();
    all_[path] = answer;
  }

 private:
  std::mutex mutex_;
  std::map<std::string, Answer> all_;
};

}  // namespace

std::optional<UdevMarks> ReadUdevMarks(const std::string& path) {
  static KeptAnswers answers;
  Answer answer;
  if (answers.Get(path, answer) && answer.version == ReadRecordVersion(answer.device))
    return answer.marks;
  answer = AskUdev(path);
  if (answer.device != 0) answers.Keep(path, answer);
  return answer.marks;
}

}  // namespace linux_platform

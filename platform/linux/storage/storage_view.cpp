#include "platform/linux/storage/storage_view.h"

#include <cerrno>
#include <cstring>
#include <map>

#include "common/json_reader.h"
#include "platform/linux/base/memo.h"
#include "platform/linux/base/root.h"
#include "platform/linux/base/settings.h"
#include "platform/linux/base/snapshot.h"
#include "platform/linux/base/sysfs.h"
#include "platform/linux/storage/capacity.h"
#include "platform/linux/storage/devices.h"
#include "platform/linux/storage/disks.h"
#include "platform/linux/storage/filesystem_errors.h"
#include "platform/linux/storage/volume_choice.h"

namespace linux_platform {
namespace {

using common::FindMember, common::TextMember;

constexpr std::size_t kTableCap = std::size_t{256} << 10;

std::string TextOf(const char* path) {
  std::string text;
  ReadSmallFile(BelowRoot(path).c_str(), kTableCap, text);
  return text;
}

bool IsNamed(const std::string& text, const std::string& array) {
  constexpr std::string_view kBlanks = " \t\n";
  return HasWord(text, "/dev/" + array, kBlanks) ||
         HasWord(text, "/dev/md/" + array.substr(2), kBlanks);
}

// A device that is gone does not tell any more whether it was a disk in its bay or a stick
// that somebody pulled out.
bool IsExpected(const std::string& target, const std::vector<std::string>& fstab) {
  return target == "/" || target.starts_with("/volume") ||
         std::ranges::find(fstab, target) != fstab.end();
}

class StorageReader {
 public:
  explicit StorageReader(const Settings& settings)
      : settings_(settings), fstab_(TextOf("/etc/fstab")) {}

  StorageView Read() {
    if (!ReadMounts(mounts_))
      view_.failure = std::string("the mount table could not be read: ") + std::strerror(errno);
    Devices devices(*mounts_, settings_.List("esata.ports"));
    devices_ = &devices;
    const std::vector<std::string> blockNames = BlockNames();
    view_.listsDisks = !blockNames.empty();
    ReadArrays(blockNames);
    ReadSystem();
    ReadVolumes();
    ReadDisks(devices, blockNames, arrays_, view_);
    view_.external = ChooseExternal(*mounts_, devices);
    devices_ = nullptr;
    return std::move(view_);
  }

 private:
  void ReadArrays(const std::vector<std::string>& blockNames) {
    std::string expected;
    bool anyMapping = false;
    for (const std::string& name : blockNames) {
      anyMapping = anyMapping || name.starts_with("dm-");
      if (!name.starts_with("md") || !PathExists(Sys("/block/", name, "/md"))) continue;
      if (expected.empty()) expected = fstab_ + "\n" + TextOf("/etc/mdadm/mdadm.conf");
      MdArray array = ReadMdArray(name);
      Health& health = health_[name] = JudgeMd(array, IsNamed(expected, name));
      if (health == Health::Abnormal && IsFirstBuild(array)) health = Health::Normal;
      view_.overview = Worse(view_.overview, health_[name]);
      arrays_.push_back(std::move(array));
    }
    if (anyMapping) ReadMappings();
  }

  // The collector has asked the array when it was made.
  static bool IsFirstBuild(const MdArray& array) {
    if (!LooksLikeFirstBuild(array)) return false;
    Json::Value snapshot;
    std::string reason;
    if (ReadSnapshot("md", snapshot, reason) != SnapshotState::Read) return false;
    const Build build = BuildOf(snapshot, array.name);
    return build == Build::First || build == Build::Unseen;
  }

  // LVM's mirrors and pools answer only root, and may block: the collector asks them.
  void ReadMappings() {
    Json::Value document;
    if (ReadSnapshot("device_mapper", document, view_.diskFailure) != SnapshotState::Read) return;
    view_.diskFailure = TextMember(document, "trouble");
    const Json::Value* objects = FindMember(document, "objects");
    if (objects == nullptr || !objects->isArray()) return;
    for (const Json::Value& object : *objects) {
      const std::string folder = LinkTarget(Sys("/dev/block/", TextMember(object, "device")));
      const std::string text = TextMember(object, "health");
      const Health health = text == "danger"     ? Health::Danger
                            : text == "abnormal" ? Health::Abnormal
                                                 : Health::Normal;
      if (folder.empty() || health == Health::Normal) continue;
      health_[std::string(LastComponent(folder))] = health;
      view_.overview = Worse(view_.overview, health);
    }
  }

  Health HealthBeneath(const Mount& mount) {
    Health health = devices_->BtrfsHealth(mount);
    if (mount.type == "zfs") health = ReadZpool(mount.source.substr(0, mount.source.find('/')));
    for (const std::string& layer : devices_->Under(mount).layers) {
      const auto array = health_.find(layer);
      if (array != health_.end()) health = Worse(health, array->second);
    }
    return health;
  }

  struct Looked {
    Capacity capacity;
    int error = 0;
    bool crashed = false;
  };

  // "/" is asked about twice, as the system volume and as a volume.
  const Looked& LookAt(const Mount& mount, Health beneath) {
    const auto [place, isNew] = looked_.try_emplace(mount.id);
    Looked& looked = place->second;
    if (!isNew) return looked;
    if (!ReadCapacity(mount.target, mount.device, looked.capacity)) looked.error = errno;
    CrashSigns signs = SignsOf(mount, beneath);
    signs.unreadable = looked.error == EIO;  // all that shows of an XFS that has shut down
    looked.crashed = signs.Any();
    return looked;
  }

  CrashSigns SignsOf(const Mount& mount, Health beneath) {
    CrashSigns signs = SignsInMount(mount);
    const Stack& stack = devices_->Under(mount);
    signs.deviceGone = stack.gone;
    signs.deviceFailed = beneath == Health::Danger;
    const Ext4Errors errors = ErrorsOf(mount);
    if (errors.count == 0) return signs;
    view_.overview = Worse(view_.overview, Health::Abnormal);
    signs.errorsStoppedIt = ErrorsStoppedIt(mount, errors, ParseBootTime(TextOf("/proc/stat")));
    return signs;
  }

  Ext4Errors ErrorsOf(const Mount& mount) {
    const Stack& stack = devices_->Under(mount);
    if (!mount.type.starts_with("ext") || stack.layers.empty()) return {};
    return ReadExt4Errors(stack.layers.front());
  }

  void ReadSystem() {
    for (const char* target : {"/", "/var"}) {
      const Mount* mount = MountAt(*mounts_, target);
      if (mount == nullptr || MayHang(mount->type)) continue;
      if (HangingAbove(*mounts_, *mount) != nullptr) continue;
      if (LookAt(*mount, HealthBeneath(*mount)).crashed) view_.systemCrashed = true;
    }
  }

  void ReadVolumes() {
    static Memo<std::vector<std::string>> memo;
    const auto targets = memo.Of(fstab_, ParseFstabTargets);
    const std::vector<std::string>& fstab = *targets;
    const auto isInternal = [&](const Mount& mount) {
      const Stack& stack = devices_->Under(mount);
      if (stack.gone && stack.disks.empty()) return IsExpected(mount.target, fstab);
      return devices_->Class(stack) == DiskClass::Internal;
    };
    const bool skipRoot = settings_.Yes("volume.skip_root");
    const VolumeChoice choice = ChooseVolumes(*mounts_, skipRoot, isInternal);
    if (!choice.hidden.empty()) view_.hidden = WhyHidden(*choice.hidden.front());
    std::vector<std::string> paths;
    for (const Mount* mount : choice.reachable) {
      view_.volumes.push_back(Describe(*mount));
      paths.push_back(mount->target);
    }
    const std::vector<int> numbers = NumberVolumes(paths, fstab, settings_);
    for (std::size_t i = 0; i < numbers.size(); ++i) view_.volumes[i].number = numbers[i];
  }

  std::string WhyHidden(const Mount& mount) const {
    const Mount* above = HangingAbove(*mounts_, mount);
    return mount.target + " was not looked at: it lies behind " + above->target + " (" +
           above->type + "), which may hang";
  }

  InternalVolume Describe(const Mount& mount) {
    InternalVolume volume;
    volume.path = mount.target;
    volume.type = mount.type;
    volume.device = mount.device;
    volume.warningLevel = WarningLevel(settings_, mount.target);
    volume.disks = devices_->Under(mount).disks;
    const Health beneath = HealthBeneath(mount);
    const Looked& looked = LookAt(mount, beneath);
    const bool crashed = looked.crashed;
    volume.capacity = looked.capacity;
    volume.error = looked.error;
    volume.status = crashed                             ? "crashed"
                    : HasWord(mount.superOptions, "ro") ? "read_only"
                    : beneath == Health::Abnormal       ? "degraded"
                                                        : "normal";
    const bool isSystem = mount.target == "/" || mount.target == "/var";
    const Health own = crashed && !isSystem ? Health::Danger : beneath;
    view_.overview = Worse(view_.overview, own);
    return volume;
  }

  const Settings& settings_;
  std::string fstab_;
  MountTable mounts_;
  StorageView view_;
  Devices* devices_ = nullptr;
  std::vector<MdArray> arrays_;
  std::map<std::string, Health> health_;  // of arrays and mappings, by kernel name
  std::map<int, Looked> looked_;          // by mount
};

}  // namespace

StorageView ReadStorage(const Settings& settings) { return StorageReader(settings).Read(); }

}  // namespace linux_platform

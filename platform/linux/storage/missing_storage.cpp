#include "platform/linux/storage/missing_storage.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "platform/linux/base/root.h"
#include "platform/linux/base/sysfs.h"
#include "platform/linux/storage/exports.h"
#include "platform/linux/storage/seen_storage.h"
#include "platform/linux/storage/udev_record.h"
#include "platform/linux/storage/volume_choice.h"
#include "platform/linux/storage/zfs.h"

namespace linux_platform {
namespace {

constexpr std::string_view kUuid = "UUID=";

// As udev writes a label into the name of a link.
std::string EncodeLabel(std::string_view label) {
  constexpr std::string_view kPlain = "#+-.:=@_";
  std::string name;
  for (const char c : label) {
    const auto byte = static_cast<unsigned char>(c);
    if (isalnum(byte) != 0 || byte >= 0x80 || kPlain.find(c) != kPlain.npos) {
      name.push_back(c);
      continue;
    }
    std::array<char, 5> escaped;
    std::snprintf(escaped.data(), escaped.size(), "\\x%02x", byte);
    name.append(escaped.data());
  }
  return name;
}

// The path below /dev that the source of a line stands for.
std::string ToNode(const std::string& source) {
  constexpr std::array<std::pair<std::string_view, std::string_view>, 5> kTags = {
      {{kUuid, "uuid"},
       {"LABEL=", "label"},
       {"PARTUUID=", "partuuid"},
       {"PARTLABEL=", "partlabel"},
       {"ID=", "id"}}};
  for (const auto& [tag, folder] : kTags) {
    if (!source.starts_with(tag)) continue;
    std::string_view value = std::string_view(source).substr(tag.size());
    if (value.size() > 1 && value.front() == '"' && value.back() == '"')
      value = value.substr(1, value.size() - 2);
    return Concatenate("/dev/disk/by-", folder, "/", EncodeLabel(value));
  }
  return source;
}

// "/dev/md0", "/dev/md/data"; "/dev/mdata/x" is a volume of the group "mdata".
bool IsArrayNode(std::string_view node) {
  constexpr std::string_view kArray = "/dev/md";
  const bool isName =
      node.starts_with(kArray) && node.find_first_of("/0123456789", kArray.size()) == kArray.size();
  return isName || node.starts_with("/dev/disk/by-id/md-");
}

// "/volume1"
bool IsNumberedVolume(std::string_view path) {
  constexpr std::string_view kVolume = "/volume";
  return path.starts_with(kVolume) && ToNumber(path.substr(kVolume.size())).has_value();
}

class Finder {
 public:
  Finder(const Mounts& mounts, Devices& devices) : mounts_(mounts), devices_(devices) {}

  bool IsThere(const FstabLine& line) {
    const Mount* mount = mounts_.FindAt(line.target);
    if (mount != nullptr && (mount->type == "autofs" || IsIt(*mount, line))) return true;
    // Something may lie upon it; or a link leads to where it is mounted.
    const auto isBelow = [&](const Mount& each) {
      return each.target == line.target && IsIt(each, line);
    };
    if (mount != nullptr && std::ranges::any_of(mounts_, isBelow)) return true;
    const Mount* linked = mount == nullptr ? FindLinked(line.target) : nullptr;
    return linked != nullptr && IsIt(*linked, line);
  }

  MissingStorage Describe(const FstabLine& line) {
    const std::string device = FindDevice(line.source);
    const Mount* other = mounts_.FindAt(line.target);
    MissingStorage missing;
    missing.name = line.source;
    missing.path = line.target;
    missing.type = line.type;
    missing.health = Judge(line, device);
    missing.what = line.target + " (" + line.source + ")" +
                   (other != nullptr ? " is not what is mounted there" : " is not mounted") + ": " +
                   Explain(line, device);
    missing.remedy = "mount " + line.target +
                     "; where it is gone for good, take its line out of "
                     "/etc/fstab";
    return missing;
  }

 private:
  // Whether what is mounted is the line's own. A label may be that of several disks, and a
  // kernel's name that of another one than last time.
  bool IsIt(const Mount& mount, const FstabLine& line) {
    if (mount.type == "zfs" || line.type == "zfs") return mount.type == line.type;
    const Stack& stack = devices_.GetStack(mount);
    if (stack.layers.empty()) return stack.gone || mount.type == "bcachefs";
    const bool isNode = line.source.starts_with("/dev/");
    if (!line.source.starts_with(kUuid) && !isNode) return true;
    if (isNode && line.source.find('/', 5) == line.source.npos) return true;
    const std::string device = FindDevice(line.source);
    if (device.empty() || std::ranges::find(stack.layers, device) != stack.layers.end())
      return true;
    return ReadUdevPropertyOf(stack.layers.front(), "ID_FS_UUID") ==
           ReadUdevPropertyOf(device, "ID_FS_UUID");  // a copy of it, byte by byte
  }

  const Mount* FindLinked(const std::string& target) const {
    const Mount* above = FindMountOf(mounts_, target);
    if (above == nullptr || MayHang(above->type) || mounts_.FindHangingParent(*above) != nullptr)
      return nullptr;
    const std::string path = BelowRoot(target), leads = LinkTarget(path);
    return leads.empty() || leads == path ? nullptr : mounts_.FindAt(leads.substr(Root().size()));
  }

  Health Judge(const FstabLine& line, const std::string& device) {
    const bool isArray = IsArrayNode(line.source) || device.starts_with("md");
    const Seen seen = Remember(line.source);
    if (seen == Seen::Outside) return Health::Normal;
    const bool isDanger = !HasWord(line.options, "nofail") || isArray || seen == Seen::Inside ||
                          IsNumberedVolume(line.target) || exports_.Contain(line.target);
    return isDanger ? Health::Danger : Health::Abnormal;
  }

  // What is there now, or else was there when the collector last saw it.
  Seen Remember(const std::string& source) {
    if (const auto inside = IsInside(source, devices_))
      return *inside ? Seen::Inside : Seen::Outside;
    if (source.starts_with("/dev/disk/by-id/usb-")) return Seen::Outside;
    if (!seen_) seen_ = ReadSeenStorage();
    return seen_->Find(source);
  }

  std::string Explain(const FstabLine& line, const std::string& device) const {
    if (line.type == "zfs") return "its pool is not imported, or does not mount it";
    if (device.empty()) return "there is no such device";
    return ReadUdevPropertyOf(device, "ID_BTRFS_READY") == "0"
               ? "another member of its btrfs is missing beside " + device
               : "its device is there, " + device;
  }

  const Mounts& mounts_;
  Devices& devices_;
  std::optional<SeenStorage> seen_;  // none: not read yet
  Exports exports_;
};

MissingStorage Describe(const ExpectedArray& array) {
  MissingStorage missing;
  missing.kind = MissingStorage::Kind::Array;
  missing.name = NameArray(array);
  missing.health = Health::Danger;
  missing.what = "the array " + missing.name + " of mdadm.conf is not there";
  missing.remedy =
      "mdadm --assemble --scan; where it is gone for good, take its line out of "
      "mdadm.conf";
  return missing;
}

MissingStorage Describe(const ExpectedSnapshot::Group& group) {
  return {MissingStorage::Kind::Group,
          group.name,
          group.health,
          "the volume group " + group.name + " misses " + group.why,
          "vgs -o +vg_missing_pv_count " + group.name,
          "",
          ""};
}

MissingStorage DescribePool(const std::string& pool) {
  return {MissingStorage::Kind::Pool,
          pool,
          Health::Danger,
          "the ZFS pool " + pool + " is not imported",
          "zpool import " + pool,
          "",
          ""};
}

}  // namespace

std::string FindDevice(const std::string& source) {
  const std::string node = BelowRoot(ToNode(source));
  const std::string leads = LinkTarget(node);
  return std::string(leads.empty() ? std::string_view() : LastComponent(leads));
}

std::optional<bool> IsInside(const std::string& source, Devices& devices) {
  const std::string device = FindDevice(source);
  if (device.empty()) return {};
  const Stack stack = ReadStack(std::string_view(device));
  if (stack.layers.empty()) return {};
  return devices.Classify(stack) == DiskClass::Internal;
}

std::optional<bool> IsInside(const Mount& mount, Devices& devices) {
  const Stack& stack = devices.GetStack(mount);
  if (stack.disks.empty()) return {};
  return devices.Classify(stack) == DiskClass::Internal;
}

std::vector<MissingStorage> FindMissing(const Mounts& mounts, const Fstab& fstab, Devices& devices,
                                        Redundancy& redundancy) {
  std::vector<MissingStorage> missing;
  Finder finder(mounts, devices);
  AddTrouble(fstab.unread, redundancy.failures);
  for (const FstabLine& line : fstab.storage)
    if (!finder.IsThere(line)) missing.push_back(finder.Describe(line));
  for (const ExpectedArray& array : redundancy.missing) missing.push_back(Describe(array));
  for (const ExpectedSnapshot::Group& group : redundancy.groups) missing.push_back(Describe(group));
  for (const std::string& pool : ListMissingZpools(redundancy.failures))
    missing.push_back(DescribePool(pool));
  if (!missing.empty() && IsContainer(mounts)) missing.clear();
  std::ranges::stable_sort(missing, std::ranges::greater(), &MissingStorage::health);
  return missing;
}

}  // namespace linux_platform

#include "platform/linux/storage/block.h"

#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <algorithm>
#include <array>
#include <utility>

#include "platform/linux/base/sysfs.h"
#include "platform/linux/storage/disk_class.h"

namespace linux_platform {
namespace {

constexpr int kDeepest = 8;  // layers of mapping; a loop in a broken tree ends here

void AddOnce(std::vector<std::string>& names, std::string name) {
  if (std::ranges::find(names, name) == names.end()) names.push_back(std::move(name));
}

// Parts of a mapping that can do without one of them, or tells by itself that it cannot. A cache is
// none: what it holds cannot be read without it, nor found elsewhere while it is written back.
bool IsOneOfSeveral(const std::string& folder) {
  const std::string name = Attribute(Within(folder, "dm/name"));
  const auto has = [&name](const char* part) { return name.find(part) != name.npos; };
  return std::ranges::any_of(std::array{"_rimage_", "_rmeta_", "_mimage_", "_mlog"}, has);
}

bool HasPaths(const std::string& folder) {
  const std::string uuid = Attribute(Within(folder, "dm/uuid"));
  return uuid.starts_with("mpath-") || uuid.starts_with("DMRAID-");
}

void Descend(const std::string& folder, Stack& stack, int depth);

// `below`: the names in the folder's slaves/. The link to a disk that was pulled stays, and leads
// nowhere.
void DescendAll(const std::string& folder, const std::vector<std::string>& below, Stack& stack,
                int depth) {
  std::size_t lost = 0;
  for (const std::string& name : below) {
    const std::string next = LinkTarget(Concatenate(folder, "/slaves/", name));
    if (next.empty()) continue;
    const bool wasGone = std::exchange(stack.gone, false);
    if (PathExists(next)) {
      Descend(next, stack, depth + 1);
      if (stack.gone && !IsOneOfSeveral(next)) ++lost;
    } else {
      ++lost;
      // A stick is nobody's loss; a disk of this machine is, and stays one of its disks.
      if (!HasUsbHub(next)) AddOnce(stack.disks, name);
    }
    stack.gone = wasGone;
  }
  if (lost == 0 || LastComponent(folder).starts_with("md")) return;
  if (lost == below.size() || !HasPaths(folder)) stack.gone = true;
}

void Descend(const std::string& folder, Stack& stack, int depth) {
  if (depth > kDeepest) return;
  const std::string_view name = LastComponent(folder);
  AddOnce(stack.layers, std::string(name));
  if (IsDiskName(name)) {
    AddOnce(stack.disks, std::string(name));
    return;
  }
  // Of a disk or of an array, which has its own members.
  if (PathExists(Within(folder, "partition"))) {
    Descend(folder.substr(0, folder.rfind('/')), stack, depth + 1);
    return;
  }
  const std::vector<std::string> below = NamesIn(Within(folder, "slaves"));
  DescendAll(folder, below, stack, depth);
  if (below.empty()) AddOnce(stack.disks, std::string(name));
}

// The stack under the device that `name` in the folder `links` leads to. The folder is missing
// where /sys lists no devices at all.
Stack ReadStackFrom(const std::string& links, std::string_view name) {
  Stack stack;
  const std::string folder = LinkTarget(Within(links, name));
  if (folder.empty()) {
    stack.gone = PathExists(links);
    return stack;
  }
  Descend(folder, stack, 0);
  if (NumberAttribute(Within(folder, "size")) == 0) stack.gone = true;
  return stack;
}

std::string FormatNumber(dev_t device) {
  return std::to_string(major(device)) + ":" + std::to_string(minor(device));
}

// What follows the digits that `text` begins with.
std::string_view SkipDigits(std::string_view text) {
  return text.substr(std::min(text.find_first_not_of("0123456789"), text.size()));
}

}  // namespace

Stack ReadStack(dev_t device) { return ReadStackFrom(Sys("/dev/block"), FormatNumber(device)); }

Stack ReadStack(std::string_view node) {
  struct stat status = {};
  if (node.starts_with("/dev/") && stat(std::string(node).c_str(), &status) == 0 &&
      S_ISBLK(status.st_mode) && PathExists(Sys("/dev/block/", FormatNumber(status.st_rdev))))
    return ReadStack(status.st_rdev);
  return ReadStackFrom(Sys("/class/block"), LastComponent(node));
}

std::string GetWholeDisk(const std::string& folder) {
  if (!PathExists(Within(folder, "partition"))) return std::string(LastComponent(folder));
  return std::string(LastComponent(std::string_view(folder).substr(0, folder.rfind('/'))));
}

std::string FindDiskOf(const std::string& device) {
  if (IsDiskName(device)) return device;
  const std::string folder = LinkTarget(Sys("/class/block/", device));
  return folder.empty() ? device : GetWholeDisk(folder);
}

std::string FindHolder(const std::string& device) {
  const std::string folder = Sys("/block/", device);
  std::vector<std::string> holders = NamesIn(Within(folder, "holders"));
  for (const std::string& entry : NamesIn(folder))
    if (holders.empty() && entry.starts_with(device))
      holders = NamesIn(Concatenate(folder, "/", entry, "/holders"));
  return holders.empty() ? std::string() : holders.front();
}

std::vector<std::string> ListBlockDevices() { return NamesIn(Sys("/block")); }

bool IsDiskName(std::string_view name) {
  for (const std::string_view prefix : {"sd", "vd", "xvd"}) {
    const std::string_view letters = name.substr(std::min(prefix.size(), name.size()));
    if (name.starts_with(prefix) && !letters.empty() &&
        letters.find_first_not_of("abcdefghijklmnopqrstuvwxyz") == std::string_view::npos)
      return true;
  }
  if (name.starts_with("mmcblk")) return name.size() > 6 && SkipDigits(name.substr(6)).empty();
  if (!name.starts_with("nvme")) return false;
  const std::string_view rest = SkipDigits(name.substr(4));
  return rest.size() > 1 && rest.front() == 'n' && SkipDigits(rest.substr(1)).empty();
}

}  // namespace linux_platform

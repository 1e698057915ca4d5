#include "platform/linux/storage/external_choice.h"

#include <sys/sysmacros.h>

#include <algorithm>
#include <array>
#include <set>
#include <tuple>

#include "platform/linux/base/sysfs.h"

namespace linux_platform {
namespace {

constexpr std::array<std::string_view, 4> kAlwaysFull = {"iso9660", "udf", "squashfs", "erofs"};
constexpr std::array<std::string_view, 3> kShares = {"usbshare", "sdshare", "satashare"};

std::string_view GetShareWord(DiskClass kind) {
  if (kind == DiskClass::SdCard) return kShares[1];
  return kShares[kind == DiskClass::Esata ? 2 : 0];
}

struct Candidate {
  const Mount* mount;
  const Stack* stack;
  DiskClass kind;
  std::string place;  // of its disk
  const std::string& Disk() const { return stack->disks.front(); }
};

bool MayBeExternal(const Mounts& mounts, const Mount& mount) {
  if (major(mount.device) == 0 && mount.type != "btrfs" && mount.type != "fuseblk") return false;
  return std::ranges::find(kAlwaysFull, mount.type) == kAlwaysFull.end() &&
         !HasWord(mount.options, "ro") && !HasWord(mount.superOptions, "ro") &&
         mounts.FindAt(mount.target) == &mount && mounts.FindHangingParent(mount) == nullptr;
}

std::vector<Candidate> ListCandidates(const Mounts& mounts, Devices& devices) {
  std::vector<Candidate> candidates;
  std::set<std::string> seen;
  for (const Mount& mount : mounts) {
    if (!MayBeExternal(mounts, mount)) continue;
    const Stack& stack = devices.GetStack(mount);
    const DiskClass kind = devices.Classify(stack);
    if (kind == DiskClass::Internal || !seen.insert(stack.layers.front()).second) continue;
    candidates.push_back({&mount, &stack, kind, devices.GetFacts(stack.disks.front()).place});
  }
  std::ranges::stable_sort(candidates, {}, [](const Candidate& each) {
    return std::tie(each.kind, each.place, each.Disk(), each.stack->layers.front());
  });
  return candidates;
}

// "-2" on the second partition of several; empty on a disk's only one.
std::string MakePartitionSuffix(const Candidate& candidate) {
  const std::string folder = LinkTarget(Sys("/class/block/", candidate.Disk()));
  int partitions = 0;
  std::string own;
  for (const std::string& entry : NamesIn(folder)) {
    if (!entry.starts_with(candidate.Disk())) continue;
    const std::string number = Attribute(Concatenate(folder, "/", entry, "/partition"));
    if (number.empty()) continue;
    ++partitions;
    const auto& layers = candidate.stack->layers;
    if (std::ranges::find(layers, entry) != layers.end()) own = number;
  }
  return partitions > 1 && !own.empty() ? "-" + own : std::string();
}

using ShareNames = std::set<std::string, std::less<>>;

// Whether a share, or a partition of it, has the name already.
bool IsTaken(const std::string& name, const ShareNames& taken) {
  const auto next = taken.lower_bound(name);
  return next != taken.end() && (*next == name || next->starts_with(name + "-"));
}

std::string_view TakeDigits(std::string_view text) {
  return text.substr(0, std::min(text.find_first_not_of("0123456789"), text.size()));
}

}  // namespace

bool IsShareName(std::string_view name) {
  const auto share =
      std::ranges::find_if(kShares, [name](auto each) { return name.starts_with(each); });
  if (share == kShares.end()) return false;
  name.remove_prefix(share->size());
  const std::string_view number = TakeDigits(name);
  if (number.empty() || number.size() > 6) return false;
  name.remove_prefix(number.size());
  if (name.empty()) return true;
  if (name.front() != '-') return false;
  name.remove_prefix(1);
  return !name.empty() && name.size() <= 6 && TakeDigits(name) == name;
}

std::vector<ExternalVolume> ChooseExternal(const Mounts& mounts, Devices& devices) {
  const std::vector<Candidate> candidates = ListCandidates(mounts, devices);
  ShareNames taken;
  for (const Candidate& each : candidates)
    if (IsShareName(LastComponent(each.mount->target)))
      taken.emplace(LastComponent(each.mount->target));

  std::vector<ExternalVolume> volumes;
  int rank = 0;
  const Candidate* last = nullptr;
  std::string base;
  for (const Candidate& each : candidates) {
    if (last == nullptr || last->kind != each.kind) rank = 0;
    if (last == nullptr || last->kind != each.kind || last->Disk() != each.Disk()) {
      do base = std::string(GetShareWord(each.kind)) + std::to_string(++rank);
      while (IsTaken(base, taken));
    }
    last = &each;
    const std::string_view own = LastComponent(each.mount->target);
    volumes.push_back({each.kind,
                       IsShareName(own) ? std::string(own) : base + MakePartitionSuffix(each),
                       each.mount->target, each.mount->device, each.mount->type == "fuseblk"});
  }
  return volumes;
}

}  // namespace linux_platform

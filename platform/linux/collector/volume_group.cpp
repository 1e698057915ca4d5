#include "platform/linux/collector/volume_group.h"

#include <algorithm>
#include <array>
#include <sstream>

namespace linux_platform {
namespace {

// What stands between the first two quotes; "" without any.
std::string Unquote(std::string_view text) {
  const std::size_t first = text.find('"');
  if (first == text.npos) return {};
  const std::string_view rest = text.substr(first + 1);
  return std::string(rest.substr(0, rest.find('"')));
}

// Parts of mirrors and RAID volumes, which tell by themselves what they lost.
bool HasCopies(const std::string& volume) {
  const auto has = [&volume](const char* part) { return volume.find(part) != volume.npos; };
  return std::ranges::any_of(std::array{"_rimage_", "_rmeta_", "_mimage_", "_mlog"}, has);
}

// The sections that a line lies in: group, "physical_volumes", "pv0".
using Sections = std::vector<std::string>;

void ReadLine(std::string_view line, const Sections& in, VolumeGroup& group) {
  if (in.size() < 3) return;
  if (in[1] == "physical_volumes" && in.size() == 3) {
    if (line.starts_with("id =")) group.disks[in[2]].id = Unquote(line);
    if (line.starts_with("device =")) group.disks[in[2]].device = Unquote(line);
  }
  // "pv0", 0: a place on a disk, in a list of a segment.
  if (in[1] == "logical_volumes" && in.size() == 4 && line.starts_with('"'))
    group.users[Unquote(line)].push_back(in[2]);
}

}  // namespace

VolumeGroup ParseVolumeGroup(std::string_view text) {
  VolumeGroup group;
  Sections in;
  std::istringstream lines{std::string(text)};
  for (std::string whole; std::getline(lines, whole);) {
    std::string_view line = whole;
    line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
    if (line.starts_with('}')) {
      if (!in.empty()) in.pop_back();
    } else if (line.ends_with('{')) {
      in.emplace_back(line.substr(0, line.find(' ')));
    } else {
      ReadLine(line, in, group);
    }
  }
  return group;
}

std::optional<LostDisks> FindLost(const VolumeGroup& group, const std::set<std::string>& there) {
  LostDisks lost;
  std::size_t count = 0;
  for (const auto& [name, disk] : group.disks) {
    if (there.contains(disk.id)) continue;
    ++count;
    lost.why += (lost.why.empty() ? "" : ", ") + disk.device + " (" + disk.id + ")";
    const auto users = group.users.find(name);
    if (users != group.users.end() && !std::ranges::all_of(users->second, HasCopies))
      lost.health = Health::Danger;
  }
  if (count == 0 || count == group.disks.size()) return {};
  return lost;
}

}  // namespace linux_platform

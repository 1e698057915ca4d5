// The tables of text that the Linux platform reads: mounts, fstab, swaps, settings, and
// an array's attributes. What comes out must keep what the callers rely on.
#include <cstdlib>
#include <string>

#include "platform/linux/base/settings.h"
#include "platform/linux/storage/filesystem.h"
#include "platform/linux/storage/md.h"
#include "platform/linux/storage/mounts.h"
#include "platform/linux/storage/volume_choice.h"
#include "vela_storage.h"

namespace {

using namespace linux_platform;

void Require(bool holds) {
  if (!holds) std::abort();
}

void Tables(const std::string& text) {
  const std::vector<Mount> mounts = ParseMountInfo(text);
  const Settings settings(text);
  const std::vector<std::string> fstab = ParseFstabTargets(text);
  std::vector<std::string> paths;
  for (const Mount* mount :
       ChooseVolumes(mounts, false, [](const Mount&) { return true; }).reachable) {
    Require(mount->target.size() < sizeof VELA::ZRT::STORAGE_MANAGER::SpaceRecord::path);
    Require(FindHangingParent(mounts, *mount) == nullptr);
    const float level = GetWarningLevel(settings, mount->target);
    Require(level >= 0 && level <= 1);
    FindCrashSigns(*mount);
    paths.push_back(mount->target);
  }
  std::vector<int> numbers = NumberVolumes(paths, fstab, settings);
  std::ranges::sort(numbers);
  Require(numbers.empty() || numbers.front() > 0);
  Require(std::ranges::adjacent_find(numbers) == numbers.end());
  for (const std::string& area : ParseSwaps(text)) Require(area.starts_with('/'));
  ParseBootTime(text);
}

// Attributes parted by line ends, members three lines each.
void Array(const std::string& text) {
  std::vector<std::string> lines(1);
  for (const char each : text) {
    if (each == '\n')
      lines.emplace_back();
    else
      lines.back() += each;
  }
  lines.resize(std::max<std::size_t>(lines.size(), 5));
  MdArray array;
  array.level = lines[0];
  array.state = lines[1];
  array.metadata = lines[2];
  array.disks = std::atoi(lines[3].c_str());
  array.degraded = std::atoi(lines[4].c_str());
  for (std::size_t i = 5; i + 2 < lines.size(); i += 3)
    array.members.push_back({lines[i], lines[i + 1], lines[i + 2], !lines[i].empty()});
  Require(JudgeMd(array, true) >= JudgeMd(array, false));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  Tables(text);
  Array(text);
  return 0;
}

#include <boost/algorithm/string/join.hpp>

#include "SystemChecker/checkers.h"
#include "SystemInfo/system_info_handler.h"

namespace VELA::SystemHealth {
namespace {

using enum CheckerRuleType;

CheckerRule MakeVolumeUsageRule(const std::vector<std::string>& names, const std::string& key,
                                CheckerRuleType type, double priority) {
  std::vector<std::string> pieces;
  pieces.reserve(names.size());
  for (const std::string& name : names) pieces.push_back("{0} " + name);
  return CheckerRule(type, priority, "volume_usage",
                     Description::AdditionalDescription(
                         boost::algorithm::join(pieces, ", ") + "{1} {2}",
                         {{"volume", "volume"}, {"common", "colon"}, {"widget", key}}));
}

// What a volume is called in front of the user is its identifier: Volume 1.
template <typename Predicate>
std::vector<std::string> NamesOfVolumes(const SystemInfoHandler& info, Predicate isAffected) {
  std::vector<std::string> names;
  for (const VolumeUsageInfo& volume : info.GetStorageInfo().GetVolumes())
    if (isAffected(volume)) names.push_back(volume.volumeId);
  return names;
}

}  // namespace

// Space before inodes: the first stage that finds anything ends the check. A model
// without internal disks gets a warning where others get a notice.
std::optional<CheckerRule> VolumeUsageChecker(const SystemInfoHandler& info) {
  const VelaConfInfo& conf = info.GetVelaConfInfo();

  const bool noDisks = conf.DefCheckValue("maxdisks", "0", false);
  const auto lowOnSpace = NamesOfVolumes(
      info, [](const VolumeUsageInfo& volume) { return volume.WarningOutOfSpace(); });
  if (!lowOnSpace.empty())
    return noDisks
               ? MakeVolumeUsageRule(lowOnSpace, "available_volume_space_warning", Warning, 9.0)
               : MakeVolumeUsageRule(lowOnSpace, "available_volume_space_warning", Normal, 30.0);

  const double ratio = conf.InfoDouble("disk_inode_warning_percent", 0.05);
  const bool stillNoDisks = conf.DefCheckValue("maxdisks", "0", false);
  const auto lowOnInodes = NamesOfVolumes(
      info, [ratio](const VolumeUsageInfo& volume) { return volume.WarningOutOfInode(ratio); });
  if (lowOnInodes.empty()) return std::nullopt;
  return stillNoDisks
             ? MakeVolumeUsageRule(lowOnInodes, "usb_available_inode_full_warning", Warning, 9.0)
             : MakeVolumeUsageRule(lowOnInodes, "available_inode_full_warning", Normal, 30.0);
}

}  // namespace VELA::SystemHealth

#include <boost/algorithm/string/join.hpp>

#include "SystemChecker/checkers.h"
#include "SystemChecker/predicates.h"

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

bool HasNoBays(const VelaConfInfo& conf) { return conf.DefCheckValue("maxdisks", "0", false); }

// Space before inodes: the first stage that finds anything ends the check. A model
// without disk bays gets a warning where others get a notice; each stage asks the settings for
// itself.
std::optional<CheckerRule> VolumeUsageChecker(const SystemInfoHandler& info) {
  const VelaConfInfo& conf = info.GetVelaConfInfo();

  const bool noBays = HasNoBays(conf);
  const auto lowOnSpace = NamesOfVolumes(
      info, [](const VolumeUsageInfo& volume) { return volume.WarningOutOfSpace(); });
  if (!lowOnSpace.empty())
    return noBays ? MakeVolumeUsageRule(lowOnSpace, "available_volume_space_warning", Warning, 9.0)
                  : MakeVolumeUsageRule(lowOnSpace, "available_volume_space_warning", Normal, 30.0);

  const double mark = conf.InfoDouble(kInodeMarkKey, kUsualMark);
  const bool stillNoBays = HasNoBays(conf);
  const auto lowOnInodes = NamesOfVolumes(
      info, [mark](const VolumeUsageInfo& volume) { return volume.WarningOutOfInode(mark); });
  if (lowOnInodes.empty()) return std::nullopt;
  return stillNoBays
             ? MakeVolumeUsageRule(lowOnInodes, "usb_available_inode_full_warning", Warning, 9.0)
             : MakeVolumeUsageRule(lowOnInodes, "available_inode_full_warning", Normal, 30.0);
}

}  // namespace VELA::SystemHealth

#include <boost/regex.hpp>

#include "SystemChecker/checkers.h"
#include "SystemInfo/system_info_handler.h"

namespace VELA::SystemHealth {
namespace {

using enum CheckerRuleType;

// The share's number when the whole name is of the given form; null otherwise. A regular
// expression lives for one volume: nothing is kept between requests.
std::optional<std::string> ShareNumber(const std::string& name, const char* form) {
  boost::smatch match;
  if (!boost::regex_match(name, match, boost::regex(form))) return std::nullopt;
  return match.str(1);
}

FormatUnit UsbUnit(const std::string& name) {
  if (const auto number = ShareNumber(name, "^usbshare(\\d-*\\d*)"))
    return {"USB {} " + *number, TextReference("rsrcmonitor", "disk")};
  return {name, std::nullopt};
}

FormatUnit SdCardUnit(const std::string& name) {
  if (const auto number = ShareNumber(name, "^sdshare(\\d-*\\d*)"))
    return {"{} " + *number, TextReference("tree", "leaf_sdcard")};
  return {name, std::nullopt};
}

// Always "1", whatever the share's number: a model has one eSATA port.
FormatUnit EsataUnit(const std::string& name) {
  if (name.find("satashare") != name.npos)
    return {"eSATA {} 1", TextReference("rsrcmonitor", "disk")};
  return {name, std::nullopt};
}

struct DeviceKind {
  ExternalVolumeType type;
  const char* thresholdKey;  // a fraction of the total size: 0.05 is five per cent
  FormatUnit (*unit)(const std::string& name);
};

constexpr DeviceKind kDeviceKinds[] = {
    {ExternalVolumeType::Usb, "usb_partition_warning_percent", UsbUnit},
    {ExternalVolumeType::SdCard, "sdcard_partition_warning_percent", SdCardUnit},
    {ExternalVolumeType::Esata, "esata_partition_warning_percent", EsataUnit},
};

// A total of zero is never low: the ratio is infinite or not a number.
bool IsLow(const ExternalVolume& volume, double threshold) {
  return threshold > static_cast<double>(volume.freeSize) / static_cast<double>(volume.totalSize);
}

}  // namespace

// One finding names every low volume of the first kind that has one.
std::optional<CheckerRule> ExternalVolumeChecker(const SystemInfoHandler& info) {
  const VelaConfInfo& conf = info.GetVelaConfInfo();
  for (const DeviceKind& kind : kDeviceKinds) {
    const bool noDisks = conf.DefCheckValue("maxdisks", "0", false);
    const double threshold = conf.InfoDouble(kind.thresholdKey, 0.05);

    StringFormatter formatter{", ", "{}"};
    for (const ExternalVolume& volume : info.GetExternalVolumeInfo().GetExternalVolumes(kind.type))
      if (IsLow(volume, threshold)) formatter.Push(kind.unit(volume.volume));
    if (formatter.Empty()) continue;

    Description description = formatter.PopDescription(
        "{} {}",
        {{"common", "colon"}, {"externaldevice", "externaldevice_available_space_warning"}});
    return noDisks ? CheckerRule(Warning, 9.0, "external_volume", std::move(description))
                   : CheckerRule(Normal, 30.0, "external_volume", std::move(description));
  }
  return std::nullopt;
}

}  // namespace VELA::SystemHealth

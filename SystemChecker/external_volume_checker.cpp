#include <boost/regex.hpp>

#include "SystemChecker/checkers.h"
#include "SystemChecker/predicates.h"

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

FormatUnit UnitName(ExternalVolumeType type, const std::string& name) {
  switch (type) {
    case ExternalVolumeType::Usb:
      return UsbUnit(name);
    case ExternalVolumeType::SdCard:
      return SdCardUnit(name);
    case ExternalVolumeType::Esata:
      break;
  }
  return EsataUnit(name);
}

}  // namespace

const char* ExternalVolumeMarkKey(ExternalVolumeType type) {
  switch (type) {
    case ExternalVolumeType::Usb:
      return "usb_partition_warning_percent";
    case ExternalVolumeType::SdCard:
      return "sdcard_partition_warning_percent";
    case ExternalVolumeType::Esata:
      break;
  }
  return "esata_partition_warning_percent";
}

// A total of zero is never low: the ratio is infinite or not a number.
bool IsShortOfSpace(const ExternalVolume& volume, double mark) {
  return mark > static_cast<double>(volume.freeSize) / static_cast<double>(volume.totalSize);
}

// One finding names every low volume of the first kind that has one.
std::optional<CheckerRule> ExternalVolumeChecker(const SystemInfoHandler& info) {
  const VelaConfInfo& conf = info.GetVelaConfInfo();
  for (const ExternalVolumeType type : kExternalVolumeTypes) {
    const bool noBays = HasNoBays(conf);
    const double mark = conf.InfoDouble(ExternalVolumeMarkKey(type), kUsualMark);

    StringFormatter formatter{", ", "{}"};
    for (const ExternalVolume& volume : info.GetExternalVolumeInfo().GetExternalVolumes(type))
      if (IsShortOfSpace(volume, mark)) formatter.Push(UnitName(type, volume.volume));
    if (formatter.Empty()) continue;

    Description description = formatter.PopDescription(
        "{} {}",
        {{"common", "colon"}, {"externaldevice", "externaldevice_available_space_warning"}});
    return noBays ? CheckerRule(Warning, 9.0, "external_volume", std::move(description))
                  : CheckerRule(Normal, 30.0, "external_volume", std::move(description));
  }
  return std::nullopt;
}

}  // namespace VELA::SystemHealth

#include "platform/linux/smart/smart_snapshot.h"

#include <algorithm>

#include "common/json_reader.h"
#include "platform/linux/base/snapshot.h"

namespace linux_platform {
namespace {

using common::FindMember, common::MemberName, common::SizeMember, common::TextMember;

constexpr const char *kDaemon = "smartd", *kDrives = "drives", *kWithout = "without";
constexpr const char *kDevice = "device", *kSerial = "serial", *kType = "type", *kRead = "read",
                     *kRotating = "rotating", *kCurrent = "current", *kFigures = "figures",
                     *kEarlier = "earlier", *kWarnings = "warnings", *kLast = "last",
                     *kBits = "bits";

Json::Value ToJson(const DriveFigures& figures) {
  Json::Value members(Json::objectValue);
  for (const auto& [name, value] : figures) members[name] = Json::UInt64{value};
  return members;
}

Json::Value ToJson(const DriveWarnings& warnings) {
  Json::Value members(Json::objectValue);
  for (const auto& [kind, warning] : warnings) {
    members[kind][kLast] = Json::Int64{warning.last};
    members[kind][kBits] = warning.bits;
  }
  return members;
}

Json::Value ToJson(const DriveRecord& drive) {
  Json::Value entry(Json::objectValue);
  entry[kDevice] = drive.device;
  entry[kSerial] = drive.serial;
  entry[kType] = drive.type;
  entry[kRead] = Json::Int64{drive.read};
  entry[kRotating] = drive.rotating;
  entry[kCurrent] = drive.current;
  entry[kFigures] = ToJson(drive.figures);
  if (!drive.earlier.empty()) entry[kEarlier] = ToJson(drive.earlier);
  if (!drive.warnings.empty()) entry[kWarnings] = ToJson(drive.warnings);
  return entry;
}

bool IsTrue(const Json::Value& entry, const char* name) {
  const Json::Value* member = FindMember(entry, name);
  return member != nullptr && member->isBool() && member->asBool();
}

DriveFigures FiguresFromJson(const Json::Value* members) {
  DriveFigures figures;
  if (members == nullptr || !members->isObject()) return figures;
  for (auto each = members->begin(); each != members->end(); ++each)
    figures[std::string(MemberName(each))] = SizeMember(*members, each.name().c_str());
  return figures;
}

DriveWarnings WarningsFromJson(const Json::Value* members) {
  DriveWarnings warnings;
  if (members == nullptr || !members->isObject()) return warnings;
  for (auto each = members->begin(); each != members->end(); ++each)
    warnings[std::string(MemberName(each))] = {static_cast<std::time_t>(SizeMember(*each, kLast)),
                                               static_cast<unsigned>(SizeMember(*each, kBits))};
  return warnings;
}

DriveRecord DriveFromJson(const Json::Value& entry) {
  return {TextMember(entry, kDevice),
          TextMember(entry, kSerial),
          TextMember(entry, kType),
          IsTrue(entry, kRotating),
          IsTrue(entry, kCurrent),
          static_cast<std::time_t>(SizeMember(entry, kRead)),
          FiguresFromJson(FindMember(entry, kFigures)),
          FiguresFromJson(FindMember(entry, kEarlier)),
          WarningsFromJson(FindMember(entry, kWarnings))};
}

}  // namespace

const DriveRecord* SmartSnapshot::FindDrive(std::string_view device) const {
  const auto found = std::ranges::lower_bound(drives, device, {}, &DriveRecord::device);
  return found == drives.end() || found->device != device ? nullptr : &*found;
}

Json::Value SmartSnapshot::ToJson() const {
  Json::Value members(Json::objectValue);
  members[kDaemon] = daemon;
  Json::Value& list = members[kDrives] = Json::Value(Json::arrayValue);
  for (const DriveRecord& drive : drives) list.append(linux_platform::ToJson(drive));
  Json::Value& others = members[kWithout] = Json::Value(Json::arrayValue);
  for (const std::string& device : without) others.append(device);
  return members;
}

SmartSnapshot SmartSnapshot::FromJson(const Json::Value& document) {
  SmartSnapshot snapshot;
  snapshot.daemon = TextMember(document, kDaemon);
  for (const Json::Value& entry : ListMember(document, kDrives))
    snapshot.drives.push_back(DriveFromJson(entry));
  for (const Json::Value& device : ListMember(document, kWithout))
    snapshot.without.emplace_back(common::ViewText(device));
  std::ranges::stable_sort(snapshot.drives, {}, &DriveRecord::device);
  std::ranges::sort(snapshot.without);
  return snapshot;
}

}  // namespace linux_platform

#include "host/answer/parts.h"

#include <utility>

#include "host/answer/sources.h"
#include "host/text/escape.h"

namespace host {
namespace {

using source_status::PartKind, source_status::PartState;

std::string FormatPartText(const char* key, const std::string& value, const Texts& texts) {
  return FillPlaceholders(texts.Resolve(std::string("part:") + key), {value});
}

// "Volume 1" for "volume_1"; other names are as people gave them.
std::string NameVolume(const std::string& name, const Texts& texts) {
  constexpr std::string_view kVolume = "volume_";
  return name.starts_with(kVolume) ? FormatPartText("volume", name.substr(kVolume.size()), texts)
                                   : name;
}

}  // namespace

Parts::Parts(std::vector<VELAPart> list) : list_(std::move(list)) {
  for (std::size_t place = 0; place < list_.size(); ++place) {
    byName_.try_emplace(list_[place].name, place);
    byMountPoint_.try_emplace(list_[place].mountPoint, place);
  }
}

const VELAPart* Parts::Look(const Places& places, std::string_view key) const {
  const auto found = places.find(key);
  return found != places.end() ? &list_[found->second] : nullptr;
}

const VELAPart* FindPart(const Parts& parts, std::string_view name) { return parts.Find(name); }

std::string NamePart(const VELAPart& part, const Texts& texts) {
  std::string name = Sanitize(part.name);
  if (part.kind == PartKind::Ups) return FormatPartText("UPS", name, texts);
  constexpr std::string_view kSupply = "Power supply ";
  if (part.kind == PartKind::Supply && name.starts_with(kSupply))
    return FormatPartText("supply", name.substr(kSupply.size()), texts);
  return part.kind == PartKind::Volume ? NameVolume(name, texts) : name;
}

// The nearest of the places that are known.
std::string FormatPlace(const VELAPart& part, const Texts& texts) {
  if (part.bay[0] != '\0') return FormatPartText("bay", Sanitize(part.bay), texts);
  if (part.slot[0] != '\0') return FormatPartText("slot", Sanitize(part.slot), texts);
  if (part.port[0] != '\0') return FormatPartText("port", Sanitize(part.port), texts);
  return Sanitize(part.mountPoint);
}

std::string FormatDetails(const VELAPart& part, const Parts& parts, const Texts& texts) {
  std::vector<std::string> details = {FormatPlace(part, texts), Sanitize(part.model)};
  if (part.serial[0] != '\0')
    details.push_back(FormatPartText("serial", Sanitize(part.serial), texts));
  if (part.state == PartState::Missing && part.device[0] != '\0')
    details.push_back(FormatPartText("was", Sanitize(part.device), texts));
  const VELAPart* parent = FindPart(parts, part.parent);
  const bool namesIt = parent != nullptr && std::string_view(part.name).starts_with(parent->name);
  if (part.kind != PartKind::Disk && parent != nullptr && !namesIt)
    details.push_back(NamePart(*parent, texts));
  std::erase(details, "");
  return JoinNames(details, texts);
}

std::string DescribePart(std::string_view name, const Parts& parts, const Texts& texts) {
  const VELAPart* part = FindPart(parts, name);
  if (part == nullptr) return NameVolume(Sanitize(name), texts);
  const std::string details = FormatDetails(*part, parts, texts);
  if (details.empty()) return NamePart(*part, texts);
  return FillPlaceholders(texts.Resolve("part:with_details"), {NamePart(*part, texts), details});
}

}  // namespace host

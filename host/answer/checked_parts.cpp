#include "host/answer/checked_parts.h"

#include "host/answer/part_words.h"
#include "host/answer/sources.h"

namespace host {
namespace {

using source_status::PartKind;

// An expansion unit's parts are the unit's.
struct Looked {
  std::string_view check;
  PartKind kind;
  bool inUnit = false;
};
constexpr Looked kLooked[] = {
    {"storage overview", PartKind::Array},
    {"storage overview", PartKind::Mapping},
    {"UPS", PartKind::Ups},
    {"system status", PartKind::Supply},
    {"system status", PartKind::Fan},
    {"system status", PartKind::Sensor},
    {"expansion units", PartKind::Supply, true},
    {"expansion units", PartKind::Fan, true},
    {"expansion units", PartKind::Sensor, true},
    {"high availability", PartKind::Node},
};

bool IsLooked(const Looked& looked, const VELAPart& part, const Parts& parts) {
  if (part.kind != looked.kind) return false;
  const VELAPart* parent = FindPart(parts, part.parent);
  return (parent != nullptr && parent->kind == PartKind::Unit) == looked.inUnit;
}

std::string FormatTroubled(const VELAPart& part, const Parts& parts, const Texts& texts) {
  const std::string reading = FormatReading(part, texts);
  return DescribePart(part.name, parts, texts) + " – " + NameState(part, texts) +
         (reading.empty() ? "" : " · " + reading);
}

std::string FormatCalm(const VELAPart& part, const Parts& parts, const Texts& texts) {
  const std::string reading = FormatReading(part, texts);
  if (reading.empty()) return DescribePart(part.name, parts, texts);
  return FillPlaceholders(texts.GetText("part", "with_details"), {NamePart(part, texts), reading});
}

void AddParts(const Looked& looked, const Parts& parts, const Texts& texts,
              std::vector<std::string>& lines) {
  std::vector<std::string> calm;
  for (const VELAPart& part : parts) {
    if (!IsLooked(looked, part, parts)) continue;
    if (IsTroubled(part))
      lines.push_back(FormatTroubled(part, parts, texts));
    else
      calm.push_back(FormatCalm(part, parts, texts));
  }
  if (!calm.empty())
    lines.push_back(texts.AddLabel(NameGroup(looked.kind, texts)) + JoinNames(calm, texts));
}

}  // namespace

std::vector<std::string> FormatCheckedParts(std::string_view check, const Parts& parts,
                                            const Texts& texts) {
  std::vector<std::string> lines;
  for (const Looked& looked : kLooked)
    if (looked.check == check) AddParts(looked, parts, texts, lines);
  return lines;
}

}  // namespace host

#include "host/site/part_families.h"

#include <map>
#include <string_view>
#include <utility>

#include "common/json_reader.h"

namespace host {
namespace {

using common::FindMember, common::TextMember;
using source_status::PartKind, source_status::PartState;

constexpr double kPercent = 100;

// Two things may have one name, and none of them is to hide behind the other: "Board 2".
class Namesakes {
 public:
  std::string MakeDistinct(const std::string& name) {
    const int count = ++counts_[name];
    return count == 1 ? name : MakeDistinct(name + " " + std::to_string(count));
  }

 private:
  std::map<std::string, int, std::less<>> counts_;
};

// What a check held a volume's free bytes against.
struct ComparedVolume {
  std::vector<Series::Label> labels;
  double size = 0, free = 0, limit = 0;  // bytes
};

double GetNumber(const Json::Value& value, const char* name) {
  const Json::Value* member = FindMember(value, name);
  return member != nullptr && member->isNumeric() ? member->asDouble() : 0;
}

const Json::Value& GetList(const Json::Value& value, const char* name) {
  static const Json::Value kNone(Json::arrayValue);
  const Json::Value* list = FindMember(value, name);
  return list != nullptr && list->isArray() ? *list : kNone;
}

std::vector<Series::Label> LabelVolume(const std::string& name, const Parts& parts,
                                       const Texts& texts) {
  const VELAPart* part = FindPart(parts, name);
  return {{"volume", part != nullptr ? NamePart(*part, texts) : DescribePart(name, parts, texts)},
          {"mount_point", part != nullptr ? part->mountPoint : std::string()}};
}

// `prefix` makes the volume's name in the document of what the check calls it.
void ListCompared(const CheckerResult& check, const char* prefix, const Parts& parts,
                  const Texts& texts, std::vector<ComparedVolume>& volumes) {
  for (const Json::Value& volume : GetList(check.saw, "volumes"))
    for (const Json::Value& compared : GetList(volume, "compared")) {
      if (TextMember(compared, "unit") != "bytes") continue;
      volumes.push_back({LabelVolume(prefix + TextMember(volume, "volume"), parts, texts),
                         GetNumber(compared, "total"), GetNumber(compared, "free"),
                         GetNumber(compared, "mark")});
    }
}

void AddVolumes(Series& series, const CompleteAnswer& complete, const Texts& texts) {
  std::vector<ComparedVolume> volumes;
  const Parts& parts = complete.evidence.parts;
  for (const CheckerResult& check : complete.explanation.checkers) {
    if (check.name == "volume usage") ListCompared(check, "volume_", parts, texts, volumes);
    if (check.name == "external volumes") ListCompared(check, "", parts, texts, volumes);
  }
  Namesakes namesakes;
  for (ComparedVolume& volume : volumes)
    volume.labels.front().value = namesakes.MakeDistinct(volume.labels.front().value);
  series.Start("vela_health_volume_size_bytes", "A volume's size");
  for (const ComparedVolume& volume : volumes) series.Add(volume.labels, volume.size);
  series.Start("vela_health_volume_free_bytes", "What is free on a volume");
  for (const ComparedVolume& volume : volumes) series.Add(volume.labels, volume.free);
  series.Start("vela_health_volume_free_limit_bytes", "A volume with less free than this is low");
  for (const ComparedVolume& volume : volumes) series.Add(volume.labels, volume.limit);
}

// Those who page on failed disks want the series to be there before one fails.
void AddDisks(Series& series, const Parts& parts) {
  std::map<PartState, int> counts;
  for (const VELAPart& part : parts)
    if (part.kind == PartKind::Disk && part.state != PartState::Empty) ++counts[part.state];
  if (counts.empty()) return;
  for (const PartState state :
       {PartState::Well, PartState::Attention, PartState::Failed, PartState::Missing})
    counts.try_emplace(state, 0);
  series.Start("vela_health_disks", "How many disks are in this state");
  for (const auto& [state, count] : counts) {
    const char* name = source_status::kPartStateNames.at(static_cast<std::size_t>(state));
    series.Add({{"state", name}}, count);
  }
}

std::vector<std::pair<const VELAPart*, std::string>> NameSensors(const Parts& parts,
                                                                 const Texts& texts) {
  std::vector<std::pair<const VELAPart*, std::string>> names;
  Namesakes namesakes;
  for (const VELAPart& part : parts) {
    if (part.kind != PartKind::Sensor || std::string_view(part.unit) != "C") continue;
    names.emplace_back(&part, namesakes.MakeDistinct(DescribePart(part.name, parts, texts)));
  }
  return names;
}

void AddTemperatures(Series& series, const Parts& parts, const Texts& texts) {
  const auto names = NameSensors(parts, texts);
  series.Start("vela_health_temperature_celsius", "What a temperature sensor reads");
  for (const auto& [part, name] : names)
    series.Add({{"sensor", name}}, static_cast<double>(part->reading));
  series.Start("vela_health_temperature_limit_celsius", "From this temperature on it is too hot");
  for (const auto& [part, name] : names)
    if (part->mark != 0) series.Add({{"sensor", name}}, static_cast<double>(part->mark));
}

void AddUpses(Series& series, const Parts& parts) {
  series.Start("vela_health_ups_charge_ratio", "How full the battery of a UPS is, from 0 to 1");
  for (const VELAPart& part : parts)
    if (part.kind == PartKind::Ups && std::string_view(part.unit) == "%")
      series.Add({{"ups", part.name}}, static_cast<double>(part.reading) / kPercent);
  series.Start("vela_health_ups_runtime_seconds", "How long the battery of a UPS lasts");
  for (const VELAPart& part : parts)
    if (part.kind == PartKind::Ups && part.runtime >= 0)
      series.Add({{"ups", part.name}}, static_cast<double>(part.runtime));
}

}  // namespace

void AddPartFamilies(Series& series, const CompleteAnswer& complete, const Texts& texts) {
  const Parts& parts = complete.evidence.parts;
  AddVolumes(series, complete, texts);
  AddDisks(series, parts);
  AddTemperatures(series, parts, texts);
  AddUpses(series, parts);
}

}  // namespace host

#include "host/site/part_families.h"

#include <map>
#include <string_view>
#include <utility>

#include "host/answer/measured_volumes.h"

namespace host {
namespace {

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

std::vector<Series::Label> LabelVolume(const std::string& name, const Parts& parts,
                                       const Texts& texts) {
  const VELAPart* part = FindPart(parts, name);
  return {{"volume", part != nullptr ? NamePart(*part, texts) : DescribePart(name, parts, texts)},
          {"mount_point", part != nullptr ? part->mountPoint : std::string()}};
}

void AddVolumes(Series& series, const CompleteAnswer& complete, const Texts& texts) {
  const std::vector<MeasuredVolume> volumes = ListMeasuredVolumes(complete.explanation);
  Namesakes namesakes;
  std::vector<std::vector<Series::Label>> labels;
  for (const MeasuredVolume& volume : volumes) {
    labels.push_back(LabelVolume(volume.name, complete.evidence.parts, texts));
    std::string& title = labels.back().front().value;
    title = namesakes.MakeDistinct(title);
  }
  const auto addAll = [&](double MeasuredVolume::*figure) {
    for (std::size_t i = 0; i < volumes.size(); ++i) series.Add(labels[i], volumes[i].*figure);
  };
  series.Start("vela_health_volume_size_bytes", "A volume's size");
  addAll(&MeasuredVolume::size);
  series.Start("vela_health_volume_free_bytes", "What is free on a volume");
  addAll(&MeasuredVolume::free);
  series.Start("vela_health_volume_free_limit_bytes", "A volume with less free than this is low");
  addAll(&MeasuredVolume::minimum);
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

#include "host/cli/performance_data.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <set>
#include <string_view>

#include "host/answer/measured_volumes.h"
#include "host/answer/part_words.h"
#include "host/text/escape.h"

namespace host {
namespace {

using source_status::PartKind;

constexpr int kMostOfAKind = 20;

// The first "=" ends a label, and a bar begins the data anew.
std::string Quote(const std::string& label) {
  if (label.find_first_not_of("abcdefghijklmnopqrstuvwxyz") == label.npos) return label;
  std::string quoted;
  for (const char c : Sanitize(label)) {
    if (c == '\'') quoted += '\'';
    quoted += c == '=' || c == '|' ? '-' : c;
  }
  return "'" + quoted + "'";
}

class Figures {
 public:
  // `figure`: the value with its unit and marks.
  void Add(const std::string& label, const std::string& figure) {
    std::string unique = Quote(label);
    for (int i = 2; !labels_.insert(unique).second; ++i)
      unique = Quote(label + " " + std::to_string(i));
    data_ += (data_.empty() ? "" : " ") + unique + "=" + figure;
  }

  // As Add, of a group of which nobody wants hundreds.
  void AddOne(const std::string& group, const std::string& label, const std::string& figure) {
    if (++counts_[group] <= kMostOfAKind) Add(group + " " + label, figure);
  }

  const std::string& Data() const { return data_; }

 private:
  std::set<std::string> labels_;
  std::map<std::string, int> counts_;
  std::string data_;
};

std::string FormatPlainly(double bytes) {
  char digits[512];
  std::snprintf(digits, sizeof digits, "%.0f", std::max(0.0, bytes));
  return digits;
}

// A volume is low when more is used than all but its minimum.
void AddVolumes(const Explanation& explanation, Figures& figures) {
  constexpr std::string_view kPrefix = "volume_";
  for (const MeasuredVolume& volume : ListMeasuredVolumes(explanation)) {
    if (volume.size <= 0) continue;
    const bool own = volume.name.starts_with(kPrefix);
    figures.AddOne("volume", own ? volume.name.substr(kPrefix.size()) : volume.name,
                   FormatPlainly(volume.size - volume.free) + "B;" +
                       FormatPlainly(volume.size - volume.minimum) + ";;0;" +
                       FormatPlainly(volume.size));
  }
}

// The guidelines have no unit of degrees. "20:" is a mark that a charge must not fall below.
void AddReading(const VELAPart& part, Figures& figures) {
  const std::string_view unit = part.unit;
  const std::string value = std::to_string(part.reading);
  const std::string mark = part.mark == 0 ? "" : std::to_string(part.mark);
  if (part.kind == PartKind::Sensor && unit == "C")
    figures.AddOne("temperature", part.name, value + ";;" + mark + ";;");
  if (part.kind == PartKind::Ups && unit == "%")
    figures.AddOne("charge", part.name,
                   value + "%;;" + (mark.empty() ? "" : mark + ":") + ";0;100");
}

// None where the platform tells of no disk: nobody looked.
void AddDisks(const Parts& parts, Figures& figures) {
  int disks = 0, troubled = 0;
  for (const VELAPart& part : parts) {
    if (part.kind != PartKind::Disk) continue;
    ++disks;
    if (IsTroubled(part)) ++troubled;
  }
  if (disks > 0) figures.Add("disks not well", std::to_string(troubled) + ";;;0;");
}

}  // namespace

std::string FormatPerformanceData(const CompleteAnswer& complete) {
  const Explanation& explanation = complete.explanation;
  const Parts& parts = complete.evidence.parts;
  const auto unread = std::ranges::count_if(explanation.reply.sources, IsUnread);
  Figures figures;
  figures.Add("findings", std::to_string(RankFindings(explanation).size()) + ";;;0;");
  figures.Add("unread", std::to_string(unread) + ";;;0;");
  AddDisks(parts, figures);
  AddVolumes(explanation, figures);
  for (const VELAPart& part : parts) AddReading(part, figures);
  return figures.Data();
}

}  // namespace host

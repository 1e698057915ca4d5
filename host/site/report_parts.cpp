#include "host/site/report_parts.h"

#include <array>
#include <map>

#include "host/answer/input_lines.h"
#include "host/answer/part_words.h"
#include "host/text/escape.h"
#include "host/text/quantity.h"

namespace host {
namespace {

using source_status::PartKind;

// Of volumes that a check looked at: how much may be used, 1 for all of it.
using Marks = std::map<const VELAPart*, double>;

Marks FindMarks(const std::vector<CheckerResult>& results, const Parts& parts) {
  Marks marks;
  for (const CheckerResult& result : results) {
    for (const Json::Value& volume : result.saw["volumes"]) {
      const Json::Value& share = volume["compared"][0]["share"];
      const VELAPart* part = FindSeenPart(volume["volume"].asString(), parts);
      if (part != nullptr && share.isNumeric()) marks.try_emplace(part, 1 - share.asDouble());
    }
  }
  return marks;
}

// A bar with its mark, for the eye alone: the words stand beside it.
std::string DrawUse(const VELAPart& part, const Marks& marks) {
  if (part.total == 0) return "";
  const auto percent = [](double share) { return std::to_string(static_cast<int>(share * 100)); };
  const double used = static_cast<double>(part.used) / static_cast<double>(part.total);
  std::string bar = "<i style=\"width:" + percent(std::min(used, 1.0)) + "%\"></i>";
  if (const auto mark = marks.find(&part); mark != marks.end())
    bar += "<b style=\"left:" + percent(mark->second) + "%\"></b>";
  return "<span class=\"bar\" aria-hidden=\"true\">" + bar + "</span>";
}

constexpr const char* kColumns[] = {"place", "device",  "model", "serial", "size",
                                    "use",   "reading", "mark",  "in",     "state"};
using Cells = std::array<std::string, std::size(kColumns)>;

Cells FillCells(const VELAPart& part, const Parts& parts, const Marks& marks, const Texts& texts) {
  const VELAPart* parent = FindPart(parts, part.parent);
  const auto mark = marks.find(&part);
  const bool isDisk = part.kind == PartKind::Disk;
  return {FormatPlace(part, texts),
          part.path[0] != '\0' ? part.path : part.device,
          part.model,
          part.serial,
          isDisk && part.size != 0 ? FormatBytes(part.size, texts) : "",
          FormatUse(part, texts),
          FormatReading(part, texts),
          mark != marks.end() ? FormatPercent(mark->second, texts) : FormatMark(part, texts),
          parent != nullptr ? NamePart(*parent, texts) : "",
          NameState(part, texts)};
}

std::string NameColumn(const char* column, const Texts& texts) {
  return texts.GetText("part", std::string("column ") + column);
}

std::string Cell(std::size_t column, const std::string& text, const std::string& drawn,
                 const Texts& texts) {
  const std::string label = EscapeHtml(NameColumn(kColumns[column], texts));
  const std::string attributes = "data-label=\"" + label + "\"";
  if (text.empty()) return "<td></td>";
  return WrapInTag("td", EscapeHtml(text) + drawn, attributes);
}

std::string Row(const VELAPart& part, const Cells& cells, const Cells& widest, const Marks& marks,
                const Texts& texts) {
  std::string row = MakeElement("th", NamePart(part, texts), "scope=\"row\" dir=\"auto\"");
  for (std::size_t i = 0; i < cells.size(); ++i) {
    const bool isUse = std::string_view(kColumns[i]) == "use";
    if (!widest[i].empty()) row += Cell(i, cells[i], isUse ? DrawUse(part, marks) : "", texts);
  }
  const char* state = source_status::kPartStateNames[static_cast<std::size_t>(part.state)];
  return WrapInTag("tr", row, "data-state=\"" + std::string(state) + "\"");
}

std::string Table(PartKind kind, const CompleteAnswer& complete, const Marks& marks,
                  const Texts& texts) {
  const Parts& parts = complete.evidence.parts;
  std::vector<std::pair<const VELAPart*, Cells>> rows;
  Cells widest;  // of each column, to know which has anything
  for (const VELAPart& part : parts) {
    if (part.kind != kind) continue;
    rows.emplace_back(&part, FillCells(part, parts, marks, texts));
    for (std::size_t i = 0; i < widest.size(); ++i)
      if (widest[i].empty()) widest[i] = rows.back().second[i];
  }
  if (rows.empty()) return "";
  std::string head = MakeElement("th", NameColumn("name", texts), "scope=\"col\"");
  for (std::size_t i = 0; i < widest.size(); ++i)
    if (!widest[i].empty())
      head += MakeElement("th", NameColumn(kColumns[i], texts), "scope=\"col\"");
  std::string body;
  for (const auto& [part, cells] : rows) body += Row(*part, cells, widest, marks, texts);
  return WrapInTag("table",
                   MakeElement("caption", NameGroup(kind, texts)) +
                       WrapInTag("thead", WrapInTag("tr", head)) + WrapInTag("tbody", body),
                   "class=\"parts\"");
}

}  // namespace

std::string PartTables(const CompleteAnswer& complete, const Texts& texts) {
  constexpr PartKind kOrder[] = {PartKind::Disk,    PartKind::Volume, PartKind::Array,
                                 PartKind::Mapping, PartKind::Lun,    PartKind::Supply,
                                 PartKind::Fan,     PartKind::Sensor, PartKind::Ups,
                                 PartKind::Unit,    PartKind::Node,   PartKind::Interface};
  static_assert(std::size(kOrder) == source_status::kPartKindNames.size());
  const Marks marks = FindMarks(complete.explanation.checkers, complete.evidence.parts);
  std::string tables;
  for (const PartKind kind : kOrder) tables += Table(kind, complete, marks, texts);
  return tables;
}

}  // namespace host

#include "host/answer/told_json.h"

#include "host/text/quantity.h"

namespace host {
namespace {

void AddText(Json::Value& object, const char* name, const char* text) {
  if (text[0] != '\0') object[name] = text;
}

void AddSize(Json::Value& object, const char* name, std::uint64_t bytes) {
  if (bytes != 0) object[name] = Json::UInt64{bytes};
}

void AddFigure(Json::Value& object, const char* name, std::int64_t figure) {
  if (figure != 0) object[name] = Json::Int64{figure};
}

Json::Value ListTexts(const std::vector<std::string>& texts) {
  Json::Value list(Json::arrayValue);
  for (const std::string& text : texts) list.append(text);
  return list;
}

Json::Value ListReasons(const VELASourceReport& source) {
  Json::Value reasons(Json::arrayValue);
  for (std::uint32_t i = 0; i < source.reasonCount; ++i) {
    Json::Value& reason = reasons.append(Json::objectValue);
    reason["text"] = source.reasons[i].text;
    AddText(reason, "remedy", source.reasons[i].remedy);
  }
  if (source.moreReasons != 0) reasons.append(Json::objectValue)["text"] = kMoreReasons;
  return reasons;
}

void AddPlace(Json::Value& object, const VELAPart& part) {
  AddText(object, "device", part.device);
  AddText(object, "path", part.path);
  AddText(object, "in", part.parent);
  AddText(object, "bay", part.bay);
  AddText(object, "slot", part.slot);
  AddText(object, "port", part.port);
  AddText(object, "mount_point", part.mountPoint);
  AddText(object, "model", part.model);
  AddText(object, "serial", part.serial);
}

// Nothing used and a reading of 0 are known where the total and the unit are.
void AddMeasures(Json::Value& object, const VELAPart& part) {
  AddSize(object, "size", part.size);
  AddSize(object, "total", part.total);
  if (part.total != 0) object["used"] = Json::UInt64{part.used};
  AddText(object, "unit", part.unit);
  if (part.unit[0] != '\0') object["reading"] = Json::Int64{part.reading};
  AddFigure(object, "mark", part.mark);
  if (part.runtime >= 0) object["runtime"] = Json::Int64{part.runtime};
}

Json::Value ToJson(const VELAPart& part, const Parts& parts, const Texts& texts) {
  Json::Value object;
  object["kind"] = source_status::kPartKindNames[static_cast<std::size_t>(part.kind)];
  object["state"] = source_status::kPartStateNames[static_cast<std::size_t>(part.state)];
  object["name"] = part.name;
  object["title"] = NamePart(part, texts);
  object["details"] = FormatDetails(part, parts, texts);
  AddPlace(object, part);
  AddMeasures(object, part);
  return object;
}

Json::Value ListRelated(const VELAEvidence& record) {
  Json::Value list(Json::arrayValue);
  for (std::uint32_t i = 0; i < record.relatedCount; ++i) {
    Json::Value& related = list.append(Json::objectValue);
    related["relation"] = record.related[i].relation;
    related["part"] = record.related[i].part;
  }
  return list;
}

Json::Value ListMend(const VELAEvidence& record) {
  Json::Value list(Json::arrayValue);
  for (const char* command : record.mend)
    if (command[0] != '\0') list.append(command);
  return list;
}

// A figure of 0 is one where it is held against a mark.
Json::Value ToJson(const VELAEvidence& record, const Parts& parts, const Texts& texts) {
  Json::Value object;
  object["key"] = record.key;
  object["check"] = record.check;
  AddText(object, "part", record.part);
  AddText(object, "words", record.words);
  AddText(object, "path", record.path);
  if (record.figure != 0 || record.mark != 0) object["figure"] = Json::Int64{record.figure};
  AddFigure(object, "mark", record.mark);
  AddFigure(object, "other", record.other);
  if (record.since > 0) object["since"] = FormatUtcTime(record.since);
  AddText(object, "show", record.show);
  object["mend"] = ListMend(record);
  object["related"] = ListRelated(record);
  object["more_related"] = record.moreRelated;
  object["text"] = ListTexts(FormatCause(record, parts, texts).lines);
  return object;
}

}  // namespace

Json::Value ListSources(const SourceReports& sources, const Texts& texts) {
  Json::Value list(Json::arrayValue);
  for (const VELASourceReport& source : sources) {
    Json::Value& object = list.append(Json::objectValue);
    object["name"] = source.name;
    object["title"] = NameSource(source, texts);
    object["state"] = source_status::NameState(source.state);
    object["reasons"] = ListReasons(source);
  }
  return list;
}

Json::Value ListParts(const Parts& parts, const Texts& texts) {
  Json::Value list(Json::arrayValue);
  for (const VELAPart& part : parts) list.append(ToJson(part, parts, texts));
  return list;
}

Json::Value ListEvidence(const Evidence& evidence, const Texts& texts) {
  Json::Value list(Json::arrayValue);
  for (const VELAEvidence& record : evidence.records)
    list.append(ToJson(record, evidence.parts, texts));
  return list;
}

Json::Value ListNotes(const Notes& notes, const Texts& texts) {
  Json::Value list(Json::arrayValue);
  for (const VELANote& note : notes) {
    Json::Value& object = list.append(Json::objectValue);
    object["key"] = note.key;
    AddText(object, "part", note.part);
    object["figure"] = Json::Int64{note.figure};
    AddFigure(object, "mark", note.mark);
    AddText(object, "command", note.command);
    object["text"] = FormatNote(note, texts);
  }
  return list;
}

Json::Value ListCauses(const Evidence& evidence, std::string_view check, const Texts& texts) {
  Json::Value list(Json::arrayValue);
  for (const VELAEvidence& record : evidence.records) {
    if (check != record.check) continue;
    const ToldCause cause = FormatCause(record, evidence.parts, texts);
    Json::Value& object = list.append(Json::objectValue);
    object["text"] = ListTexts(cause.lines);
    if (!cause.show.empty()) object["show"] = cause.show;
    object["mend"] = ListTexts(cause.mend);
    Json::Value& parts = object["parts"] = Json::Value(Json::arrayValue);
    if (record.part[0] != '\0') parts.append(record.part);
    for (std::uint32_t i = 0; i < record.relatedCount; ++i) parts.append(record.related[i].part);
  }
  return list;
}

}  // namespace host

#include "host/answer/saved_answer.h"

#include <algorithm>

#include "common/json_reader.h"
#include "common/json_writer.h"
#include "host/text/failure.h"

namespace host {
namespace {

[[noreturn]] void Reject(const std::string& member) {
  throw Failure(kNoInput,
                "This is not a complete answer of vela-health: its member \"" + member +
                    "\" is not what it should be. Save it again: vela-health --json=full.");
}

std::string ReadText(const Json::Value& object, const char* name) {
  const Json::Value& value = object[name];
  if (value.isNull()) return "";
  if (!value.isString()) Reject(name);
  return value.asString();
}

// The place of a member's word in a table of words.
template <typename Words>
int ReadWord(const Json::Value& object, const char* name, const Words& words) {
  const auto found = std::ranges::find(words, ReadText(object, name));
  if (found == std::end(words)) Reject(name);
  return static_cast<int>(found - std::begin(words));
}

const Json::Value& ReadList(const Json::Value& root, const char* name) {
  const Json::Value& list = root[name];
  const bool objects = std::all_of(list.begin(), list.end(),
                                   [](const Json::Value& each) { return each.isObject(); });
  if (!list.isArray() || !objects) Reject(name);
  return list;
}

template <std::size_t size>
void CopyText(const Json::Value& object, const char* name, char (&field)[size]) {
  ReadText(object, name).copy(field, size - 1);
}

std::int64_t ReadFigure(const Json::Value& object, const char* name) {
  const Json::Value& value = object[name];
  if (!value.isNull() && !value.isInt64()) Reject(name);
  return value.asInt64();
}

VELAPart ReadPart(const Json::Value& object) {
  VELAPart part;
  part.kind =
      static_cast<source_status::PartKind>(ReadWord(object, "kind", source_status::kPartKindNames));
  part.state = static_cast<source_status::PartState>(
      ReadWord(object, "state", source_status::kPartStateNames));
  CopyText(object, "name", part.name);
  CopyText(object, "device", part.device);
  CopyText(object, "in", part.parent);
  CopyText(object, "bay", part.bay);
  CopyText(object, "slot", part.slot);
  CopyText(object, "port", part.port);
  CopyText(object, "mount_point", part.mountPoint);
  CopyText(object, "model", part.model);
  CopyText(object, "serial", part.serial);
  CopyText(object, "unit", part.unit);
  part.reading = ReadFigure(object, "reading");
  return part;
}

CheckerResult ReadCheck(const Json::Value& object, const Json::Value& findings) {
  constexpr const char* kOutcomes[] = {"finding", "nothing", "not_made", "accepted"};
  CheckerResult result;
  result.name = ReadText(object, "name");
  result.outcome = static_cast<Outcome>(ReadWord(object, "outcome", kOutcomes));
  result.saw = object["saw"];
  if (!result.saw.isNull() && !result.saw.isObject()) Reject("saw");
  for (const Json::Value& finding : findings)
    if (finding["check"] == result.name) result.finding = ParseFinding(finding["rule"]);
  if (result.finding.has_value() != (result.outcome == Outcome::Finding)) Reject("outcome");
  return result;
}

VELASourceReport ReadSource(const Json::Value& object, std::list<std::string>& names) {
  VELASourceReport source;
  source.name = names.emplace_back(ReadText(object, "name")).c_str();
  const std::string state = ReadText(object, "state");
  const auto found = std::ranges::find(source_status::kStateNames, state,
                                       [](const auto& each) { return std::string(each.name); });
  if (found == std::end(source_status::kStateNames)) Reject("state");
  source.state = found->state;
  return source;
}

void ReadComplete(const Json::Value& root, SavedAnswer& saved) {
  const Json::Value& findings = ReadList(root, "findings");
  for (const Json::Value& check : ReadList(root, "checks"))
    saved.checkers.push_back(ReadCheck(check, findings));
  for (const Json::Value& source : ReadList(root, "sources"))
    saved.sources.push_back(ReadSource(source, saved.names));
  std::vector<VELAPart> parts;
  for (const Json::Value& part : ReadList(root, "parts")) parts.push_back(ReadPart(part));
  saved.parts = Parts(std::move(parts));
}

}  // namespace

SavedAnswer ParseSavedAnswer(std::string_view document) {
  Json::Value root;
  SavedAnswer saved;
  if (!common::ParseJson(document, root) || !root.isObject() || !root.isMember("document")) {
    saved.finding = ParseAnswer(document).rule;
    return saved;
  }
  saved.finding = ParseAnswer(common::WriteCompact(root["document"])).rule;
  ReadComplete(root, saved);
  return saved;
}

}  // namespace host

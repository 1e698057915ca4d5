#include "host/answer/answer.h"

#include "common/json_reader.h"
#include "host/text/failure.h"

namespace host {
namespace {

[[noreturn]] void RejectMember(const std::string& member, const char* wanted) {
  throw Failure(kNoInput, "This is not an answer of " + std::string("\"get\"") + ": its member \"" +
                              member + "\" is not " + wanted + ".");
}

// A member of an object; null when it is missing or `object` is none.
const Json::Value& Member(const Json::Value& object, const char* name) {
  return object.isObject() ? object[name] : Json::Value::nullSingleton();
}

std::string ReadText(const Json::Value& object, const char* name) {
  const Json::Value& value = Member(object, name);
  if (!value.isString()) RejectMember(name, "a text");
  return value.asString();
}

Description ParseDescription(const Json::Value& object) {
  Description description;
  description.format = ReadText(object, "description_format");
  const Json::Value& params = Member(object, "description_params");
  if (!params.isArray()) RejectMember("description_params", "a list");
  for (const Json::Value& param : params) {
    if (!param.isString()) RejectMember("description_params", "a list of texts");
    description.params.push_back(param.asString());
  }
  const Json::Value& formatted = Member(object, "description_use_formatted");
  if (!formatted.isBool()) RejectMember("description_use_formatted", "true or false");
  description.formatted = formatted.asBool();
  return description;
}

std::string ExtractKey(const std::string& reference) {
  return reference.substr(reference.find(':') + 1);
}

}  // namespace

std::string Finding::TextKey() const {
  if (description.formatted) return ExtractKey(description.format);
  // A composed description ends in the words about what is wrong.
  return description.params.empty() ? std::string() : ExtractKey(description.params.back());
}

bool Finding::AllWell() const { return type == FindingType::Normal && id == "system_health"; }

Finding ParseFinding(const Json::Value& rule) {
  const Json::Value& type = Member(rule, "type");
  if (!type.isInt() || type.asInt() < 0 || type.asInt() > 2) RejectMember("type", "0, 1 or 2");
  const Json::Value& priority = Member(rule, "priority");
  if (!priority.isNumeric()) RejectMember("priority", "a number");
  return {static_cast<FindingType>(type.asInt()), priority.asDouble(), ReadText(rule, "id"),
          ParseDescription(Member(rule, "description"))};
}

Answer ParseAnswer(std::string_view document) {
  Json::Value root;
  if (!common::ParseJson(document, root)) {
    throw Failure(kNoInput, "This is not JSON, so it is no answer of \"get\".");
  }
  Answer answer{
      ParseFinding(Member(root, "rule")), ReadText(root, "hostname"), ReadText(root, "uptime"), {}};
  const Json::Value& interfaces = Member(root, "interfaces");
  if (!interfaces.isArray()) RejectMember("interfaces", "a list");
  for (const Json::Value& entry : interfaces) {
    answer.interfaces.push_back(
        {ReadText(entry, "id"), ReadText(entry, "ip"), ReadText(entry, "type")});
  }
  return answer;
}

}  // namespace host

#include "host/answer/answer.h"

#include <json/reader.h>

#include <memory>

#include "host/text/failure.h"

namespace host {
namespace {

[[noreturn]] void Bad(const std::string& member, const char* wanted) {
  throw Failure(kNoInput, "This is not an answer of " + std::string("\"get\"") + ": its member \"" +
                              member + "\" is not " + wanted + ".");
}

// A member of an object; null when it is missing or `object` is none.
const Json::Value& Member(const Json::Value& object, const char* name) {
  return object.isObject() ? object[name] : Json::Value::nullSingleton();
}

std::string Text(const Json::Value& object, const char* name) {
  const Json::Value& value = Member(object, name);
  if (!value.isString()) Bad(name, "a text");
  return value.asString();
}

Description DescriptionFrom(const Json::Value& object) {
  Description description;
  description.format = Text(object, "description_format");
  const Json::Value& params = Member(object, "description_params");
  if (!params.isArray()) Bad("description_params", "a list");
  for (const Json::Value& param : params) {
    if (!param.isString()) Bad("description_params", "a list of texts");
    description.params.push_back(param.asString());
  }
  const Json::Value& formatted = Member(object, "description_use_formatted");
  if (!formatted.isBool()) Bad("description_use_formatted", "true or false");
  description.formatted = formatted.asBool();
  return description;
}

std::string KeyOf(const std::string& reference) {
  return reference.substr(reference.find(':') + 1);
}

}  // namespace

std::string Finding::TextKey() const {
  if (description.formatted) return KeyOf(description.format);
  // A composed description ends in the words about what is wrong.
  return description.params.empty() ? std::string() : KeyOf(description.params.back());
}

bool Finding::AllWell() const { return type == FindingType::Normal && id == "system_health"; }

Finding ParseFinding(const Json::Value& rule) {
  const Json::Value& type = Member(rule, "type");
  if (!type.isInt() || type.asInt() < 0 || type.asInt() > 2) Bad("type", "0, 1 or 2");
  const Json::Value& priority = Member(rule, "priority");
  if (!priority.isNumeric()) Bad("priority", "a number");
  return {static_cast<FindingType>(type.asInt()), priority.asDouble(), Text(rule, "id"),
          DescriptionFrom(Member(rule, "description"))};
}

Answer ParseAnswer(std::string_view document) {
  static const Json::CharReaderBuilder builder;
  const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
  Json::Value root;
  std::string errors;
  if (!reader->parse(document.data(), document.data() + document.size(), &root, &errors)) {
    throw Failure(kNoInput, "This is not JSON: " + errors);
  }
  Answer answer{
      ParseFinding(Member(root, "rule")), Text(root, "hostname"), Text(root, "uptime"), {}};
  const Json::Value& interfaces = Member(root, "interfaces");
  if (!interfaces.isArray()) Bad("interfaces", "a list");
  for (const Json::Value& entry : interfaces) {
    answer.interfaces.push_back({Text(entry, "id"), Text(entry, "ip"), Text(entry, "type")});
  }
  return answer;
}

}  // namespace host

#include "SystemChecker/checker_rule.h"

#include <boost/algorithm/string/join.hpp>

#include "module/base/log.h"

namespace VELA::SystemHealth {
namespace {

// Static keys spare a copy each. A host's copy of the document points to them too,
// which is why the module is linked to stay loaded.
using Key = Json::StaticString;

std::string ToText(const TextReference& text) { return text.first + ":" + text.second; }

}  // namespace

Description Description::NaiveDescription(const std::string& section, const std::string& key) {
  return {"{0}", {{section, key}}, {}, {}, false};
}

Description Description::FormattedDescription(const TextReference& text,
                                              const std::vector<std::string>& params) {
  return {"{0}", {}, text, params, true};
}

Description Description::AdditionalDescription(const std::string& format,
                                               const std::vector<TextReference>& params) {
  return {format, params, {}, {}, false};
}

Json::Value Description::ToJson() const {
  Json::Value list(Json::arrayValue);
  if (use_formatted) {
    for (const std::string& param : formatted_params) list.append(param);
  } else {
    for (const TextReference& param : params) list.append(ToText(param));
  }

  Json::Value json(Json::objectValue);
  json[Key("description_format")] = use_formatted ? ToText(formatted_text) : format;
  json[Key("description_params")] = std::move(list);
  json[Key("description_use_formatted")] = use_formatted;
  return json;
}

CheckerRule::CheckerRule(CheckerRuleType ruleType, double rulePriority, std::string ruleId,
                         Description ruleDescription)
    : type(ruleType),
      priority(Clamp(rulePriority)),
      id(std::move(ruleId)),
      description(std::move(ruleDescription)) {}

CheckerRule::CheckerRule(CheckerRuleType ruleType, double rulePriority, std::string ruleId,
                         const std::string& section, const std::string& key)
    : CheckerRule(ruleType, rulePriority, std::move(ruleId),
                  Description::NaiveDescription(section, key)) {}

// Not std::clamp, which leaves open what becomes of a NaN; here it passes through.
double CheckerRule::Clamp(double value) const {
  if (-20.0 > value) return -20.0;
  if (40.0 < value) return 40.0;
  return value;
}

Json::Value CheckerRule::ToJson() const {
  Json::Value json(Json::objectValue);
  json[Key("type")] = static_cast<int>(type);
  json[Key("priority")] = priority;
  json[Key("id")] = id;
  json[Key("description")] = description.ToJson();
  return json;
}

void TopPriorityRule::Push(CheckerRule&& candidate) {
  std::optional<CheckerRule> taken(std::move(candidate));  // who loses is gone at once, too
  if (!top || *top < *taken) top = std::move(taken);
}

std::optional<CheckerRule> TopPriorityRule::Pop() { return std::exchange(top, std::nullopt); }

void StringFormatter::Push(std::string text) { texts.push_back(std::move(text)); }

void StringFormatter::Push(std::string text, TextReference param) {
  NumberPlaceholder(text);
  texts.push_back(std::move(text));
  params.push_back(std::move(param));
}

void StringFormatter::Push(FormatUnit&& unit) {
  if (unit.param) {
    Push(std::move(unit.text), *std::move(unit.param));
  } else {
    Push(std::move(unit.text));
  }
}

Description StringFormatter::PopDescription(std::string closing,
                                            std::vector<TextReference> closingParams) {
  for (TextReference& param : closingParams) {
    if (!NumberPlaceholder(closing)) {
      LogError(
          {"SystemChecker/checker_rule", __LINE__},
          "Failed to parse format due to inconsistent number of Param: [%s, %s] & format: [%s]",
          param.first.c_str(), param.second.c_str(), closing.c_str());
      continue;
    }
    params.push_back(std::move(param));
  }
  return Description::AdditionalDescription(boost::algorithm::join(texts, separator) + closing,
                                            params);
}

bool StringFormatter::NumberPlaceholder(std::string& text) const {
  const std::size_t position = placeholder.empty() ? text.npos : text.find(placeholder);
  if (position == text.npos) return false;
  text.replace(position, placeholder.size(), "{" + std::to_string(params.size()) + "}");
  return true;
}

}  // namespace VELA::SystemHealth

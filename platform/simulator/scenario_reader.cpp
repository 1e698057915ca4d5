#include "platform/simulator/scenario_reader.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include <boost/algorithm/string/join.hpp>

namespace simulator {

void ScenarioText::Fail(std::ptrdiff_t offset, const std::string& message) const {
  const auto line = 1 + std::count(text.begin(), text.begin() + offset, '\n');
  throw ScenarioError(file + ":" + std::to_string(line) + ": " + message);
}

ObjectReader::ObjectReader(const ScenarioText& text, const Json::Value& object, std::string path)
    : text_(text), object_(object), path_(std::move(path)) {
  if (!object.isObject())
    text_.Fail(object.getOffsetStart(),
               (path_.empty() ? "a scenario" : "\"" + path_ + "\"") + " must be an object {...}");
  if (!path_.empty()) path_ += ".";
}

const Json::Value* ObjectReader::Take(const char* name) {
  known_.insert(name);
  return object_.find(name, name + std::strlen(name));
}

const Json::Value* ObjectReader::TakeArray(const char* name) {
  const Json::Value* member = Take(name);
  if (member != nullptr && !member->isArray()) Fail(name, "a list");
  return member;
}

void ObjectReader::Finish() const {
  for (auto member = object_.begin(); member != object_.end(); ++member) {
    if (known_.contains(member.name())) continue;
    text_.Fail(member->getOffsetStart(),
               "unknown member \"" + path_ + member.name() +
                   "\"; known here: " + boost::algorithm::join(known_, ", "));
  }
}

void ObjectReader::Fail(const Json::Value& member, const char* name,
                        const std::string& expected) const {
  text_.Fail(member.getOffsetStart(), "\"" + path_ + name + "\" must be " + expected);
}

void ObjectReader::Fail(const char* name, const std::string& expected) const {
  const Json::Value* member = object_.find(name, name + std::strlen(name));
  Fail(member != nullptr ? *member : object_, name, expected);
}

template <typename Number>
void ObjectReader::ReadInteger(const char* name, Number& target) {
  const Json::Value* member = Take(name);
  if (member == nullptr) return;
  constexpr auto least = std::numeric_limits<Number>::min();
  constexpr auto most = std::numeric_limits<Number>::max();
  const bool fits =
      std::numeric_limits<Number>::is_signed
          ? member->isInt64() && member->asInt64() >= static_cast<Json::Int64>(least) &&
                member->asInt64() <= static_cast<Json::Int64>(most)
          : member->isUInt64() && member->asUInt64() <= static_cast<Json::UInt64>(most);
  if (!fits)
    Fail(name, "a whole number from " + std::to_string(least) + " to " + std::to_string(most));
  target = static_cast<Number>(std::numeric_limits<Number>::is_signed
                                   ? static_cast<std::uint64_t>(member->asInt64())
                                   : member->asUInt64());
}

void ObjectReader::Read(const char* name, int& target) { ReadInteger(name, target); }
void ObjectReader::Read(const char* name, unsigned& target) { ReadInteger(name, target); }
void ObjectReader::Read(const char* name, std::uint8_t& target) { ReadInteger(name, target); }
void ObjectReader::Read(const char* name, std::int64_t& target) { ReadInteger(name, target); }
void ObjectReader::Read(const char* name, std::uint64_t& target) { ReadInteger(name, target); }

void ObjectReader::Read(const char* name, bool& target) {
  const Json::Value* member = Take(name);
  if (member == nullptr) return;
  if (!member->isBool()) Fail(name, "true or false");
  target = member->asBool();
}

void ObjectReader::Read(const char* name, float& target) {
  const Json::Value* member = Take(name);
  if (member == nullptr) return;
  if (!member->isNumeric()) Fail(name, "a number");
  target = member->asFloat();
}

void ObjectReader::Read(const char* name, std::string& target) {
  const Json::Value* member = Take(name);
  if (member == nullptr) return;
  if (!member->isString()) Fail(name, "a text");
  target = member->asString();
}

void ObjectReader::Read(const char* name, std::map<std::string, std::string, std::less<>>& target) {
  const Json::Value* member = Take(name);
  if (member == nullptr) return;
  if (!member->isObject()) Fail(name, "an object of texts");
  for (auto entry = member->begin(); entry != member->end(); ++entry) {
    if (entry->isNull())
      target.erase(entry.name());
    else if (entry->isString())
      target[entry.name()] = entry->asString();
    else
      Fail(*entry, (std::string(name) + "." + entry.name()).c_str(), "a text, or null for none");
  }
}

}  // namespace simulator

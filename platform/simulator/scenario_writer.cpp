#include "platform/simulator/scenario_writer.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <concepts>
#include <limits>

#include "common/json_marks.h"
#include "common/json_reader.h"
#include "common/json_writer.h"
#include "platform/simulator/scenario_fields.h"

namespace simulator {
namespace {

Json::Value ToJson(const std::string& text) { return text; }
Json::Value ToJson(bool value) { return value; }

Json::Value ToJson(source_status::PartKind kind) {
  return source_status::kPartKindNames[static_cast<std::size_t>(kind)];
}
Json::Value ToJson(source_status::PartState state) {
  return source_status::kPartStateNames[static_cast<std::size_t>(state)];
}

Json::Value ToJson(std::signed_integral auto value) { return Json::Int64{value}; }
Json::Value ToJson(std::unsigned_integral auto value) { return Json::UInt64{value}; }

// The number with the fewest digits that is the same float. JSON has no infinities and no NaN,
// which is below nothing, as is the lowest number.
Json::Value ToJson(float value) {
  using Limits = std::numeric_limits<float>;
  value = std::isnan(value) ? Limits::lowest() : std::clamp(value, Limits::lowest(), Limits::max());
  char digits[64];
  const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
  double number = 0;
  std::from_chars(digits, end, number);
  return number;
}

// The document whose compact text these bytes are, if there is one that people could read: it
// reads better.
std::optional<Json::Value> ParseDocument(const std::string& bytes) {
  constexpr std::size_t kMostReadable = 10'000, kDeepest = common::kDeepestJson - 8;
  const common::JsonShape shape = common::MeasureJson(bytes);
  Json::Value document;
  if (shape.values > kMostReadable || shape.depth > kDeepest) return std::nullopt;
  if (!common::ParseJson(bytes, document) || document.isNull() ||
      common::WriteCompact(document) != bytes)
    return std::nullopt;
  return document;
}

const std::optional<std::string>& GetBytes(const std::optional<std::string>& bytes) {
  return bytes;
}
const std::optional<std::string>& GetBytes(const MemoryFile& file) { return file.Text(); }

// Adds the fields of `object` that are not those of `usual`.
template <typename Object>
class FieldWriter {
 public:
  FieldWriter(Json::Value& out, const Object& object, const Object& usual)
      : out_(out), object_(object), usual_(usual) {}

  template <typename Value>
  void operator()(const char* name, Value Object::*field) {
    if (!(object_.*field == usual_.*field)) out_[name] = Write(object_.*field, usual_.*field);
  }
  template <std::size_t Size>
  void operator()(const char* name, char (Object::*field)[Size]) {
    if ((object_.*field)[0] != '\0') out_[name] = object_.*field;
  }
  template <std::size_t Count, std::size_t Size>
  void operator()(const char* name, char (Object::*field)[Count][Size]) {
    for (const char* text : object_.*field)
      if (text[0] != '\0') out_[name].append(text);
  }
  template <typename Element, std::size_t Size>
  void operator()(const char* name, Element (Object::*field)[Size], std::uint32_t Object::*count) {
    for (std::uint32_t i = 0; i < object_.*count; ++i)
      out_[name].append(WriteFields((object_.*field)[i], Element()));
  }
  template <typename DescribeMembers>
  void Group(const char* name, DescribeMembers describe) {
    Json::Value members(Json::objectValue);
    FieldWriter group(members, object_, usual_);
    describe(group);
    if (!members.empty()) out_[name] = std::move(members);
  }
  template <typename Bytes>
  void Document(const std::string& name, Bytes Object::*field) {
    if (object_.*field == usual_.*field) return;
    const std::optional<std::string>& bytes = GetBytes(object_.*field);
    const std::optional<Json::Value> document = bytes ? ParseDocument(*bytes) : Json::Value();
    if (document)
      out_[name] = *document;
    else
      out_[name + "Text"] = *bytes;
  }

 private:
  template <typename Element>
  static Json::Value WriteFields(const Element& element, const Element& usual) {
    Json::Value members(Json::objectValue);
    FieldWriter<Element> fields(members, element, usual);
    Describe(fields, std::type_identity<Element>());
    return members;
  }

  template <typename Value>
  static Json::Value Write(const Value& value, const Value&) {
    return ToJson(value);
  }
  template <typename Value>
  static Json::Value Write(const std::optional<Value>& value, const std::optional<Value>&) {
    return value ? ToJson(*value) : Json::Value();
  }
  static Json::Value Write(const std::optional<PowerReport>& value,
                           const std::optional<PowerReport>&) {
    return value ? WriteFields(*value, PowerReport()) : Json::Value();
  }
  template <typename Element>
  static Json::Value Write(const std::vector<Element>& list, const std::vector<Element>&) {
    Json::Value elements(Json::arrayValue);
    for (const Element& element : list) elements.append(WriteFields(element, Element()));
    return elements;
  }
  static Json::Value Write(const DiskList& disks, const DiskList&) { return disks.View(); }
  static Json::Value Write(const Sources& sources, const Sources&) {
    Json::Value members(Json::objectValue);
    for (const auto& [name, statement] : sources)
      members[name] = WriteFields(statement, StatedStatus{"", "", "", {}});
    return members;
  }
  using Texts = std::map<std::string, std::string, std::less<>>;
  static Json::Value Write(const Texts& texts, const Texts& usual) {
    Json::Value members(Json::objectValue);
    for (const auto& [key, text] : usual)
      if (!texts.contains(key)) members[key] = Json::Value();
    for (const auto& [key, text] : texts) {
      const auto same = usual.find(key);
      if (same == usual.end() || same->second != text) members[key] = ToJson(text);
    }
    return members;
  }

  Json::Value& out_;
  const Object& object_;
  const Object& usual_;
};

}  // namespace

std::string WriteScenario(const Machine& machine, const std::string& why) {
  const Machine healthy;
  Json::Value state(Json::objectValue);
  state["why"] = why;
  FieldWriter<Machine> fields(state, machine, healthy);
  Describe(fields, std::type_identity<Machine>());
  return common::WritePretty(state);
}

}  // namespace simulator

#include "platform/simulator/scenario_writer.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <memory>

#include <json/reader.h>

#include "common/outline.h"
#include "platform/simulator/scenario_fields.h"

namespace simulator {
namespace {

common::Outline TextOf(const std::string& text) { return common::Outline(Json::Value(text)); }
common::Outline TextOf(bool value) { return common::Outline(Json::Value(value)); }

template <typename Integer>
requires std::is_integral_v<Integer> common::Outline TextOf(Integer value) {
  return common::Outline::Number(std::to_string(value));
}

// The fewest digits that give the same number. JSON has no infinities and no NaN, which is
// below nothing, as is the lowest number.
common::Outline TextOf(float value) {
  using Limits = std::numeric_limits<float>;
  value = std::isnan(value) ? Limits::lowest() : std::clamp(value, Limits::lowest(), Limits::max());
  char digits[64];
  const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
  return common::Outline::Number(std::string(digits, end));
}

// The document whose compact text these bytes are, if there is one: it reads better.
std::optional<Json::Value> DocumentOf(const std::string& bytes) {
  Json::CharReaderBuilder shallow;
  shallow["stackLimit"] = 900;  // within a scenario it stands deeper
  const std::unique_ptr<Json::CharReader> reader(shallow.newCharReader());
  Json::Value document;
  try {
    if (!reader->parse(bytes.data(), bytes.data() + bytes.size(), &document, nullptr) ||
        document.isNull() || common::CompactJson(document) != bytes)
      return std::nullopt;
  } catch (const Json::Exception&) {
    return std::nullopt;  // nested deeper than the library follows
  }
  return document;
}

const std::optional<std::string>& BytesOf(const std::optional<std::string>& bytes) { return bytes; }
const std::optional<std::string>& BytesOf(const MemoryFile& file) { return file.Text(); }

// Adds the fields of `object` that are not those of `usual`.
template <typename Object>
class FieldWriter {
 public:
  FieldWriter(common::Outline& out, const Object& object, const Object& usual)
      : out_(out), object_(object), usual_(usual) {}

  template <typename Value>
  void operator()(const char* name, Value Object::*field) {
    if (!(object_.*field == usual_.*field)) out_.Add(name, Write(object_.*field, usual_.*field));
  }
  template <typename DescribeMembers>
  void Group(const char* name, DescribeMembers describe) {
    common::Outline members = common::Outline::Object();
    FieldWriter group(members, object_, usual_);
    describe(group);
    if (!members.Empty()) out_.Add(name, std::move(members));
  }
  template <typename Bytes>
  void Document(const std::string& name, Bytes Object::*field) {
    if (object_.*field == usual_.*field) return;
    const std::optional<std::string>& bytes = BytesOf(object_.*field);
    if (!bytes) return out_.Add(name, common::Outline(Json::Value()));
    const std::optional<Json::Value> document = DocumentOf(*bytes);
    if (document) return out_.Add(name, common::Outline(*document));
    out_.Add(name + "Text", TextOf(*bytes));
  }

 private:
  template <typename Element>
  static common::Outline WriteFields(const Element& element, const Element& usual) {
    common::Outline members = common::Outline::Object();
    FieldWriter<Element> fields(members, element, usual);
    Describe(fields, std::type_identity<Element>());
    return members;
  }

  template <typename Value>
  static common::Outline Write(const Value& value, const Value&) {
    return TextOf(value);
  }
  template <typename Value>
  static common::Outline Write(const std::optional<Value>& value, const std::optional<Value>&) {
    return value ? TextOf(*value) : common::Outline(Json::Value());
  }
  static common::Outline Write(const std::optional<PowerReport>& value,
                               const std::optional<PowerReport>&) {
    return value ? WriteFields(*value, PowerReport()) : common::Outline(Json::Value());
  }
  template <typename Element>
  static common::Outline Write(const std::vector<Element>& list, const std::vector<Element>&) {
    common::Outline elements = common::Outline::List();
    for (const Element& element : list) elements.Add(WriteFields(element, Element()));
    return elements;
  }
  static common::Outline Write(const DiskList& disks, const DiskList&) {
    return common::Outline(disks.Borrowed());
  }
  static common::Outline Write(const Sources& sources, const Sources&) {
    common::Outline members = common::Outline::Object();
    for (const auto& [name, statement] : sources)
      members.Add(name, WriteFields(statement, SourceStatement{"", ""}));
    return members;
  }
  using Texts = std::map<std::string, std::string, std::less<>>;
  static common::Outline Write(const Texts& texts, const Texts& usual) {
    common::Outline members = common::Outline::Object();
    for (const auto& [key, text] : usual)
      if (!texts.contains(key)) members.Add(key, common::Outline(Json::Value()));
    for (const auto& [key, text] : texts) {
      const auto same = usual.find(key);
      if (same == usual.end() || same->second != text) members.Add(key, TextOf(text));
    }
    return members;
  }

  common::Outline& out_;
  const Object& object_;
  const Object& usual_;
};

}  // namespace

std::string WriteScenario(const Machine& machine, const std::string& why) {
  const Machine healthy;
  common::Outline state = common::Outline::Object();
  state.Add("why", TextOf(why));
  FieldWriter<Machine> fields(state, machine, healthy);
  Describe(fields, std::type_identity<Machine>());
  return state.Text() + "\n";
}

}  // namespace simulator

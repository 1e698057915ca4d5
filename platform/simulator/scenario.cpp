#include "platform/simulator/scenario.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <memory>
#include <sstream>

#include <json/reader.h>

#include "common/json_lists.h"
#include "common/json_marks.h"
#include "common/json_writer.h"
#include "common/text.h"
#include "platform/simulator/scenario_fields.h"
#include "platform/status/notes.h"

namespace simulator {
namespace {

// "one of: not asked, absent, ...".
template <typename Names>
std::string ListNames(const Names& names) {
  std::string words;
  for (const char* name : names) words.append(words.empty() ? "one of: " : ", ").append(name);
  return words;
}

constexpr std::array kStates = [] {
  std::array<const char*, source_status::kStateNames.size()> names = {};
  std::ranges::transform(source_status::kStateNames, names.begin(),
                         &source_status::StateName::name);
  return names;
}();

// A field has room for `size` bytes, one of which ends the text.
void ExpectToFit(const ObjectReader& reader, const char* name, const std::string& text,
                 std::size_t least, std::size_t size) {
  if (text.size() >= least && text.size() < size) return;
  reader.Fail(name,
              "a text of " + std::to_string(least) + " to " + std::to_string(size - 1) + " bytes");
}

// Fills the fields of `Object` from the members of the same name.
template <typename Object>
class FieldReader {
 public:
  FieldReader(ObjectReader& reader, Object& object) : reader_(reader), object_(object) {}

  template <typename Value>
  void operator()(const char* name, Value Object::*field) {
    Read(name, object_.*field);
  }
  template <std::size_t Size>
  void operator()(const char* name, char (Object::*field)[Size]) {
    std::string text;
    reader_.Read(name, text);
    ExpectToFit(reader_, name, text, 0, Size);
    common::FillField(object_.*field, text);
  }
  // A list of texts.
  template <std::size_t Count, std::size_t Size>
  void operator()(const char* name, char (Object::*field)[Count][Size]) {
    const Json::Value* list = reader_.TakeArray(name);
    if (list == nullptr) return;
    ExpectAtMost(name, list->size(), Count);
    for (Json::ArrayIndex i = 0; i < list->size(); ++i) {
      const Json::Value& text = (*list)[i];
      if (!text.isString() || text.asString().size() >= Size)
        reader_.Fail(text, name,
                     "a list of texts of at most " + std::to_string(Size - 1) + " bytes");
      common::FillField((object_.*field)[i], text.asString());
    }
  }
  template <typename Element, std::size_t Size>
  void operator()(const char* name, Element (Object::*field)[Size], std::uint32_t Object::*count) {
    std::vector<Element> list;
    Read(name, list);
    ExpectAtMost(name, list.size(), Size);
    std::ranges::copy(list, object_.*field);
    object_.*count = static_cast<std::uint32_t>(list.size());
  }
  template <typename DescribeMembers>
  void Group(const char* name, DescribeMembers describe) {
    reader_.Read(name, [&](ObjectReader& members) {
      FieldReader group(members, object_);
      describe(group);
    });
  }
  // A program's output or a file's bytes: any JSON value stands for its own text, the
  // member's name with "Text" behind it gives the bytes as they are; null means none.
  template <typename Bytes>
  void Document(const std::string& name, Bytes Object::*field) {
    std::optional<std::string> bytes;
    if (const Json::Value* document = reader_.Take(name.c_str())) {
      if (!document->isNull()) bytes = common::WriteCompact(*document);
      object_.*field = bytes;
    }
    if (reader_.Take((name + "Text").c_str()) == nullptr) return;
    reader_.Read((name + "Text").c_str(), bytes);
    object_.*field = bytes;
  }

 private:
  template <typename Element>
  static void ReadFields(ObjectReader& reader, Element& element) {
    FieldReader<Element> fields(reader, element);
    Describe(fields, std::type_identity<Element>());
  }

  template <typename Value>
  void Read(const char* name, Value& target) {
    reader_.Read(name, target);
  }
  template <typename Element>
  void Read(const char* name, std::vector<Element>& target) {
    reader_.Read(name, target, ReadFields<Element>);
  }
  void Read(const char* name, std::optional<PowerReport>& target) {
    const Json::Value* member = reader_.Take(name);
    if (member != nullptr && member->isNull()) return target.reset();
    reader_.Read(name, [&target](ObjectReader& members) { ReadFields(members, *target); });
  }
  void Read(const char* name, DiskList& target) {
    const Json::Value* disks = reader_.TakeArray(name);
    if (disks == nullptr) return;
    target.Clear();
    for (const Json::Value& disk : *disks) target.Append(disk);
  }
  void Read(const char* name, Sources& target) {
    reader_.Read(name, [&target](ObjectReader& members) {
      for (int source = 0; source < source_status::kSourceCount; ++source)
        ReadSource(members, common::SourceName(static_cast<source_status::Source>(source)), target);
    });
  }
  void Read(const char* name, std::vector<StatedNote>& target) {
    reader_.Read(name, target, [](ObjectReader& reader, StatedNote& note) {
      ReadFields(reader, note);
      ExpectToFit(reader, "key", note.key, 1, sizeof VELANote::key);
      ExpectToFit(reader, "part", note.part, 0, sizeof VELANote::part);
      ExpectToFit(reader, "command", note.command, 0, sizeof VELANote::command);
    });
    ExpectAtMost(name, target.size(), kVELANotes);
  }
  void Read(const char* name, std::vector<VELAPart>& target) {
    reader_.Read(name, target, [](ObjectReader& reader, VELAPart& part) {
      ReadFields(reader, part);
      ExpectToFit(reader, "name", part.name, 1, sizeof part.name);
    });
  }
  void Read(const char* name, std::vector<VELAEvidence>& target) {
    reader_.Read(name, target, [](ObjectReader& reader, VELAEvidence& evidence) {
      ReadFields(reader, evidence);
      ExpectToFit(reader, "key", evidence.key, 1, sizeof evidence.key);
      ExpectToFit(reader, "check", evidence.check, 1, sizeof evidence.check);
    });
  }
  void Read(const char* name, source_status::PartKind& target) {
    target = ReadName<source_status::PartKind>(name, source_status::kPartKindNames, target);
  }
  void Read(const char* name, source_status::PartState& target) {
    target = ReadName<source_status::PartState>(name, source_status::kPartStateNames, target);
  }
  template <typename Enum, typename Names>
  Enum ReadName(const char* name, const Names& names, Enum usual) {
    std::string word = names[static_cast<std::size_t>(usual)];
    reader_.Read(name, word);
    const auto found = std::ranges::find(names, word);
    if (found == names.end()) reader_.Fail(name, ListNames(names));
    return static_cast<Enum>(found - names.begin());
  }
  void ExpectAtMost(const char* name, std::size_t size, std::size_t most) {
    if (size > most) reader_.Fail(name, "a list of at most " + std::to_string(most));
  }
  static void ReadSource(ObjectReader& members, const char* key, Sources& target) {
    if (members.Take(key) == nullptr) return;
    members.Read(key, [&](ObjectReader& reader) {
      ReadFields(reader, target[key]);
      if (!FindState(target[key].state)) reader.Fail("state", ListNames(kStates));
    });
  }

  ObjectReader& reader_;
  Object& object_;
};

// What the parser's stack and memory can bear.
void CheckShape(const ScenarioText& scenario) {
  const common::JsonShape shape = common::MeasureJson(scenario.text);
  if (shape.depth > common::kDeepestJson)
    throw ScenarioError(scenario.file + ":1: nested deeper than " +
                        std::to_string(common::kDeepestJson) + " levels");
  if (shape.values > common::kMostListedValues)
    throw ScenarioError(scenario.file + ":1: more than " +
                        std::to_string(common::kMostListedValues) + " values");
}

// What the library's report says first: "* Line 3, Column 5\n  What is wrong\n...".
std::string DescribeFirst(const std::string& report) {
  constexpr std::size_t kLongest = 160;  // it quotes a number, however long
  constexpr std::string_view kLine = "* Line ", kColumn = ", Column ";
  const std::size_t column = report.find(kColumn), end = report.find("\n  ", column);
  if (!report.starts_with(kLine) || end == report.npos) return "1: not JSON: " + report;
  const std::string what = report.substr(end + 3, kLongest);
  return report.substr(kLine.size(), column - kLine.size()) +
         ": not JSON: " + what.substr(0, what.find('\n'));
}

Json::Value Parse(const ScenarioText& scenario) {
  CheckShape(scenario);
  Json::CharReaderBuilder strict;
  Json::CharReaderBuilder::strictMode(&strict.settings_);
  strict["allowComments"] = true;
  const std::unique_ptr<Json::CharReader> reader(strict.newCharReader());
  const char* begin = scenario.text.data();
  Json::Value root;
  std::string errors;
  if (!reader->parse(begin, begin + scenario.text.size(), &root, &errors))
    throw ScenarioError(scenario.file + ":" + DescribeFirst(errors));
  return root;
}

}  // namespace

Machine ParseScenario(const std::string& file, const std::string& text) {
  const ScenarioText scenario{file, text};
  const Json::Value root = Parse(scenario);
  Machine machine;
  ObjectReader reader(scenario, root, "");
  std::string why;  // for people only
  reader.Read("why", why);
  FieldReader<Machine> fields(reader, machine);
  Describe(fields, std::type_identity<Machine>());
  reader.Finish();
  return machine;
}

Machine LoadScenario(const std::filesystem::path& path) {
  std::error_code error;  // a name may be too long for one: the file says so below
  const auto file = std::filesystem::is_directory(path, error) ? path / "state.json" : path;
  std::ifstream stream(file, std::ios::binary);
  std::ostringstream text;
  if (!stream || !(text << stream.rdbuf()))
    throw ScenarioError(file.string() + ": no such file, or empty; a scenario is a folder with a " +
                        "state.json, as vela-health capture makes one");
  return ParseScenario(file.string(), text.str());
}

}  // namespace simulator

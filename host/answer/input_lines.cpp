#include "host/answer/input_lines.h"

#include <algorithm>
#include <string_view>

#include "host/answer/finding_text.h"
#include "host/text/escape.h"
#include "host/text/quantity.h"

namespace host {
namespace {

constexpr const char* kDecides = "decides";
constexpr const char* kCompared = "compared";
constexpr const char* kNames[] = {"volume", "disk", "unit", "LUN"};

// "state 2" may have words of its own.
std::string FormatValue(const std::string& name, const Json::Value& value, const Texts& texts) {
  if (value.isBool()) return texts.GetText("value", value.asBool() ? "yes" : "no");
  if (value.isArray()) {
    std::string words;
    for (const Json::Value& each : value) {
      words += (words.empty() ? "" : texts.FormatUi("list_comma")) +
               texts.GetText("value", Sanitize(each.asString()));
    }
    return value.empty() ? texts.GetText("value", "none") : words;
  }
  const std::string text = Sanitize(value.asString());
  if (const std::string* words = texts.FindText("value", name + " " + text)) return *words;
  return text.empty() ? texts.GetText("value", "unknown") : text;
}

std::string FormatLabelledValue(const std::string& name, const Json::Value& value,
                                const Texts& texts) {
  return texts.AddLabel(texts.GetText("input", name)) + FormatValue(name, value, texts);
}

// "4.1 GiB free of 100 GiB: below the mark of 5 GiB (5 %)".
std::string FormatComparison(const Json::Value& compared, const Texts& texts) {
  const std::string unit = compared["unit"].asString();
  const auto amount = [&](const char* name) {
    const std::uint64_t value = compared[name].asUInt64();
    return unit == "bytes" ? FormatBytes(value, texts) : FormatCount(value);
  };
  const std::string mark =
      amount("mark") + " (" + FormatPercent(compared["share"].asDouble(), texts) + ")";
  const char* result = compared["mark"].isNull()  ? " unknown"
                       : compared["low"].asBool() ? " below"
                                                  : " enough";
  const std::string* text = texts.FindText("value", unit + result);
  return text == nullptr ? "" : FillPlaceholders(*text, {amount("free"), amount("total"), mark});
}

bool Decides(const Json::Value& object, const std::string& name) {
  const Json::Value& names = object[kDecides];
  return std::any_of(names.begin(), names.end(),
                     [&name](const Json::Value& each) { return each == name; });
}

bool IsListOfObjects(const Json::Value& value) {
  return value.isArray() && !value.empty() && value[0].isObject();
}

bool IsName(const std::string& member) {
  return std::any_of(std::begin(kNames), std::end(kNames),
                     [&member](const char* name) { return member == name; });
}

void Append(std::string& line, std::string_view separator, const std::string& part) {
  if (!line.empty()) line += separator;
  line += part;
}

// The single values of an object: those that decided, and the others.
void AddValues(const Json::Value& object, const std::string& title, const Texts& texts,
               std::vector<InputLine>& lines) {
  std::string deciding, others;
  for (auto member = object.begin(); member != object.end(); ++member) {
    const std::string name = member.name();
    if (name == kDecides || name == kCompared || IsName(name) || IsListOfObjects(*member)) continue;
    Append(Decides(object, name) ? deciding : others, " · ",
           FormatLabelledValue(name, *member, texts));
  }
  const std::string start = title.empty() ? "" : title + " – ";
  if (!deciding.empty()) lines.push_back({start + deciding, true});
  if (!others.empty()) lines.push_back({start + others, false});
  for (const Json::Value& compared : object[kCompared]) {
    lines.push_back({start + FormatComparison(compared, texts), compared[kDecides].asBool()});
  }
}

// Elements with the same values stand together: "Disk 1, Disk 2 – status: normal".
void AddElements(const Json::Value& list, const Texts& texts, std::vector<InputLine>& lines) {
  struct Group {
    Json::Value values;
    std::string label, names;
    bool bare = true;  // the names are numbers
  };
  std::vector<Group> groups;
  for (const Json::Value& element : list) {
    Group group{element, "", "", true};
    for (const char* name : kNames) {
      if (!element.isMember(name)) continue;
      group.label = texts.GetText("input", name);
      group.names = FormatValue(name, element[name], texts);
      group.values.removeMember(name);
    }
    group.bare = group.names.find_first_not_of("0123456789") == std::string::npos;
    const auto same = std::find_if(groups.begin(), groups.end(), [&group](const Group& other) {
      return other.values == group.values;
    });
    if (same == groups.end()) {
      groups.push_back(std::move(group));
    } else {
      same->names += texts.FormatUi("list_comma") + group.names;
      same->bare = same->bare && group.bare;
    }
  }
  // Most names say themselves what they name; "1" does not.
  for (const Group& group : groups) {
    AddValues(group.values, (group.bare ? group.label + " " : "") + group.names, texts, lines);
  }
}

}  // namespace

std::vector<InputLine> FormatInputs(const Json::Value& saw, const Texts& texts) {
  std::vector<InputLine> lines;
  AddValues(saw, "", texts, lines);
  for (auto member = saw.begin(); member != saw.end(); ++member) {
    if (IsListOfObjects(*member)) AddElements(*member, texts, lines);
  }
  std::stable_partition(lines.begin(), lines.end(),
                        [](const InputLine& line) { return line.decides; });
  return lines;
}

std::string ExplainOrder(const std::vector<CheckerResult>& ranked, const Texts& texts) {
  if (ranked.empty()) return texts.FormatUi("no_finding");
  if (ranked.size() == 1) return texts.FormatUi("only_finding");
  const double first = ranked[0].finding->priority, second = ranked[1].finding->priority;
  if (first < second)
    return texts.FormatUi("beats", FormatNumber(first, texts), FormatNumber(second, texts));
  return texts.FormatUi("tie", texts.FormatUi("priority", FormatNumber(first, texts)),
                        texts.GetText("checker", ranked[0].name),
                        texts.GetText("checker", ranked[1].name));
}

}  // namespace host

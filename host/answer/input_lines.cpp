#include "host/answer/input_lines.h"

#include <algorithm>
#include <map>
#include <string_view>
#include <utility>

#include "host/answer/checked_parts.h"
#include "host/answer/sources.h"
#include "host/text/escape.h"
#include "host/text/quantity.h"

namespace host {
namespace {

constexpr const char* kDecides = "decides";
constexpr const char* kCompared = "compared";
constexpr const char* kNames[] = {"volume", "disk", "unit", "LUN"};
// Their values are codes, with words in the section "value".
constexpr const char* kCodes[] = {"status", "overview", "security scan", "state", "on"};

bool IsAmong(const auto& list, const std::string& member) {
  return std::ranges::any_of(list, [&member](const char* each) { return member == each; });
}

// "\u201crepair pending\u201d": better than a wrong word, and no code.
std::string QuoteCode(std::string code, const Texts& texts) {
  std::ranges::replace(code, '_', ' ');
  return FillPlaceholders(texts.GetText("value", "quoted"), {code});
}

// `kind`: whose status it is, "disk"; the same code says something else of another kind.
std::string FormatCode(const std::string& kind, const std::string& name, const Json::Value& value,
                       const Texts& texts) {
  const std::string code = Sanitize(value.asString());
  const std::string key = (name == "status" ? kind : name) + " " + code;
  if (const std::string* words = texts.FindText("value", key)) return *words;
  if (code.empty() || value.isInt()) return texts.GetText("value", "unknown");
  return name == "on" ? code : QuoteCode(code, texts);
}

std::string FormatValue(const std::string& kind, const std::string& name, const Json::Value& value,
                        const Texts& texts) {
  if (value.isNull()) return texts.GetText("value", "unknown");
  if (value.isBool()) return texts.GetText("value", value.asBool() ? "yes" : "no");
  if (IsAmong(kCodes, name)) return FormatCode(kind, name, value, texts);
  if (!value.isArray()) return Sanitize(value.asString());
  std::vector<std::string> words;
  for (const Json::Value& each : value) words.push_back(texts.GetText("value", each.asString()));
  return words.empty() ? texts.GetText("value", "none") : JoinNames(words, texts);
}

std::string FormatLabelledValue(const std::string& kind, const std::string& name,
                                const Json::Value& value, const Texts& texts) {
  return texts.AddLabel(texts.GetText("input", name)) + FormatValue(kind, name, value, texts);
}

// "4.1 GiB free of 100 GiB: below the mark of 5 GiB (5 %)".
std::string FormatComparison(const Json::Value& compared, const Texts& texts) {
  const std::string unit = compared["unit"].asString();
  const auto amount = [&](const char* name) {
    const std::uint64_t value = compared[name].asUInt64();
    return unit == "bytes" ? FormatBytes(value, texts) : FormatCount(value);
  };
  const std::string mark =
      FillPlaceholders(texts.GetText("part", "with_details"),
                       {amount("mark"), FormatPercent(compared["share"].asDouble(), texts)});
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

void Append(std::string& line, std::string_view separator, const std::string& part) {
  if (!line.empty()) line += separator;
  line += part;
}

// What a line is about.
struct Subject {
  std::string kind;     // "disk"
  std::string names;    // "Disk 1, Disk 2"; empty: the machine
  std::string details;  // with all that is known of its part: "Disk 1 (bay 1, serial WD-1)"
};

std::string Start(const std::string& title) { return title.empty() ? "" : title + " – "; }

// The single values of an object: those that decided, and the others.
void AddValues(const Json::Value& object, const Subject& subject, const Texts& texts,
               std::vector<InputLine>& lines) {
  std::string deciding, others;
  for (auto member = object.begin(); member != object.end(); ++member) {
    const std::string name = member.name();
    if (name == kDecides || name == kCompared || IsAmong(kNames, name) || IsListOfObjects(*member))
      continue;
    Append(Decides(object, name) ? deciding : others, " · ",
           FormatLabelledValue(subject.kind, name, *member, texts));
  }
  if (!deciding.empty()) lines.push_back({Start(subject.details) + deciding, true});
  if (!others.empty()) lines.push_back({Start(subject.names) + others, false});
  for (const Json::Value& compared : object[kCompared]) {
    const bool decides = compared[kDecides].asBool();
    lines.push_back(
        {Start(decides ? subject.details : subject.names) + FormatComparison(compared, texts),
         decides});
  }
}

// Takes the name out of an element of a list. Most names say themselves what they name; "1" does
// not.
Subject TakeSubject(Json::Value& element, const Parts& parts, const Texts& texts) {
  Subject subject;
  for (const char* kind : kNames) {
    if (!element.isMember(kind)) continue;
    const std::string name = element[kind].asString();
    const VELAPart* part = FindSeenPart(name, parts);
    subject.kind = kind;
    subject.names = Sanitize(name);
    if (part != nullptr)
      subject.names = NamePart(*part, texts);
    else if (name.find_first_not_of("0123456789") == std::string::npos)
      subject.names = FillPlaceholders(texts.GetText("part", "volume"), {subject.names});
    subject.details = part != nullptr ? DescribePart(part->name, parts, texts) : subject.names;
    element.removeMember(kind);
  }
  return subject;
}

void AddWords(const Json::Value& element, const Texts& texts, SeenElement& seen) {
  for (const Json::Value& compared : element[kCompared])
    seen.compared.push_back(
        {compared["unit"].asString(), compared["low"].asBool(), FormatComparison(compared, texts)});
  for (auto member = element.begin(); member != element.end(); ++member)
    if (member.name() != kDecides && member.name() != kCompared)
      seen.values[member.name()] = FormatLabelledValue(seen.kind, member.name(), *member, texts);
}

// Elements with the same values stand together: "Disk 1, Disk 2 – status: well".
void AddElements(const Json::Value& list, const Parts& parts, const Texts& texts,
                 std::vector<InputLine>& lines) {
  std::vector<std::pair<Json::Value, Subject>> groups;
  std::map<Json::Value, std::size_t> places;  // of the groups, by their values
  for (Json::Value element : list) {
    const Subject subject = TakeSubject(element, parts, texts);
    const auto [place, isNew] = places.try_emplace(element, groups.size());
    if (isNew) {
      groups.emplace_back(std::move(element), subject);
      continue;
    }
    Subject& same = groups[place->second].second;
    same.names += texts.FormatUi("list_comma") + subject.names;
    same.details += texts.FormatUi("list_comma") + subject.details;
  }
  for (const auto& [values, subject] : groups) AddValues(values, subject, texts, lines);
}

}  // namespace

const VELAPart* FindSeenPart(const std::string& name, const Parts& parts) {
  constexpr std::pair<std::string_view, std::string_view> kStarts[] = {
      {"usbshare", "USB "}, {"satashare", "eSATA "}, {"sdshare", "SD "}};
  if (const VELAPart* part = FindPart(parts, name)) return part;
  if (const VELAPart* part = FindPart(parts, "volume_" + name)) return part;
  for (const auto& [start, word] : kStarts)
    if (name.starts_with(start))
      return FindPart(parts, std::string(word) + name.substr(start.size()));
  return name.empty() ? nullptr : parts.FindMounted(name);
}

std::vector<InputLine> FormatInputs(const CheckerResult& result, const Parts& parts,
                                    const Texts& texts) {
  std::vector<InputLine> lines;
  AddValues(result.saw, {.kind = "cluster", .names = "", .details = ""}, texts, lines);
  for (auto member = result.saw.begin(); member != result.saw.end(); ++member) {
    if (IsListOfObjects(*member)) AddElements(*member, parts, texts, lines);
  }
  for (std::string& line : FormatCheckedParts(result.name, parts, texts))
    lines.push_back({std::move(line), false});
  std::stable_partition(lines.begin(), lines.end(),
                        [](const InputLine& line) { return line.decides; });
  return lines;
}

std::vector<SeenElement> ListElements(const CheckerResult& result, const Parts& parts,
                                      const Texts& texts) {
  std::vector<SeenElement> elements;
  for (auto list = result.saw.begin(); list != result.saw.end(); ++list) {
    if (!IsListOfObjects(*list)) continue;
    for (Json::Value element : *list) {
      const Subject subject = TakeSubject(element, parts, texts);
      elements.push_back({subject.kind, subject.names, subject.details, list.name(), {}, {}});
      AddWords(element, texts, elements.back());
    }
  }
  return elements;
}

}  // namespace host

#include "host/answer/coverage.h"

#include <algorithm>

#include "SystemChecker/findings.h"
#include "host/answer/finding_text.h"
#include "host/answer/verdict.h"

namespace host {
namespace {

using common::Source, common::SourceSet;
using source_status::State;
using VELA::SystemHealth::kChecks;

bool IsUnseen(const VELASourceReport& source) {
  return IsUnread(source) || source.state == State::Accepted;
}

// What only the log tells of is none of the platforms' sources.
bool Rests(const SourceSet& set, const VELASourceReport& source) {
  const auto name = std::ranges::find(common::kSourceNames, std::string_view(source.name),
                                      [](const char* each) { return std::string_view(each); });
  return name != common::kSourceNames.end() &&
         set.Contains(static_cast<Source>(name - common::kSourceNames.begin()));
}

SourceSet FindSources(std::string_view check) {
  const auto row = std::ranges::find(kChecks, check,
                                     [](const auto& each) { return std::string_view(each.name); });
  return row == kChecks.end() ? SourceSet() : row->sources;
}

// The inputs that rest on some of their check's sources only.
struct InputRow {
  std::string_view input;
  SourceSet sources;
};
constexpr InputRow kInputs[] = {
    {"model without bays", {Source::Configuration}},
    {"volumes", {Source::Volumes, Source::ExternalVolumes, Source::San}},
    {"disks", {Source::Disks}},
    {"overview", {Source::Disks, Source::Volumes}},
    {"fan failed", {Source::Hardware, Source::ExpansionUnits}},
    {"processor fan failed", {Source::Hardware}},
    {"power failed", {Source::Hardware}},
    {"power supplies", {Source::Hardware, Source::ExpansionUnits}},
    {"too hot", {Source::Hardware, Source::Configuration}},
    {"units", {Source::ExpansionUnits}},
    {"web server failed", {Source::WebServer}},
    {"system volume crashed", {Source::Volumes}},
    {"security scan", {}},  // a file that the module reads itself
};

// What a collector holds that was told nothing. No finding rests on such a value.
bool MayBeDefault(const Json::Value& value) {
  if (value.isArray())
    return std::ranges::all_of(value, [](const auto& each) { return each == "works"; });
  if (value.isString()) return value == "normal" || value.asString().empty();
  return value == false || value == 0;
}

// A mark that is no setting's may be the usual one because no setting could be read.
void HideMarks(Json::Value& comparisons) {
  constexpr double kUsualShare = 0.05;
  for (Json::Value& compared : comparisons)
    if (compared["low"] == false && compared["share"] == kUsualShare)
      compared["mark"] = compared["share"] = Json::Value();
}

// `sources`: those of the check that were not seen; `own`: those of them that `object` rests on.
void Hide(const SourceSet& sources, const SourceSet& own, Json::Value& object) {
  for (const std::string& name : object.getMemberNames()) {
    if (name == "compared" && sources.Contains(Source::Configuration)) HideMarks(object[name]);
    if (name == "decides" || name == "compared") continue;
    const auto row = std::ranges::find(kInputs, name, &InputRow::input);
    const SourceSet rests = row == std::end(kInputs) ? own : row->sources.And(sources);
    Json::Value& value = object[name];
    if (!rests.IsEmpty() && MayBeDefault(value)) value = Json::Value();
    if (!value.isArray()) continue;
    for (Json::Value& element : value)
      if (element.isObject()) Hide(sources, rests, element);
  }
}

}  // namespace

const char* ToString(Outcome outcome) {
  constexpr const char* kNames[] = {"finding", "nothing", "not_made", "accepted"};
  return kNames[static_cast<std::size_t>(outcome)];
}

Outcome JudgeCheck(std::string_view check, bool hasFinding, const SourceReports& sources) {
  if (hasFinding) return Outcome::Finding;
  Outcome outcome = Outcome::Nothing;
  for (const VELASourceReport& source : sources) {
    if (!Rests(FindSources(check), source)) continue;
    if (IsUnread(source)) return Outcome::NotMade;
    if (source.state == State::Accepted) outcome = Outcome::Accepted;
  }
  return outcome;
}

std::vector<std::string> ListUnseen(std::string_view check, const SourceReports& sources,
                                    const Texts& texts) {
  std::vector<std::string> names;
  for (const VELASourceReport& source : sources)
    if (IsUnseen(source) && Rests(FindSources(check), source))
      names.push_back(NameSource(source, texts));
  return names;
}

void HideUnseen(std::string_view check, const SourceReports& sources, Json::Value& saw) {
  SourceSet unseen;
  for (std::size_t i = 0; i < common::kSourceNames.size(); ++i) {
    const SourceSet one = {static_cast<Source>(i)};
    const auto rests = [&one](const auto& source) {
      return IsUnseen(source) && Rests(one, source);
    };
    if (std::ranges::any_of(sources, rests)) unseen.Add(static_cast<Source>(i));
  }
  unseen = unseen.And(FindSources(check));
  if (!unseen.IsEmpty()) Hide(unseen, unseen, saw);
}

std::string FormatAnswer(const Finding& finding, const SourceReports& sources, const Texts& texts) {
  if (JudgeAnswer(finding, sources) != Verdict::Unknown) return RenderSentence(finding, texts);
  std::vector<std::string> unknown;
  for (const VELASourceReport& source : sources)
    if (IsUnread(source)) unknown.push_back(NameSource(source, texts));
  const auto nothing = std::ranges::count_if(kChecks, [&sources](const auto& check) {
    return JudgeCheck(check.name, false, sources) == Outcome::Nothing;
  });
  return texts.FormatUi("not_known", JoinNames(unknown, texts), std::to_string(nothing),
                        std::to_string(kChecks.size()));
}

}  // namespace host

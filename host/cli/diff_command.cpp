#include "host/cli/commands.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <vector>

#include "common/json_writer.h"
#include "host/answer/changes.h"
#include "host/answer/complete_answer.h"
#include "host/answer/coverage.h"
#include "host/answer/verdict.h"
#include "host/cli/terminal.h"
#include "host/text/escape.h"

namespace host {
namespace {

bool IsSavedAnswer(const std::string& name) {
  std::error_code error;  // what cannot be looked at is no saved answer
  return std::filesystem::is_regular_file(name, error) &&
         std::filesystem::path(name).filename() != "state.json";
}

SavedAnswer ReadSavedAnswer(const std::string& file) {
  std::ostringstream document;
  document << std::ifstream(file).rdbuf();
  try {
    return ParseSavedAnswer(document.str());
  } catch (const Failure& failure) {
    throw Failure(failure.Status(), file + ": " + failure.what());
  }
}

SavedAnswer PlayScenario(Session& session, const std::string& scenario) {
  const SimulatedMachine machine = session.OpenScenario(scenario);
  const CompleteAnswer complete = AskForEverything(session.GetHost(), machine);
  const auto& [reply, checkers, json] = complete.explanation;
  return {ParseAnswer(reply.document).rule, checkers, reply.sources, complete.evidence.parts, {}};
}

SavedAnswer OpenSide(Session& session, const std::string& name) {
  return IsSavedAnswer(name) ? ReadSavedAnswer(name) : PlayScenario(session, name);
}

std::string FormatVerdict(const Finding& finding, const SourceReports& sources, const Texts& texts,
                          const Style& style) {
  const Verdict verdict = JudgeAnswer(finding, sources);
  return style.Severity(verdict, texts.FormatUi(ToString(verdict))) +
         EndLabel(texts.Resolve("common:colon")) + FormatAnswer(finding, sources, texts);
}

// All that differs between both.
struct Changes {
  std::vector<Change> checks, sources, things;
};

// What a check saw is read only now; a saved answer may hold anything there.
Changes CompareAll(const SavedAnswer& a, const SavedAnswer& b, const Texts& texts) try {
  return {CompareChecks(a, b, texts), CompareSources(a, b, texts), CompareThings(a, b, texts)};
} catch (const Json::LogicError&) {
  throw Failure(kNoInput,
                "Cannot compare: one of both files holds what no check of vela-health saw. "
                "Save it again: vela-health --json=full.");
}

void PrintChanges(const char* title, const std::vector<Change>& changes, const Texts& texts,
                  const Style& style) {
  if (changes.empty()) return;
  std::cout << style.Bold(texts.FormatUi(title)) << '\n';
  for (const auto& [about, before, after] : changes) {
    const std::string words = before.empty()  ? texts.FormatUi("came")
                              : after.empty() ? texts.FormatUi("gone")
                                              : std::string(before).append(" → ").append(after);
    std::cout << style.WrapLines(2, "", texts.AddLabel(about) + words) << '\n';
  }
}

Json::Value ToJson(const std::vector<Change>& changes) {
  Json::Value list(Json::arrayValue);
  for (const auto& [about, before, after] : changes) {
    Json::Value& change = list.append(Json::objectValue);
    change["about"] = about;
    change["a"] = before;
    change["b"] = after;
  }
  return list;
}

Json::Value ToJson(const SavedAnswer& before, const SavedAnswer& after, const Texts& texts) {
  Json::Value sides;
  sides["a"] = FormatAnswer(before.finding, before.sources, texts);
  sides["b"] = FormatAnswer(after.finding, after.sources, texts);
  const Changes changes = CompareAll(before, after, texts);
  sides["checks"] = ToJson(changes.checks);
  sides["sources"] = ToJson(changes.sources);
  sides["parts"] = ToJson(changes.things);
  return sides;
}

}  // namespace

ExitStatus RunDiff(Session& session, const std::string& a, const std::string& b) {
  const SavedAnswer before = OpenSide(session, a), after = OpenSide(session, b);
  const Texts& texts = session.GetTexts();
  const Style style = Style::ForStandardOutput();
  const std::string old = FormatVerdict(before.finding, before.sources, texts, style);
  const std::string now = FormatVerdict(after.finding, after.sources, texts, style);
  const ExitStatus status = ChooseExitStatus(after.finding, after.sources);
  if (session.Options().json) {
    Json::Value sides = ToJson(before, after, texts);
    sides["changes"] = old != now;
    std::cout << common::WriteCompact(sides) << '\n';
    return status;
  }
  const auto& [checks, sources, things] = CompareAll(before, after, texts);
  const bool same = checks.empty() && sources.empty() && things.empty();
  if (old == now)
    std::cout << texts.FormatUi(same ? "nothing_changes" : "verdict_stays", now) << '\n';
  else
    std::cout << texts.FormatUi("changes") << '\n'
              << style.WrapLines(2, "", Sanitize(a) + ": " + old) << '\n'
              << style.WrapLines(2, "", Sanitize(b) + ": " + now) << '\n';
  PrintChanges("checks", checks, texts, style);
  PrintChanges("sources_title", sources, texts, style);
  PrintChanges("machine", things, texts, style);
  return status;
}

}  // namespace host

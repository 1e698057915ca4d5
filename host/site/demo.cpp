#include "host/site/demo.h"

#include <map>
#include <tuple>
#include <utility>

#include "common/json_reader.h"
#include "common/json_writer.h"
#include "host/answer/catalogue.h"
#include "host/text/failure.h"

namespace host {
namespace {

// What makes two findings the same kind.
using Kind = std::tuple<std::string, FindingType, std::string>;

struct Sample {
  std::string scenario;
  Json::Value rule;
};

// The finding that the scenario is tested to give; null where it is the healthy machine's.
Json::Value ReadRule(const std::filesystem::path& scenario) {
  Json::Value expected;
  if (common::ReadJsonFile((scenario / "expected.json").c_str(), expected)) {
    const Json::Value* rule = common::FindMember(expected, "rule");
    return rule != nullptr ? *rule : Json::Value();
  }
  throw Failure(kUnavailable, "Cannot show the scenarios: " + scenario.string() +
                                  " has no readable expected.json. Install the program again.");
}

// Of several machines the one with the shortest name, which as a rule has the least beside its
// finding; those that show a failing source are not about theirs.
std::map<Kind, Sample> PickSamples(const std::set<std::string, std::less<>>& names,
                                   const std::filesystem::path& folder) {
  std::map<Kind, Sample> samples;
  for (const std::string& name : names) {
    if (name.starts_with("failing-")) continue;
    Json::Value rule = ReadRule(folder / name);
    if (rule.isNull()) continue;
    const Finding finding = ParseFinding(rule);
    const Kind kind(finding.id, finding.type, finding.TextKey());
    const auto known = samples.find(kind);
    if (known == samples.end() || name.size() < known->second.scenario.size()) {
      samples[kind] = {name, std::move(rule)};
    }
  }
  return samples;
}

}  // namespace

Demo::Demo(const Platform& platform, std::filesystem::path scenarios)
    : platform_(platform), folder_(std::move(scenarios)) {
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(folder_, error)) {
    if (entry.is_directory()) names_.insert(entry.path().filename());
  }
  if (names_.empty()) {
    throw Failure(kUnavailable, "Cannot show a demo: there are no scenarios in " +
                                    folder_.string() + ". Install the program again.");
  }
  const std::map<Kind, Sample> samples = PickSamples(names_, folder_);
  Json::Value gallery;
  for (const CatalogueEntry& entry : Catalogue()) {
    const auto sample = samples.find({entry.id, entry.type, entry.textKey});
    if (sample == samples.end()) continue;
    Json::Value& finding = gallery["findings"].append(Json::objectValue);
    finding["scenario"] = sample->second.scenario;
    finding["rule"] = sample->second.rule;
    if (entry.type != FindingType::Normal) faults_.push_back(sample->second.scenario);
  }
  for (const std::string& name : names_) gallery["scenarios"].append(name);
  gallery_ = common::WriteCompact(gallery);
}

SimulatedMachine Demo::Open(const std::string& name) const {
  return platform_.OpenScenario(folder_ / name);
}

}  // namespace host

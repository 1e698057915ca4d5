#include "host/site/metric_families.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "host/answer/finding_text.h"
#include "host/answer/verdict.h"
#include "host/site/part_families.h"
#include "host/site/series.h"

namespace host {
namespace {

using Names = std::vector<std::string>;

void AddName(std::string_view part, const Parts& parts, const Texts& texts, Names& names) {
  if (part.empty()) return;
  std::string name = DescribePart(part, parts, texts);
  if (std::ranges::find(names, name) == names.end()) names.push_back(std::move(name));
}

// The parts that the causes are about, and those that failed or are missing in them. What is being
// rebuilt is left out: it comes and goes while the finding stays.
Names ListTroubledParts(const Evidence& evidence, std::string_view check, const Texts& texts) {
  Names names;
  for (const VELAEvidence& record : evidence.records) {
    if (record.check != check) continue;
    AddName(record.part, evidence.parts, texts, names);
    for (std::uint32_t i = 0; i < record.relatedCount; ++i) {
      const VELARelatedPart& related = record.related[i];
      const std::string_view relation = related.relation;
      if (relation == "failed" || relation == "missing")
        AddName(related.part, evidence.parts, texts, names);
    }
  }
  return names;
}

// "md0 (RAID 6, Volume 1); Disk 3 (bay 3, WDC WD80EFPX, serial WD-1, was sdc); md1 and 2 more".
std::string NameParts(const Evidence& evidence, std::string_view check, const Texts& texts) {
  constexpr std::size_t kNamed = 3;
  const Names names = ListTroubledParts(evidence, check, texts);
  std::string words;
  for (std::size_t i = 0; i < std::min(names.size(), kNamed); ++i)
    words += (i == 0 ? "" : "; ") + names[i];
  if (names.size() > kNamed) words += " and " + std::to_string(names.size() - kNamed) + " more";
  return words;
}

void AddFindings(Series& series, const CompleteAnswer& complete, const Texts& texts) {
  const auto findings = RankFindings(complete.explanation);
  std::array<int, 3> counts = {};  // of Verdict::Danger, Warning and Notice
  series.Start("vela_health_finding_priority",
               "A finding, the part it is about, and its priority: the smaller, the more urgent");
  for (const CheckerResult& result : findings) {
    const Finding& finding = *result.finding;
    const Verdict verdict = JudgeFinding(finding);
    ++counts.at(static_cast<std::size_t>(verdict));
    series.Add({{"check", result.name},
                {"verdict", ToString(verdict)},
                {"id", finding.id},
                {"text_key", finding.TextKey()},
                {"part", NameParts(complete.evidence, result.name, texts)},
                {"sentence", RenderSentence(finding, texts)}},
               finding.priority);
  }
  series.Start("vela_health_findings", "How many checks have a finding of this verdict");
  for (const Verdict verdict : {Verdict::Danger, Verdict::Warning, Verdict::Notice})
    series.Add({{"verdict", ToString(verdict)}}, counts.at(static_cast<std::size_t>(verdict)));
}

// Without the module that explains, nobody knows what became of each check.
void AddChecks(Series& series, const std::vector<CheckerResult>& checks) {
  if (checks.empty()) return;
  const auto isMade = [](const CheckerResult& check) { return check.outcome != Outcome::NotMade; };
  series.Start("vela_health_checks_made", "How many of the ten checks could be made");
  series.Add({}, static_cast<double>(std::ranges::count_if(checks, isMade)));
  series.Start("vela_health_check_not_made",
               "1: this check found nothing, but what it rests on was not read");
  for (const CheckerResult& check : checks)
    if (!isMade(check)) series.Add({{"check", check.name}}, 1);
}

void AddSources(Series& series, const SourceReports& sources) {
  using source_status::State;
  series.Start("vela_health_sources_read", "How many sources were read");
  series.Add(
      {}, static_cast<double>(std::ranges::count(sources, State::Read, &VELASourceReport::state)));
  series.Start("vela_health_source_unread",
               "1: this source failed, or nobody watches what it would tell");
  for (const VELASourceReport& source : sources)
    if (IsUnread(source))
      series.Add({{"source", source.name}, {"state", source_status::NameState(source.state)}}, 1);
  series.Start("vela_health_source_accepted",
               "1: nobody watches this source, and the settings accept that");
  for (const VELASourceReport& source : sources)
    if (source.state == State::Accepted) series.Add({{"source", source.name}}, 1);
}

void AddNotes(Series& series, const CompleteAnswer& complete, const Texts& texts) {
  series.Start("vela_health_note", "1: something worth knowing that is no finding");
  for (const VELANote& note : complete.notes)
    series.Add(
        {{"key", note.key},
         {"part",
          note.part[0] == '\0' ? "" : DescribePart(note.part, complete.evidence.parts, texts)}},
        1);
}

}  // namespace

std::vector<prometheus::MetricFamily> CollectFamilies(const CompleteAnswer& complete,
                                                      const Texts& texts) {
  Series series;
  AddFindings(series, complete, texts);
  AddChecks(series, complete.explanation.checkers);
  AddSources(series, complete.explanation.reply.sources);
  AddNotes(series, complete, texts);
  series.Start("vela_health_snapshot_timestamp_seconds", "When the collector last looked");
  if (complete.snapshotTime >= 0) series.Add({}, static_cast<double>(complete.snapshotTime));
  AddPartFamilies(series, complete, texts);
  series.Start("vela_health_build_info", "Always 1; the version is its label");
  series.Add({{"version", VELA_VERSION}}, 1);
  return series.Take();
}

}  // namespace host

#include "host/answer/verdict.h"

namespace host {

Verdict JudgeFinding(const Finding& finding) {
  if (finding.type == FindingType::Danger) return Verdict::Danger;
  if (finding.type == FindingType::Warning) return Verdict::Warning;
  return finding.AllWell() ? Verdict::Well : Verdict::Notice;
}

const char* ToString(Verdict verdict) {
  switch (verdict) {
    case Verdict::Danger:
      return "danger";
    case Verdict::Warning:
      return "warning";
    case Verdict::Notice:
      return "notice";
    case Verdict::Well:
      break;
  }
  return "well";
}

const char* NameSourceState(const VELASourceReport& source) {
  constexpr const char* kNames[] = {"absent", "read", "failed"};
  return kNames[source.state == 1 || source.state == 2 ? source.state : 0];
}

SourceCount CountSources(const std::vector<VELASourceReport>& sources) {
  SourceCount count;
  for (const VELASourceReport& source : sources) {
    ++(source.state == 1 ? count.read : source.state == 2 ? count.failed : count.absent);
  }
  return count;
}

ExitStatus ChooseExitStatus(Verdict verdict, const SourceCount& sources) {
  if (verdict == Verdict::Danger) return kDanger;
  if (verdict != Verdict::Well) return kAttention;
  return sources.failed > 0 ? kIncomplete : kHealthy;
}

}  // namespace host

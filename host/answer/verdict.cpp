#include "host/answer/verdict.h"

#include "host/answer/sources.h"

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

ExitStatus ChooseExitStatus(const Finding& finding, const std::vector<VELASourceReport>& sources) {
  const Verdict verdict = JudgeFinding(finding);
  if (verdict == Verdict::Danger) return kDanger;
  if (verdict != Verdict::Well) return kAttention;
  return CountSources(sources).failed > 0 ? kIncomplete : kHealthy;
}

}  // namespace host

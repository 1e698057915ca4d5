#include "host/answer/verdict.h"

#include <algorithm>

namespace host {

Verdict JudgeFinding(const Finding& finding) {
  if (finding.type == FindingType::Danger) return Verdict::Danger;
  if (finding.type == FindingType::Warning) return Verdict::Warning;
  return finding.AllWell() ? Verdict::Well : Verdict::Notice;
}

Verdict JudgeAnswer(const Finding& finding, const SourceReports& sources) {
  const Verdict verdict = JudgeFinding(finding);
  const bool blind = std::ranges::any_of(sources, IsUnread);
  return verdict == Verdict::Well && blind ? Verdict::Unknown : verdict;
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
      return "well";
    case Verdict::Unknown:
      break;
  }
  return "unknown";
}

ExitStatus ChooseExitStatus(const Finding& finding, const SourceReports& sources) {
  switch (JudgeAnswer(finding, sources)) {
    case Verdict::Danger:
      return kDanger;
    case Verdict::Warning:
    case Verdict::Notice:
      return kAttention;
    case Verdict::Unknown:
      return kIncomplete;
    case Verdict::Well:
      break;
  }
  return kHealthy;
}

}  // namespace host

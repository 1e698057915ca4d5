#include <algorithm>
#include <iostream>
#include <iterator>
#include <set>

#include "host/answer/complete_answer.h"
#include "host/answer/finding_text.h"
#include "host/answer/verdict.h"
#include "host/cli/check_line.h"
#include "host/cli/commands.h"
#include "host/cli/performance_data.h"

namespace host {
namespace {

const char* NameState(ExitStatus status) {
  switch (status) {
    case kHealthy:
      return "OK";
    case kAttention:
      return "WARNING";
    case kDanger:
      return "CRITICAL";
    default:
      return "UNKNOWN";
  }
}

// "Volume 1: almost full: Volume 1 (/volume1) has 2 % free, limit 5 %.": the first cause, and how
// many more there are.
std::string DescribeFinding(const CheckerResult& result, const Evidence& evidence,
                            const Texts& texts) {
  std::string words = RenderSentence(*result.finding, texts);
  const std::vector<ToldCause> causes = FormatCauses(evidence, result.name, texts);
  if (causes.empty()) return words;
  for (const std::string& line : causes.front().lines) words = JoinSentences(words, line);
  if (causes.size() == 1) return words;
  const std::string more = std::to_string(causes.size() - 1);
  return JoinSentences(words, FillPlaceholders(texts.Resolve("part:more"), {more}));
}

// The most urgent first. What reads like an earlier one, as two checks may find the same, is not
// told twice.
std::string DescribeFindings(const CompleteAnswer& complete, const Texts& texts) {
  std::set<std::string> told;
  std::string words;
  for (const CheckerResult& result : RankFindings(complete.explanation)) {
    if (!told.insert(RenderSentence(*result.finding, texts)).second) continue;
    const char* verdict = ToString(JudgeFinding(*result.finding));
    if (!words.empty()) words += " - " + texts.AddLabel(texts.FormatUi(verdict));
    words += DescribeFinding(result, complete.evidence, texts);
  }
  return words;
}

// What was not looked at, and why.
std::string DescribeUnread(const SourceReports& sources, const Texts& texts) {
  SourceReports unread;
  std::ranges::copy_if(sources, std::back_inserter(unread), IsUnread);
  std::string words;
  for (const ToldLine& line : FormatSourceLines(unread, texts)) words += " - " + line.text;
  return words;
}

std::string Describe(const CompleteAnswer& complete, ExitStatus status, const Texts& texts) {
  const Explanation& explanation = complete.explanation;
  const SourceReports& sources = explanation.reply.sources;
  if (status == kAttention || status == kDanger) return DescribeFindings(complete, texts);
  const std::string answer =
      FormatAnswer(ParseAnswer(explanation.reply.document).rule, sources, texts);
  return status == kHealthy
             ? JoinSentences(answer, FormatCoverage(explanation, texts))
             : texts.AddLabel(texts.FormatUi("unknown")) + answer + DescribeUnread(sources, texts);
}

}  // namespace

ExitStatus RunCheck(Session& session) {
  const SimulatedMachine machine = session.OpenMachine();
  const Texts& texts = session.GetTexts();
  const CompleteAnswer complete = AskForEverything(session.GetHost(), machine);
  const Reply& reply = complete.explanation.reply;
  const ExitStatus status = ChooseExitStatus(ParseAnswer(reply.document).rule, reply.sources);
  std::cout << NameState(status) << " - " << MakeCheckLine(Describe(complete, status, texts))
            << " | " << FormatPerformanceData(complete) << '\n';
  return status;
}

}  // namespace host

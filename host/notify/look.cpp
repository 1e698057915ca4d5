#include "host/notify/look.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <ctime>
#include <iterator>

#include "common/json_writer.h"
#include "host/answer/finding_text.h"
#include "host/answer/remedies.h"
#include "host/answer/verdict.h"
#include "host/text/escape.h"
#include "host/text/quantity.h"

namespace host {
namespace {

constexpr std::array kKindNames = {"danger", "unknown", "warning", "unread", "notice", "note"};

ItemKind ToKind(Verdict verdict) {
  if (verdict == Verdict::Danger) return ItemKind::Danger;
  return verdict == Verdict::Warning ? ItemKind::Warning : ItemKind::Notice;
}

// Its key, what else is concerned, and of an expansion unit which of its fans. What is being
// rebuilt is left out, since that comes and goes while the cause stays. The words of other records
// may hold figures.
std::string IdentifyCause(const VELAEvidence& record) {
  std::vector<std::string> related;
  for (std::uint32_t i = 0; i < record.relatedCount; ++i) {
    const VELARelatedPart& each = record.related[i];
    if (std::string_view(each.relation) != "rebuilding")
      related.push_back(std::string("\n") + each.relation + "\n" + each.part);
  }
  std::ranges::sort(related);
  std::string cause = record.key;
  if (cause.starts_with("unit_")) cause.append("\n").append(record.words);
  for (const std::string& each : related) cause += each;
  return cause;
}

// One for each cause; of a finding whose causes nobody knows one alone.
void AddFinding(const CheckerResult& result, const Evidence& evidence, const Texts& texts,
                std::vector<Item>& items) {
  const Finding& finding = *result.finding;
  const Verdict verdict = JudgeFinding(finding);
  const std::string sentence =
      texts.AddLabel(texts.FormatUi(ToString(verdict))) + RenderSentence(finding, texts);
  const Item bare{ToKind(verdict),
                  "finding\n" + result.name + "\n" + finding.id + "\n" + finding.TextKey() + "\n" +
                      ToString(verdict),
                  "",
                  "",
                  result.name,
                  sentence};
  const std::size_t before = items.size();
  for (const VELAEvidence& record : evidence.records) {
    if (result.name != record.check) continue;
    Item item = bare;
    item.part = record.part;
    item.cause = IdentifyCause(record);
    item.line = JoinSentences(sentence, FormatCause(record, evidence.parts, texts).lines.front());
    items.push_back(std::move(item));
  }
  if (items.size() == before) items.push_back(bare);
}

void AddSources(const SourceReports& sources, const Texts& texts, std::vector<Item>& items) {
  for (const VELASourceReport& source : sources) {
    if (!IsUnread(source)) continue;
    const std::vector<ToldLine> lines = FormatSourceLines({source}, texts);
    const std::string line = lines.empty() ? NameSource(source, texts) : lines.front().text;
    items.push_back(
        {ItemKind::Unread, std::string("source\n") + source.name, source.name, "", "", line});
  }
}

void AddNotes(const Notes& notes, const Texts& texts, std::vector<Item>& items) {
  for (const VELANote& note : notes)
    items.push_back({ItemKind::Note, std::string("note\n") + note.key, note.part, "", "",
                     texts.FormatUi("note", FormatNote(note, texts))});
}

void TellMostUrgent(const CheckerResult& first, const Evidence& evidence, const Texts& texts,
                    Look& look) {
  const std::vector<ToldCause> causes = FormatCauses(evidence, first.name, texts);
  for (const ToldCause& cause : causes)
    look.why.insert(look.why.end(), cause.lines.begin(), cause.lines.end());
  if (!look.why.empty()) look.sentence = JoinSentences(look.sentence, look.why.front());
  look.commands = ChooseCommands(*first.finding, causes);
  look.advice = FindAdvice(*first.finding, "do", texts);
}

// The most urgent first, each once.
void PutInOrder(std::vector<Item>& items) {
  std::ranges::stable_sort(items, {}, &Item::kind);
  std::vector<Item> kept;
  for (Item& item : items)
    if (std::ranges::none_of(kept, [&item](const Item& each) { return each.Key() == item.Key(); }))
      kept.push_back(std::move(item));
  items = std::move(kept);
}

// What the owner accepts counts as seen.
std::map<std::string, std::set<std::string>> ListUnseenByCheck(const Explanation& explanation,
                                                               const Texts& texts) {
  SourceReports unread;
  std::ranges::copy_if(explanation.reply.sources, std::back_inserter(unread), IsUnread);
  std::map<std::string, std::set<std::string>> unseen;
  for (const CheckerResult& each : explanation.checkers)
    for (std::string& source : ListUnseen(each.name, unread, texts))
      unseen[each.name].insert(std::move(source));
  return unseen;
}

std::string NameThisMachine() {
  char name[HOST_NAME_MAX + 1] = {};
  gethostname(name, HOST_NAME_MAX);
  return name;
}

}  // namespace

const char* ToString(ItemKind kind) { return kKindNames.at(static_cast<std::size_t>(kind)); }

Look MakeLook(const CompleteAnswer& complete, const Texts& texts) {
  const Explanation& explanation = complete.explanation;
  const SourceReports& sources = explanation.reply.sources;
  const Answer answer = ParseAnswer(explanation.reply.document);
  Look look;
  look.host = answer.hostname;
  look.time = FormatUtcTime(complete.time);
  look.verdict = ToString(JudgeAnswer(answer.rule, sources));
  look.sentence = FormatAnswer(answer.rule, sources, texts);
  const std::vector<CheckerResult> ranked = RankFindings(explanation);
  if (!ranked.empty()) TellMostUrgent(ranked.front(), complete.evidence, texts, look);
  for (const CheckerResult& each : ranked) AddFinding(each, complete.evidence, texts, look.items);
  AddSources(sources, texts, look.items);
  AddNotes(complete.notes, texts, look.items);
  PutInOrder(look.items);
  look.unseen = ListUnseenByCheck(explanation, texts);
  look.json = WriteCompleteAnswer(complete, texts);
  return look;
}

Look MakeLookWithoutAnswer(const std::string& reason, const Texts& texts) {
  Look look;
  look.answered = false;
  look.host = NameThisMachine();
  look.time = FormatUtcTime(std::time(nullptr));
  look.verdict = ToString(Verdict::Unknown);
  look.sentence = texts.FormatUi("notify_no_answer", Sanitize(reason));
  look.items.push_back({ItemKind::Unknown, "answer", "", "", "",
                        texts.AddLabel(texts.FormatUi("unknown")) + look.sentence});
  Json::Value root;
  root["hostname"] = look.host;
  root["time"] = look.time;
  root["verdict"] = look.verdict;
  root["sentence"] = look.sentence;
  look.json = common::WriteCompact(root);
  return look;
}

}  // namespace host

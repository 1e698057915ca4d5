#include "host/notify/message.h"

#include <algorithm>

#include "host/text/escape.h"

namespace host {
namespace {

using Lines = std::vector<std::string>;

// What a hook passes on must fit into a header, and into the environment.
constexpr std::size_t kLongestLine = 1000, kLongestSubject = 200,
                      kLongestText = std::size_t{48} << 10;

// At most so many bytes, and no half character.
std::string CutText(std::string text, std::size_t most) {
  if (text.size() <= most) return text;
  std::size_t end = most;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) --end;
  return text.substr(0, end) + "…";
}

// Names of volumes and the like reach mail headers by this: none holds a line's end.
std::string MakeLine(const std::string& text, std::size_t most = kLongestLine) {
  return CutText(Sanitize(text), most);
}

std::string JoinLines(const Lines& lines, const std::string& before = "") {
  std::string text;
  for (const std::string& line : lines) text += before + MakeLine(line) + "\n";
  if (!text.empty()) text.pop_back();
  return CutText(text, kLongestText);
}

Lines ListChanges(const std::vector<ItemChange>& changes, const Texts& texts) {
  Lines lines;
  for (const ItemChange& change : changes)
    lines.push_back(
        texts.AddLabel(texts.FormatUi(change.cleared ? "notify_cleared" : "notify_new")) +
        change.item.line);
  return lines;
}

std::string NameEvent(const std::vector<ItemChange>& changes) {
  if (changes.empty() || changes.front().cleared) return "cleared";
  return ToString(changes.front().item.kind);
}

void AddSection(std::string& text, const std::string& title, const Lines& lines,
                const Texts& texts) {
  if (lines.empty()) return;
  text += "\n" + texts.AddColon(title) + "\n" + JoinLines(lines, "  ") + "\n";
}

// How it stands, what has changed, why, what to do, and what else there is.
std::string WriteText(const Look& look, const Lines& changes, const std::string& note,
                      const Texts& texts) {
  std::string text = MakeLine(texts.AddLabel(texts.FormatUi(look.verdict)) + look.sentence) + "\n";
  if (!note.empty()) text = MakeLine(note) + "\n\n" + text;
  AddSection(text, texts.FormatUi("notify_changes"), changes, texts);
  AddSection(text, texts.FormatUi("why"), look.why, texts);
  Lines advice = look.commands;
  if (!look.advice.empty()) advice.insert(advice.begin(), look.advice);
  AddSection(text, texts.FormatUi("do"), advice, texts);
  Lines standing;
  for (const Item& item : look.items)
    if (std::ranges::none_of(changes, [&](const auto& line) { return line.ends_with(item.line); }))
      standing.push_back(item.line);
  AddSection(text, texts.FormatUi("notify_standing"), standing, texts);
  return CutText(text + "\n" + MakeLine(look.host) + " · " + look.time + "\n", kLongestText);
}

Message Write(const Look& look, const std::string& event, const std::string& subject,
              const Lines& changes, const std::string& note, const Texts& texts) {
  Message message;
  message.json = look.json;
  message.environment = {
      {"VELA_EVENT", event},
      {"VELA_HOST", MakeLine(look.host)},
      {"VELA_TIME", look.time},
      {"VELA_VERDICT", look.verdict},
      {"VELA_SENTENCE", MakeLine(look.sentence)},
      {"VELA_WHY", JoinLines(look.why)},
      {"VELA_COMMANDS", JoinLines(look.commands)},
      {"VELA_CHANGES", JoinLines(changes)},
      {"VELA_SUBJECT", MakeLine(texts.AddLabel(look.host) + subject, kLongestSubject)},
      {"VELA_MESSAGE", WriteText(look, changes, note, texts)},
  };
  return message;
}

}  // namespace

Message WriteMessage(const Look& look, const std::vector<ItemChange>& changes,
                     const std::string& note, const Texts& texts) {
  const Lines lines = ListChanges(changes, texts);
  std::string subject = note;
  if (!changes.empty())
    subject = changes.front().cleared ? lines.front() : changes.front().item.line;
  return Write(look, NameEvent(changes), subject, lines, note, texts);
}

Message WriteMessage(const Look& look, const std::string& event, const std::string& subject,
                     const Texts& texts) {
  return Write(look, event, subject, {}, subject, texts);
}

void AddLeftOut(Message& message, int count, const Texts& texts) {
  const std::string line = texts.FormatUi("notify_left_out", std::to_string(count));
  message.environment["VELA_LEFT_OUT"] = std::to_string(count);
  std::string& text = message.environment["VELA_MESSAGE"];
  text = line + "\n\n" + text;
}

}  // namespace host

#include "host/answer/sources.h"

#include <algorithm>

#include "host/text/escape.h"

namespace host {
namespace {

using source_status::State;

int Count(const SourceReports& sources, State state) {
  return static_cast<int>(std::ranges::count(sources, state, &VELASourceReport::state));
}

// "source_failed"; none where its state is nothing to tell.
const char* ChooseText(const VELASourceReport& source) {
  switch (source.state) {
    case State::Failed:
      return "source_failed";
    case State::Unwatched:
      return "source_unwatched";
    case State::Accepted:
      return "source_accepted";
    case State::Read:
      return source.reasonCount > 0 && source.reasons[0].remedy[0] != '\0' ? "source_read"
                                                                           : nullptr;
    default:
      return nullptr;
  }
}

void AddLines(const VELASourceReport& source, const Texts& texts, std::vector<ToldLine>& lines) {
  const char* key = ChooseText(source);
  if (key == nullptr) return;
  const std::string name = NameSource(source, texts);
  for (std::uint32_t i = 0; i < source.reasonCount; ++i)
    lines.push_back({texts.FormatUi(key, name, Sanitize(source.reasons[i].text)),
                     Sanitize(source.reasons[i].remedy)});
  if (source.moreReasons != 0)
    lines.push_back({texts.FormatUi(key, name, std::string(kMoreReasons)), ""});
}

}  // namespace

bool IsUnread(const VELASourceReport& source) {
  return source.state == State::Failed || source.state == State::Unwatched;
}

std::string FormatSourcesLine(const SourceReports& sources, const Texts& texts) {
  if (sources.empty()) return texts.FormatUi("sources_unknown");
  const int read = Count(sources, State::Read), absent = Count(sources, State::Absent);
  const int notAsked = Count(sources, State::NotAsked);
  const int present = static_cast<int>(sources.size()) - absent - notAsked;
  const std::string comma = texts.FormatUi("clause_comma");
  std::string line = texts.FormatUi("sources", std::to_string(read), std::to_string(present));
  if (absent > 0) line += comma + texts.FormatUi("sources_absent", std::to_string(absent));
  if (notAsked > 0) line += comma + texts.FormatUi("sources_not_asked", std::to_string(notAsked));
  return line;
}

std::string NameSource(const VELASourceReport& source, const Texts& texts) {
  return texts.GetText("source", source.name);
}

std::string JoinNames(const std::vector<std::string>& names, const Texts& texts) {
  std::string list;
  for (const std::string& name : names)
    list += (list.empty() ? "" : texts.FormatUi("list_comma")) + name;
  return list;
}

std::vector<ToldLine> FormatSourceLines(const SourceReports& sources, const Texts& texts) {
  std::vector<ToldLine> lines;
  for (const VELASourceReport& source : sources) AddLines(source, texts, lines);
  return lines;
}

}  // namespace host

#include "host/answer/sources.h"

#include "host/text/escape.h"

namespace host {
namespace {

using source_status::State;

bool IsUnread(const VELASourceReport& source) {
  return source.state == State::Failed || source.state == State::Unwatched;
}

}  // namespace

SourceCount CountSources(const std::vector<VELASourceReport>& sources) {
  SourceCount count;
  for (const VELASourceReport& source : sources) {
    if (source.state == State::Read) {
      ++count.read;
    } else if (IsUnread(source)) {
      ++count.failed;
    } else {
      ++count.absent;
    }
  }
  return count;
}

const char* NameSourceState(const VELASourceReport& source) {
  if (source.state == State::Read) return "read";
  return IsUnread(source) ? "failed" : "absent";
}

std::string FormatSourcesLine(const std::vector<VELASourceReport>& sources, const Texts& texts) {
  if (sources.empty()) return texts.FormatUi("sources_unknown");
  const SourceCount count = CountSources(sources);
  std::string line =
      texts.FormatUi("sources", std::to_string(count.read), std::to_string(count.Present()));
  if (count.absent > 0)
    line += ", " + texts.FormatUi("sources_absent", std::to_string(count.absent));
  return line;
}

std::vector<std::string> FormatFailedSources(const std::vector<VELASourceReport>& sources,
                                             const Texts& texts) {
  std::vector<std::string> lines;
  for (const VELASourceReport& source : sources) {
    if (!IsUnread(source)) continue;
    lines.push_back(texts.FormatUi("source_failed", texts.GetText("source", source.name),
                                   Sanitize(source.reasons[0].text)));
  }
  return lines;
}

}  // namespace host

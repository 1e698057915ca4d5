#include "host/answer/sources_line.h"

#include "host/answer/finding_text.h"
#include "host/answer/verdict.h"
#include "host/text/escape.h"

namespace host {

std::string FormatSourcesLine(const std::vector<VELASourceReport>& sources, const Texts& texts) {
  if (sources.empty()) return texts.FormatUi("no_voice");
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
    if (source.state != 2) continue;
    lines.push_back(texts.FormatUi("source_failed", texts.GetText("source", source.name),
                                   Sanitize(source.reason)));
  }
  return lines;
}

}  // namespace host

#include "host/answer/sources_line.h"

#include "host/answer/render.h"
#include "host/answer/verdict.h"
#include "host/text/sanitize.h"

namespace host {

std::string SourcesLine(const std::vector<VELASourceReport>& sources, const Texts& texts) {
  if (sources.empty()) return texts.Ui("no_voice");
  const SourceCount count = Count(sources);
  std::string line =
      texts.Ui("sources", std::to_string(count.read), std::to_string(count.Present()));
  if (count.absent > 0) line += ", " + texts.Ui("sources_absent", std::to_string(count.absent));
  return line;
}

std::vector<std::string> FailedSources(const std::vector<VELASourceReport>& sources,
                                       const Texts& texts) {
  std::vector<std::string> lines;
  for (const VELASourceReport& source : sources) {
    if (source.state != 2) continue;
    lines.push_back(
        texts.Ui("source_failed", texts.Word("source", source.name), Sanitize(source.reason)));
  }
  return lines;
}

}  // namespace host

#include "host/answer/sources.h"

#include "host/text/escape.h"

namespace host {
namespace {

constexpr std::int32_t kRead = 1, kFailed = 2;

}  // namespace

SourceCount CountSources(const std::vector<VELASourceReport>& sources) {
  SourceCount count;
  for (const VELASourceReport& source : sources) {
    if (source.state == kRead) {
      ++count.read;
    } else if (source.state == kFailed) {
      ++count.failed;
    } else {
      ++count.absent;
    }
  }
  return count;
}

const char* NameSourceState(const VELASourceReport& source) {
  if (source.state == kRead) return "read";
  return source.state == kFailed ? "failed" : "absent";
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
    if (source.state != kFailed) continue;
    lines.push_back(texts.FormatUi("source_failed", texts.GetText("source", source.name),
                                   Sanitize(source.reason)));
  }
  return lines;
}

}  // namespace host

#include "host/site/exposition.h"

#include <prometheus/text_serializer.h>

#include <algorithm>
#include <charconv>
#include <string_view>

namespace host {
namespace {

using prometheus::MetricFamily, prometheus::MetricType;

constexpr std::string_view kTotal = "_total";

std::string_view Trim(std::string_view text) {
  constexpr std::string_view kBlanks = " \t";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// Takes what stands before the next `mark` off `rest`.
std::string_view TakeUntil(char mark, std::string_view& rest) {
  const std::size_t end = std::min(rest.find(mark), rest.size());
  const std::string_view taken = Trim(rest.substr(0, end));
  rest.remove_prefix(std::min(end + 1, rest.size()));
  return taken;
}

// A share that cannot be read is all of it.
double ReadShare(std::string_view parameters) {
  while (!parameters.empty()) {
    std::string_view parameter = TakeUntil(';', parameters);
    if (!parameter.starts_with("q=")) continue;
    parameter.remove_prefix(2);
    double share = 1;
    std::from_chars(parameter.data(), parameter.data() + parameter.size(), share);
    return share;
  }
  return 1;
}

// The parts of a name that are units, as the convention has them last in it.
std::string_view FindUnit(std::string_view name) {
  for (const std::string_view unit : {"seconds", "bytes", "ratio", "celsius"})
    if (name.ends_with(unit) && name.size() > unit.size() &&
        name[name.size() - unit.size() - 1] == '_')
      return unit;
  return {};
}

// A counter's family has the name without "_total", which its series keep.
std::string ExposeOpenMetrics(const MetricFamily& family) {
  std::string text = prometheus::TextSerializer().Serialize({family});
  std::string name = family.name;
  if (family.type == MetricType::Counter && name.ends_with(kTotal)) {
    name.erase(name.size() - kTotal.size());
    for (const std::string_view line : {"# HELP ", "# TYPE "}) {
      const std::size_t place = text.find(std::string(line) + family.name + " ");
      if (place != std::string::npos) text.erase(place + line.size() + name.size(), kTotal.size());
    }
  }
  const std::string_view unit = FindUnit(name);
  if (unit.empty()) return text;
  return text.insert(0, "# UNIT " + name + " " + std::string(unit) + "\n");
}

}  // namespace

Exposition ChooseExposition(const char* accept) {
  if (accept == nullptr) return Exposition::Text;
  double text = 0, openMetrics = 0;
  for (std::string_view rest = accept; !rest.empty();) {
    std::string_view range = TakeUntil(',', rest);
    const std::string_view type = TakeUntil(';', range);
    const double share = ReadShare(range);
    if (type == "application/openmetrics-text") openMetrics = std::max(openMetrics, share);
    if (type == "text/plain" || type == "text/*") text = std::max(text, share);
  }
  return openMetrics > 0 && openMetrics >= text ? Exposition::OpenMetrics : Exposition::Text;
}

const char* NameContentType(Exposition form) {
  return form == Exposition::OpenMetrics
             ? "application/openmetrics-text; version=1.0.0; charset=utf-8"
             : "text/plain; version=0.0.4; charset=utf-8";
}

std::string Expose(const std::vector<MetricFamily>& families, Exposition form) {
  if (form == Exposition::Text) return prometheus::TextSerializer().Serialize(families);
  std::string text;
  for (const MetricFamily& family : families) text += ExposeOpenMetrics(family);
  return text + "# EOF\n";
}

}  // namespace host

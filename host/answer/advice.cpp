#include "host/answer/advice.h"

#include <cstdio>
#include <sstream>

#include "host/answer/render.h"
#include "host/text/sanitize.h"

namespace host {

std::string AdviceSection(const Finding& finding) { return finding.id + "/" + finding.TextKey(); }

std::string FindAdvice(const Finding& finding, std::string_view key, const Texts& texts) {
  const std::string* text = texts.FindText(AdviceSection(finding), key);
  return text != nullptr ? *text : texts.FormatUi("unknown_finding");
}

std::string RenderSentence(const Finding& finding, const Texts& texts) {
  return Sanitize(RenderDescription(finding.description, texts));
}

std::string FormatNumber(double value) {
  std::ostringstream text;
  text << value;
  return text.str();
}

std::string FormatUptime(const std::string& uptime, const Texts& texts) {
  int hours = 0, minutes = 0, seconds = 0;
  if (std::sscanf(uptime.c_str(), "%d:%d:%d", &hours, &minutes, &seconds) != 3) return {};
  if (hours >= 48) {
    return texts.FormatUi("days", std::to_string(hours / 24), std::to_string(hours % 24));
  }
  if (hours > 0) return texts.FormatUi("hours", std::to_string(hours), std::to_string(minutes));
  return texts.FormatUi("minutes", std::to_string(minutes));
}

}  // namespace host

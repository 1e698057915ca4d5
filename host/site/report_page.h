// One answer as one page that needs nothing else: no script, no file, no network.
#pragma once

#include <string>

#include "host/answer/complete_answer.h"
#include "host/loader/host.h"
#include "host/text/texts.h"

namespace host {

// By this a file is known as a report.
constexpr const char* kReportMark = "<!doctype html>\n<!-- vela-health report -->\n";

struct ReportParts {
  const CompleteAnswer& complete;
  std::string language;  // as BCP 47 has it
  std::string style;     // CSS
};

// Throws what ParseAnswer throws.
std::string ReportPage(const ReportParts& parts, const Texts& texts);

}  // namespace host

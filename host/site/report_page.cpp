#include "host/site/report_page.h"

#include <json/reader.h>

#include <sstream>

#include "common/json_writer.h"
#include "host/answer/coverage.h"
#include "host/answer/sources.h"
#include "host/answer/verdict.h"
#include "host/site/report_findings.h"
#include "host/site/report_parts.h"
#include "host/text/escape.h"
#include "host/text/quantity.h"

namespace host {
namespace {

struct Icon {
  const char *shape, *mark;
};

// The same as the page's.
Icon ChooseIcon(Verdict verdict) {
  switch (verdict) {
    case Verdict::Danger:
      return {"M15 2h18l13 13v18L33 46H15L2 33V15z", "M16 16l16 16M32 16L16 32"};
    case Verdict::Warning:
      return {"M24 4L45 43H3z", "M24 19v11M24 36.5v.1"};
    case Verdict::Notice:
      return {"M24 2l22 22-22 22L2 24z", "M24 23v11M24 14.5v.1"};
    case Verdict::Unknown:
      return {"M4 4h40v40H4z", "M17 19a7 7 0 1 1 11 5.5c-2.6 2-4 3-4 6.5M24 37v.1"};
    case Verdict::Well:
      break;
  }
  return {"M24 2a22 22 0 1 1 0 44a22 22 0 1 1 0-44z", "M14 25l7 7 13-15"};
}

std::string Headline(Verdict look, const std::string& sentence, const Texts& texts) {
  const Icon icon = ChooseIcon(look);
  return "<div class=\"headline\"><svg class=\"icon\" viewBox=\"0 0 48 48\" aria-hidden=\"true\">"
         "<path class=\"shape\" d=\"" +
         std::string(icon.shape) + "\"/><path class=\"mark\" d=\"" + icon.mark +
         "\"/></svg>\n<div>" +
         MakeElement("p", texts.FormatUi(ToString(look)), "class=\"severity\"") +
         MakeElement("h1", sentence, "class=\"sentence\"") + "</div></div>\n";
}

std::string Reasons(const VELASourceReport& source) {
  std::string lines;
  for (std::uint32_t i = 0; i < source.reasonCount; ++i) {
    lines += MakeElement("div", source.reasons[i].text, "dir=\"auto\" lang=\"en\"");
    if (source.reasons[i].remedy[0] != '\0')
      lines += MakeElement("code", source.reasons[i].remedy, "dir=\"ltr\" lang=\"en\"");
  }
  return lines;
}

std::string Sources(const SourceReports& sources, const Texts& texts) {
  std::string rows;
  for (const char* column : {"source", "state", "time", "message"})
    rows += MakeElement("th", texts.FormatUi(std::string("sources_") + column), "scope=\"col\"");
  rows = WrapInTag("tr", rows);
  for (const VELASourceReport& source : sources) {
    const std::string state = source_status::NameState(source.state);
    const bool asked = source.microseconds > 0;
    rows += WrapInTag(
        "tr",
        MakeElement("td", NameSource(source, texts)) + MakeElement("td", texts.FormatUi(state)) +
            MakeElement("td", asked ? FormatMilliseconds(source.microseconds, texts) : "") +
            WrapInTag("td", Reasons(source)),
        "data-state=\"" + state + "\"");
  }
  return Section(texts.FormatUi("sources_title"),
                 MakeElement("p", FormatSourcesLine(sources, texts)) +
                     (sources.empty() ? "" : WrapInTag("table", rows, "class=\"sources\"")));
}

std::string ListTold(const std::vector<ToldLine>& lines, const char* attributes) {
  std::string items;
  for (const auto& [text, command] : lines) {
    const std::string code = command.empty() ? "" : MakeElement("code", command, "dir=\"ltr\"");
    items += WrapInTag("li", MakeElement("div", text, "dir=\"auto\"") + code);
  }
  return items.empty() ? "" : WrapInTag("ul", items, attributes);
}

// Whose answer it is, and of when.
std::string About(const Answer& answer, const CompleteAnswer& complete, const Texts& texts) {
  const std::string time = FormatLocalTime("%F %R %Z", complete.time);
  std::string about = EscapeHtml(FormatCoverage(complete.explanation, texts)) + " · " +
                      EscapeHtml(texts.FormatUi("made_by", time, std::string(VELA_VERSION)));
  const std::string uptime = FormatUptime(answer.uptime, texts);
  if (!uptime.empty()) about = EscapeHtml(texts.FormatUi("up", uptime)) + " · " + about;
  if (!answer.hostname.empty()) about = MakeElement("bdi", answer.hostname) + " · " + about;
  return WrapInTag("p", about, "class=\"about\"");
}

std::string Network(const std::vector<Interface>& interfaces, const Texts& texts) {
  std::string rows;
  for (const Interface& interface : interfaces) {
    rows += WrapInTag("tr", MakeElement("td", interface.id, "dir=\"auto\"") +
                                MakeElement("td", interface.type) +
                                MakeElement("td", interface.ip, "dir=\"ltr\""));
  }
  return Section(texts.FormatUi("network"), rows.empty() ? "" : WrapInTag("table", rows));
}

// Its lines one by one: a line's end is no harm.
std::string Document(const std::string& document, const Texts& texts) {
  Json::Value root;
  std::istringstream(document) >> root;
  std::istringstream lines(common::WritePretty(root));
  std::string shown;
  for (std::string line; std::getline(lines, line);) shown += EscapeHtml(line) + "\n";
  return WrapInTag("details", MakeElement("summary", texts.FormatUi("document")) +
                                  WrapInTag("pre", shown, "dir=\"ltr\" lang=\"en\""));
}

std::string Head(const ReportParts& parts, const std::string& title) {
  return std::string(kReportMark) + "<html lang=\"" + parts.language +
         "\">\n<head>\n<meta charset=\"utf-8\">\n"
         "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
         "style-src 'unsafe-inline'; img-src data:\">\n"
         "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
         "<meta name=\"color-scheme\" content=\"light dark\">\n"
         "<meta name=\"referrer\" content=\"no-referrer\">\n"
         "<link rel=\"icon\" href=\"data:,\">\n" +
         MakeElement("title", title) + "<style>\n" + parts.style + "</style>\n</head>\n";
}

}  // namespace

std::string ReportPage(const ReportParts& parts, const Texts& texts) {
  const Reply& reply = parts.complete.explanation.reply;
  const Answer answer = ParseAnswer(reply.document);
  const std::vector<CheckerResult> ranked = MostUrgentFirst(parts.complete.explanation.checkers);
  const Verdict look = JudgeAnswer(answer.rule, reply.sources);

  const CompleteAnswer& complete = parts.complete;
  std::string body = Headline(look, FormatAnswer(answer.rule, reply.sources, texts), texts) +
                     About(answer, complete, texts);
  if (look != Verdict::Well && look != Verdict::Unknown)
    body += LeadOn(answer.rule, ranked, complete.evidence, texts);
  body += ListTold(FormatSourceLines(reply.sources, texts), "class=\"unread\"") +
          Section(texts.FormatUi("machine"), PartTables(complete, texts)) +
          FurtherFindings(ranked, complete.evidence, texts) + Checks(complete, ranked, texts) +
          Sources(reply.sources, texts) +
          ListTold(FormatNotes(complete.notes, texts), "class=\"notes\"") +
          Network(answer.interfaces, texts) + Document(reply.document, texts);
  const std::string host = answer.hostname.empty() ? "?" : answer.hostname;
  return Head(parts, texts.FormatUi("report_title", host)) + "<body>\n" +
         WrapInTag("main", body,
                   std::string("class=\"widget\" data-verdict=\"") + ToString(look) + "\"") +
         "</body>\n</html>\n";
}

}  // namespace host

#include "host/cli/commands.h"

#include <iostream>

#include "common/json_writer.h"
#include "host/answer/catalogue.h"
#include "host/answer/finding_text.h"
#include "host/answer/verdict.h"
#include "host/cli/terminal.h"
#include "host/text/quantity.h"

namespace host {
namespace {

constexpr const char* kAdvice[] = {"meaning", "ignored", "do", "where"};

// A finding that names nothing in particular: only what the catalogue says of it.
Finding MakeFinding(const CatalogueEntry& entry) {
  return {entry.type, entry.priority, entry.id, {"{0}", {std::string(":") + entry.textKey}, false}};
}

void PrintText(const Finding& finding, const Texts& texts, const Style& style) {
  const Verdict verdict = JudgeFinding(finding);
  std::cout << style.Severity(verdict, texts.FormatUi(ToString(verdict))) << "  "
            << style.Bold(FindAdvice(finding, "title", texts)) << "  "
            << style.Faint(texts.FormatUi("priority", FormatNumber(finding.priority, texts)) +
                           ", " + AdviceSection(finding))
            << '\n';
  for (const char* key : kAdvice) {
    const std::string label = texts.AddLabel(texts.FormatUi(key));
    std::cout << style.WrapLines(2, "", label + FindAdvice(finding, key, texts)) << '\n';
  }
  std::cout << '\n';
}

void PrintMarkdown(const Finding& finding, const Texts& texts) {
  std::cout << "\n## " << FindAdvice(finding, "title", texts) << "\n\n"
            << texts.FormatUi(ToString(JudgeFinding(finding))) << ", priority "
            << FormatNumber(finding.priority, texts) << ", `" << AdviceSection(finding) << "`\n\n";
  for (const char* key : kAdvice) {
    std::cout << "- **" << texts.FormatUi(key) << ":** " << FindAdvice(finding, key, texts) << '\n';
  }
}

Json::Value ToJson(const CatalogueEntry& row, const Texts& texts) {
  const Finding finding = MakeFinding(row);
  Json::Value entry;
  entry["id"] = finding.id;
  entry["text"] = finding.TextKey();
  entry["check"] = row.check;
  entry["type"] = static_cast<int>(finding.type);
  entry["priority"] = finding.priority;
  entry["title"] = FindAdvice(finding, "title", texts);
  for (const char* key : kAdvice) entry[key] = FindAdvice(finding, key, texts);
  return entry;
}

}  // namespace

ExitStatus RunFindings(Session& session, bool markdown) {
  const Texts& texts = session.GetTexts();
  const Style style = Style::ForStandardOutput();
  Json::Value all(Json::arrayValue);
  if (markdown) {
    std::cout << "# The findings\n\nEvery finding that can occur, the most urgent first. Generated "
                 "by `vela-health findings\n--markdown --lang en`; a test holds this page to it.\n";
  }
  for (const CatalogueEntry& entry : Catalogue()) {
    const Finding finding = MakeFinding(entry);
    if (session.Options().json) {
      all.append(ToJson(entry, texts));
    } else if (markdown) {
      PrintMarkdown(finding, texts);
    } else {
      PrintText(finding, texts, style);
    }
  }
  if (session.Options().json) std::cout << common::WriteCompact(all) << '\n';
  return kHealthy;
}

}  // namespace host

#include "host/cli/commands.h"

#include <cctype>
#include <iostream>
#include <vector>

#include "common/json_writer.h"
#include "host/answer/catalogue.h"
#include "host/answer/finding_text.h"
#include "host/answer/remedies.h"
#include "host/answer/verdict.h"
#include "host/cli/terminal.h"
#include "host/text/escape.h"
#include "host/text/quantity.h"

namespace host {
namespace {

constexpr std::string_view kAdvice[] = {"meaning", "ignored", "do", "where"};

// A finding that names nothing in particular: only what the catalogue says of it.
Finding MakeFinding(const CatalogueEntry& entry) {
  return {entry.type, entry.priority, entry.id, {"{0}", {std::string(":") + entry.textKey}, false}};
}

std::string Lowered(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

// Whether its title, its name or that of its check holds the word, in capitals or not.
bool HasWord(const CatalogueEntry& entry, const std::string& word, const Texts& texts) {
  const Finding finding = MakeFinding(entry);
  const std::string names = FindAdvice(finding, "title", texts) + "\n" + AdviceSection(finding) +
                            "\n" + entry.check + "\n" + texts.GetText("checker", entry.check);
  return Lowered(names).find(Lowered(word)) != std::string::npos;
}

std::vector<CatalogueEntry> ChooseEntries(const std::string& word, const Texts& texts) {
  std::vector<CatalogueEntry> chosen;
  for (const CatalogueEntry& entry : Catalogue())
    if (HasWord(entry, word, texts)) chosen.push_back(entry);
  if (!chosen.empty()) return chosen;
  throw Failure(kUsage, "No finding has \"" + Sanitize(word) +
                            "\" in its title or its name, or in its check's. vela-health findings "
                            "shows all of them.");
}

// Its urgency, and the name under which programs know it.
std::string NamePlace(const Finding& finding, const Texts& texts) {
  return texts.FormatUi("priority", FormatNumber(finding.priority, texts)) +
         texts.FormatUi("clause_comma") + AdviceSection(finding);
}

void PrintText(const Finding& finding, const Texts& texts, const Style& style) {
  const Verdict verdict = JudgeFinding(finding);
  std::cout << style.Headline(verdict, texts.FormatUi(ToString(verdict)),
                              EndLabel(texts.Resolve("common:colon")),
                              FindAdvice(finding, "title", texts))
            << '\n';
  for (const std::string_view key : kAdvice) {
    const std::string label = texts.AddLabel(texts.FormatUi(key));
    std::cout << style.WrapLines(2, "", label + FindAdvice(finding, key, texts)) << '\n';
    if (key != "do") continue;
    for (const std::string_view command : ListGenericCommands(finding))
      std::cout << style.Command(std::string(command));
  }
  std::cout << style.Faint(style.WrapLines(2, "", NamePlace(finding, texts))) << "\n\n";
}

void PrintMarkdown(const Finding& finding, const Texts& texts) {
  std::cout << "\n## " << FindAdvice(finding, "title", texts) << "\n\n"
            << texts.FormatUi(ToString(JudgeFinding(finding))) << ", priority "
            << FormatNumber(finding.priority, texts) << ", `" << AdviceSection(finding) << "`\n\n";
  for (const std::string_view key : kAdvice) {
    std::cout << "- **" << texts.FormatUi(key) << ":** " << FindAdvice(finding, key, texts) << '\n';
    const auto commands = ListGenericCommands(finding);
    if (key != "do" || commands.empty()) continue;
    std::cout << "  ```\n";
    for (const std::string_view command : commands) std::cout << "  " << command << '\n';
    std::cout << "  ```\n";
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
  for (const std::string_view key : kAdvice)
    entry[std::string(key)] = FindAdvice(finding, key, texts);
  entry["how"] = Json::arrayValue;
  for (const std::string_view command : ListGenericCommands(finding))
    entry["how"].append(std::string(command));
  return entry;
}

}  // namespace

ExitStatus RunFindings(Session& session, const std::string& word, bool markdown) {
  const Texts& texts = session.GetTexts();
  const Style style = Style::ForStandardOutput();
  Json::Value all(Json::arrayValue);
  if (markdown) {
    std::cout << "# The findings\n\nEvery finding that can occur, the most urgent first. Generated "
                 "by `vela-health findings\n--markdown --lang en`; a test holds this page to it. "
                 "Words in capitals in a command\nstand for names: `/dev/NEW-DISK`, "
                 "`/MOUNT-POINT`. An answer about a machine has its own\nnames in them where it "
                 "knows them.\n";
  }
  for (const CatalogueEntry& entry : ChooseEntries(word, texts)) {
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

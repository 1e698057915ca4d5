#include "host/cli/commands.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>

#include "common/json_writer.h"
#include "host/answer/finding_text.h"
#include "host/answer/verdict.h"
#include "host/cli/new_files.h"
#include "host/site/report_page.h"
#include "host/text/escape.h"

namespace host {
namespace {

namespace fs = std::filesystem;

std::string ReadFile(const fs::path& file) {
  std::ostringstream text;
  text << std::ifstream(file, std::ios::binary).rdbuf();
  return text.str();
}

std::string MakePage(Session& session, const CompleteAnswer& complete) {
  const fs::path& data = session.GetPlaces().Data();
  const std::string style = ReadFile(data / "www/style.css") + ReadFile(data / "www/report.css");
  return ReportPage({complete, session.LanguageCode(), style}, session.GetTexts());
}

}  // namespace

ExitStatus RunReport(Session& session, const std::string& file) {
  const bool toOutput = file == "-";
  if (!toOutput) ExpectReplaceable(file, kReportMark, "report");
  const SimulatedMachine machine = session.OpenMachine();
  const CompleteAnswer complete = AskForEverything(session.GetHost(), machine);
  const std::string page = MakePage(session, complete);
  if (toOutput) {
    std::cout << page;
  } else {
    ReplaceFile(file, page);
    Json::Value written;
    written["file"] = file;
    std::cout << (session.Options().json
                      ? common::WriteCompact(written)
                      : session.GetTexts().FormatUi("report_written", Sanitize(file)))
              << '\n';
  }
  const Reply& reply = complete.explanation.reply;
  return ChooseExitStatus(ParseAnswer(reply.document).rule, reply.sources);
}

}  // namespace host

#include "host/cli/commands.h"

#include <ctime>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>

#include "common/json_writer.h"
#include "host/answer/finding_text.h"
#include "host/answer/verdict.h"
#include "host/cli/new_files.h"
#include "host/site/report_page.h"

namespace host {
namespace {

namespace fs = std::filesystem;

std::string Contents(const fs::path& file) {
  std::ostringstream text;
  text << std::ifstream(file, std::ios::binary).rdbuf();
  return text.str();
}

std::string Now() {
  const std::time_t now = std::time(nullptr);
  std::tm local = {};
  localtime_r(&now, &local);
  char text[64];
  return {text, std::strftime(text, sizeof text, "%F %R %Z", &local)};
}

std::string Page(Session& session, const Explanation& explanation) {
  const fs::path& data = session.GetPlaces().Data();
  const std::string style = Contents(data / "www/style.css") + Contents(data / "www/report.css");
  return ReportPage({explanation, session.LanguageCode(), style, Now()}, session.GetTexts());
}

}  // namespace

ExitStatus RunReport(Session& session, const std::string& file) {
  const bool toOutput = file == "-";
  if (!toOutput) ExpectReplaceable(file, kReportMark);
  const SimulatedMachine machine = session.Machine();
  const Explanation explanation = AskExplanation(session.GetHost(), machine);
  const std::string page = Page(session, explanation);
  if (toOutput) {
    std::cout << page << std::flush;
  } else {
    ReplaceFile(file, page);
    Json::Value written;
    written["file"] = file;
    std::cout << (session.Options().json ? common::WriteCompact(written)
                                         : session.GetTexts().FormatUi("report_written", file))
              << std::endl;
  }
  const Reply& reply = explanation.reply;
  return ChooseExitStatus(ParseAnswer(reply.document).rule, reply.sources);
}

}  // namespace host

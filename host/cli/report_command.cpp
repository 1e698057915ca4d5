#include "host/cli/report_command.h"

#include <fcntl.h>
#include <unistd.h>

#include <ctime>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>

#include "common/json_writer.h"
#include "host/answer/finding_text.h"
#include "host/answer/verdict.h"
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

[[noreturn]] void CannotWrite(const std::string& file, const std::string& why, const char* advice) {
  throw Failure(kCannotWrite, "Cannot write " + file + ": " + why + ". " + advice);
}

// Whether a report may stand there: nothing does yet, or one of ours.
void ExpectReplaceable(const std::string& file) {
  std::error_code error;
  if (!fs::exists(fs::symlink_status(file, error))) return;
  std::string start(std::string_view(kReportMark).size(), '\0');
  std::ifstream in(file, std::ios::binary);
  if (fs::is_regular_file(file, error) && in.read(start.data(), std::ssize(start)) &&
      start == kReportMark)
    return;
  CannotWrite(file, "it is there already, and is no report", "Name a new file.");
}

// Creates the file; nothing that is there already, a link neither, is written to.
std::error_code WriteNew(const std::string& file, std::string_view text) {
  const int out = open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
  if (out < 0) return {errno, std::generic_category()};
  std::error_code error;
  while (!text.empty() && !error) {
    const ssize_t written = write(out, text.data(), text.size());
    if (written < 0) error = {errno, std::generic_category()};
    if (written > 0) text.remove_prefix(static_cast<std::size_t>(written));
  }
  if (close(out) != 0 && !error) error = {errno, std::generic_category()};
  return error;
}

// Beside it and then renamed: readers see the old report or the new one, whole.
void Replace(const std::string& file, const std::string& page) {
  const std::string beside = file + ".new-" + std::to_string(getpid());
  std::error_code error = WriteNew(beside, page);
  const bool ours = error != std::errc::file_exists;
  if (!error) fs::rename(beside, file, error);
  if (!error) return;
  std::error_code gone;
  if (ours) fs::remove(beside, gone);
  CannotWrite(file, error.message(), "Name a file in a folder that this user may write to.");
}

std::string Page(Session& session, const Explanation& explanation) {
  const fs::path& data = session.GetPlaces().Data();
  const std::string style = Contents(data / "www/style.css") + Contents(data / "www/report.css");
  return ReportPage({explanation, session.LanguageCode(), style, Now()}, session.GetTexts());
}

}  // namespace

ExitStatus RunReport(Session& session, const std::string& file) {
  const bool toOutput = file == "-";
  if (!toOutput) ExpectReplaceable(file);
  const SimulatedMachine machine = session.Machine();
  const Explanation explanation = AskExplanation(session.GetHost(), machine);
  const std::string page = Page(session, explanation);
  if (toOutput) {
    std::cout << page << std::flush;
  } else {
    Replace(file, page);
    Json::Value written;
    written["file"] = file;
    std::cout << (session.Options().json ? common::WriteCompact(written)
                                         : session.GetTexts().FormatUi("report_written", file))
              << std::endl;
  }
  const Reply& reply = explanation.reply;
  return ChooseExitStatus(JudgeFinding(ParseAnswer(reply.document).rule),
                          CountSources(reply.sources));
}

}  // namespace host

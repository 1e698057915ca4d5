#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <functional>
#include <iostream>
#include <map>

#include "host/cli/check_line.h"
#include "host/cli/command_options.h"
#include "host/cli/commands.h"
#include "host/cli/common_options.h"
#include "host/cli/serve_command.h"
#include "host/cli/standard_output.h"
#include "host/text/escape.h"
#include "host/text/failure.h"

namespace host {
namespace {

constexpr const char* kDescription =
    "Is this machine healthy, and if not, which one thing matters most?";
constexpr const char* kFooter =
    "vela-health help COMMAND shows what a command takes.\n"
    "Exit status: 0 healthy, 1 a warning or notice, 2 danger, 3 healthy as far as could\n"
    "be read, 64 and up when the question could not be asked, or the answer not written.";

class CommandLine {
 public:
  explicit CommandLine(bool check) : app_(kDescription, "vela-health"), check_(check) {
    app_.footer(kFooter);
    app_.set_version_flag("--version", "vela-health " VELA_VERSION);
    app_.fallthrough();
    app_.require_subcommand(0, 1);
    app_.failure_message([this](const CLI::App*, const CLI::Error& error) {
      return "vela-health: " + FormatUsageError(app_, UsedOptions(), Sanitize(error.what()));
    });
    AddCommonOptions(app_, common_);
    Add("status", "The most urgent finding and what to do about it (the default)", kCommonOptions,
        [](Session& session) { return RunStatus(session); });
    Add("check",
        "For monitoring systems: one line, and exit status 0 to 3 (3: whatever went wrong)",
        {"--platform", "--module", "--scenario", "--lang"},
        [](Session& session) { return RunCheck(session); });
    Add("explain", "What each check saw and found, and why the most urgent one won", kCommonOptions,
        [](Session& session) { return RunExplain(session); });
    AddDiff();
    AddFindings();
    AddCapture();
    AddReport();
    AddMetrics();
    AddNotify();
    AddServe();
  }

  int Run(int count, const char* const* arguments) {
    try {
      std::vector<std::string> words(arguments + std::min(count, 1), arguments + count);
      AskForHelp(words);
      std::reverse(words.begin(), words.end());  // as CLI11 takes them
      app_.parse(std::move(words));
      ExpectUsedOptions();
    } catch (const CLI::ParseError& error) {
      return TellUsage(error);
    }
    // What the environment says is of no use here.
    if (!Uses("--platform") || serve_.demo) common_.platform.clear();
    Session session(common_);
    return command_(session);
  }

 private:
  using Command = std::function<ExitStatus(Session&)>;

  void AskForHelp(std::vector<std::string>& words) const {  // "help status": "status --help"
    if (words.empty() || words.front() != "help") return;
    words.erase(words.begin());
    const auto known = app_.get_subcommands([&words](const CLI::App* each) {
      return words.empty() || each->get_name() == words.front();
    });
    if (!known.empty()) words.push_back("--help");
  }

  // Prints help or what is wrong; neither says that a machine is well.
  int TellUsage(const CLI::ParseError& error) const {
    const bool helped = error.get_exit_code() == 0;
    if (check_ && !helped)
      return TellCheckFailure(FormatUsageError(app_, UsedOptions(), Sanitize(error.what())));
    app_.exit(error);
    if (helped) return check_ ? kIncomplete : kHealthy;
    return kUsage;
  }

  const Names& UsedOptions() const {  // of the common options
    const auto chosen = app_.get_subcommands();
    return chosen.empty() ? kCommonOptions : used_.at(chosen.front());
  }

  bool Uses(const std::string& option) const {
    const Names& used = UsedOptions();
    return std::find(used.begin(), used.end(), option) != used.end();
  }

  // An option that changes nothing would let people believe that it did.
  void ExpectUsedOptions() const {
    for (const std::string& name : kCommonOptions) {
      if (app_.get_option(name)->count() == 0 || Uses(name)) continue;
      throw CLI::ValidationError(name,
                                 app_.get_subcommands().front()->get_name() + " has no use for it");
    }
    const auto chosen = app_.get_subcommands();
    if (common_.jsonForm == kCompleteForm && !chosen.empty() &&
        chosen.front()->get_name() != "status")
      throw CLI::ValidationError("--json=full",
                                 chosen.front()->get_name() + " has no use for it; status has");
    if (common_.json && page_ == "-")
      throw CLI::ValidationError("--json", "report prints the page itself to -");
  }

  CLI::App* Add(const char* name, const char* description, const Names& uses,
                const Command& command) {
    CLI::App* sub = app_.add_subcommand(name, description);
    sub->callback([this, command] { command_ = command; });
    sub->footer("Common options:\n" + DescribeOptions(app_, uses));
    used_[sub] = uses;
    return sub;
  }

  void AddDiff() {
    CLI::App* diff = Add("diff", "What differs between two scenarios or saved answers",
                         {"--module", "--lang", "--json"}, [this](Session& session) {
                           return RunDiff(session, sides_[0], sides_[1]);
                         });
    diff->add_option("A", sides_[0], "A scenario, or a file that --json or --json=full wrote")
        ->required();
    diff->add_option("B", sides_[1], "Another one")->required();
  }

  void AddFindings() {
    CLI::App* findings =
        Add("findings", "Every finding that can occur: meaning, what to do, where to look",
            {"--lang", "--json"},
            [this](Session& session) { return RunFindings(session, word_, markdown_); });
    findings->add_option("WORD", word_, "Only those with this word in their title or name");
    findings->add_flag("--markdown", markdown_, "As a page of documentation")
        ->excludes(app_.get_option("--json"));
  }

  void AddCapture() {
    CLI::App* capture =
        Add("capture", "This machine as a scenario folder, for a report or a test", kCommonOptions,
            [this](Session& session) { return RunCapture(session, to_, why_, realNames_); });
    capture->add_option("folder", to_, "The folder to make")->required();
    capture->add_option("--why", why_, "A line for people: what is special about the machine")
        ->type_name("TEXT");
    capture->add_flag(
        "--real-names", realNames_,
        "Keep serial numbers and the names of machines, which have aliases otherwise");
  }

  void AddReport() {
    Add("report", "The answer as one page to keep, print or send", kCommonOptions,
        [this](Session& session) { return RunReport(session, page_); })
        ->add_option("file", page_, "The page to write, for example health.html; - for the output")
        ->required();
  }

  void AddMetrics() {
    Add("metrics", "The metrics as text, for the textfile collector of node_exporter",
        {"--platform", "--module", "--scenario", "--lang"},
        [this](Session& session) { return RunMetrics(session, metrics_); })
        ->add_option("file", metrics_,
                     "The file to write, for example vela-health.prom; by default the output");
  }

  void AddNotify() {
    AddNotifyOptions(*Add("notify", "Tell the hooks what has changed since the last time",
                          {"--platform", "--module", "--scenario", "--lang"},
                          [this](Session& session) { return RunNotify(session, notify_); }),
                     notify_);
  }

  void AddServe() {
    CLI::App* serve = Add("serve", "Serve the answer over HTTP until stopped",
                          {"--platform", "--module", "--scenario"},
                          [this](Session& session) { return RunServe(session, serve_); });
    AddServeOptions(*serve, serve_);
    serve
        ->add_flag("--demo", serve_.demo,
                   "Simulated machines only: /gallery shows every finding, /?scenario=NAME any of "
                   "the shipped scenarios")
        ->excludes(app_.get_option("--scenario"))
        ->excludes(app_.get_option("--platform"));
  }

  CLI::App app_;
  const bool check_;  // what is wrong is told on a plug-in's line
  CommonOptions common_;
  ServeOptions serve_;
  NotifyOptions notify_;
  std::array<std::string, 2> sides_;
  bool markdown_ = false, realNames_ = false;
  std::string to_, why_, page_, word_, metrics_;
  std::map<const CLI::App*, Names> used_;  // of the common options, by command
  Command command_ = [](Session& session) { return RunStatus(session); };
};

}  // namespace

int RunCommandLine(int count, const char* const* arguments) {
  const bool check = AsksForCheck(count, arguments);
  const auto complain = [check](const std::string& what, ExitStatus status) {
    if (check) return TellCheckFailure(what);
    std::cerr << "vela-health: " << what << '\n';
    return status;
  };
  try {
    const HeldOutput output;
    const int status = CommandLine(check).Run(count, arguments);
    output.Write();
    return status;
  } catch (const Failure& failure) {
    return complain(failure.what(), failure.Status());
  } catch (const std::bad_alloc&) {
    return complain("out of memory", kInternal);
  } catch (const std::exception& error) {
    return complain("Cannot go on: " + Sanitize(error.what()), kInternal);
  }
}

}  // namespace host

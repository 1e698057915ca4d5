#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <functional>
#include <iostream>

#include "host/cli/commands.h"
#include "host/cli/serve_command.h"
#include "host/text/escape.h"
#include "host/text/failure.h"

namespace host {
namespace {

constexpr const char* kDescription =
    "Is this machine healthy, and if not, which one thing matters most?";
constexpr const char* kFooter =
    "Exit status: 0 healthy, 1 a warning or notice, 2 danger, 3 healthy as far as could\n"
    "be read, 64 and up when the question could not be asked.";

void AddCommonOptions(CLI::App& app, CommonOptions& options) {
  app.add_option("--platform", options.platform,
                 "linux (this machine), simulator, or a platform library's path")
      ->type_name("NAME|FILE")
      ->envname("VELA_HEALTH_PLATFORM");
  app.add_option("--module", options.module, "The health module's path")
      ->type_name("FILE")
      ->envname("VELA_HEALTH_MODULE");
  // An empty name, as of a script's unset variable, must not turn into this machine.
  app.add_option("--scenario", options.scenario,
                 "Ask a simulated machine: the name of a shipped scenario, or a folder")
      ->type_name("NAME|DIR")
      ->check([](const std::string& name) { return std::string(name.empty() ? "no name" : ""); });
  app.add_option("--lang", options.language, "en, de, fr, es, ja or zh-CN")->type_name("LANGUAGE");
  app.add_flag("--json", options.json, "Print the answer as JSON and nothing else");
}

class CommandLine {
 public:
  CommandLine() : app_(kDescription, "vela-health") {
    app_.footer(kFooter);
    app_.set_version_flag("--version", "vela-health " VELA_VERSION);
    app_.fallthrough();
    app_.require_subcommand(0, 1);
    app_.failure_message([this](const CLI::App*, const CLI::Error& error) {
      return UsageError(Sanitize(error.what()));
    });
    AddCommonOptions(app_, common_);
    Add("status", "The most urgent finding and what to do about it (the default)",
        [](Session& session) { return RunStatus(session); });
    Add("explain", "What each check saw and found, and why the most urgent one won",
        [](Session& session) { return RunExplain(session); });
    AddDiff();
    AddFindings();
    AddCapture();
    AddReport();
    AddServe();
  }

  int Run(int count, const char* const* arguments) {
    try {
      app_.parse(count, arguments);
    } catch (const CLI::ParseError& error) {
      const bool helped = app_.exit(error) == 0;  // prints help or what is wrong
      return helped ? kHealthy : kUsage;
    }
    Session session(common_);
    return command_(session);
  }

 private:
  using Command = std::function<ExitStatus(Session&)>;

  // What is wrong, and what would be right for the command that was meant.
  std::string UsageError(const std::string& what) const {
    const auto chosen = app_.get_subcommands();
    const CLI::App& meant = chosen.empty() ? app_ : *chosen.front();
    const std::string help =
        meant.help(chosen.empty() ? "" : "vela-health", CLI::AppFormatMode::Normal);
    const std::size_t usage = std::min(help.find("Usage:"), help.size());
    std::string text =
        "vela-health: " + what + "\n" + help.substr(usage, help.find('\n', usage) - usage) + "\n";
    if (chosen.empty()) {
      text += "Subcommands:";
      for (const CLI::App* each : app_.get_subcommands(nullptr)) text += " " + each->get_name();
      text += "\n";
    }
    return text + "Run with --help for more information.\n";
  }

  CLI::App* Add(const char* name, const char* description, const Command& command) {
    CLI::App* sub = app_.add_subcommand(name, description);
    sub->callback([this, command] { command_ = command; });
    return sub;
  }

  void AddDiff() {
    CLI::App* diff =
        Add("diff", "The verdicts of two scenarios or saved answers side by side",
            [this](Session& session) { return RunDiff(session, sides_[0], sides_[1]); });
    diff->add_option("A", sides_[0], "A scenario, or a file that --json wrote")->required();
    diff->add_option("B", sides_[1], "Another one")->required();
  }

  void AddFindings() {
    CLI::App* findings =
        Add("findings", "Every finding that can occur: meaning, what to do, where to look",
            [this](Session& session) { return RunFindings(session, markdown_); });
    findings->add_flag("--markdown", markdown_, "As a page of documentation");
  }

  void AddCapture() {
    CLI::App* capture = Add("capture", "This machine as a scenario folder, for a report or a test",
                            [this](Session& session) { return RunCapture(session, to_, why_); });
    capture->add_option("folder", to_, "The folder to make")->required();
    capture->add_option("--why", why_, "A line for people: what is special about the machine")
        ->type_name("TEXT");
  }

  void AddReport() {
    Add("report", "The answer as one page to keep, print or send",
        [this](Session& session) { return RunReport(session, to_); })
        ->add_option("file", to_, "The page to write, for example health.html; - for the output")
        ->required();
  }

  void AddServe() {
    CLI::App* serve = Add("serve", "Serve the answer over HTTP until stopped",
                          [this](Session& session) { return RunServe(session, serve_); });
    serve
        ->add_option("--listen", serve_.listen,
                     "The address to listen on, by default 127.0.0.1:8480")
        ->type_name("ADDR:PORT");
    serve->add_option("--port", serve_.port, "The port alone; 0 takes any free one")
        ->check(CLI::Range(0, 65535).description(""))
        ->type_name("PORT");
    serve->add_flag("--allow-remote", serve_.allowRemote,
                    "Listen on addresses that other machines reach");
    serve
        ->add_option("--host-name", serve_.hostNames,
                     "A name under which browsers or a proxy reach it, beside this machine's own")
        ->type_name("NAME");
    serve->add_flag("--demo", serve_.demo,
                    "Simulated machines only: /gallery shows every finding, /?scenario=NAME any of "
                    "the shipped scenarios");
  }

  CLI::App app_;
  CommonOptions common_;
  ServeOptions serve_;
  std::array<std::string, 2> sides_;
  bool markdown_ = false;
  std::string to_, why_;
  Command command_ = [](Session& session) { return RunStatus(session); };
};

}  // namespace

int RunCommandLine(int count, const char* const* arguments) {
  try {
    return CommandLine().Run(count, arguments);
  } catch (const Failure& failure) {
    std::cerr << "vela-health: " << failure.what() << '\n';
    return failure.Status();
  } catch (const std::bad_alloc&) {
    std::cerr << "vela-health: out of memory\n";
    return kInternal;
  }
}

}  // namespace host

#include "host/cli/common_options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdlib>
#include <sstream>

#include "host/text/nearest.h"

namespace host {
namespace {

std::string ReadEnvironment(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

std::string CheckJsonForm(const std::string& form) {
  if (form == "document" || form == kCompleteForm) return "";
  return "\"" + form + "\" is no form of it. Leave it out, or use --json=full";
}

// Of the names that a word of the command line may be: "Did you mean --scenario?", or nothing.
std::string SuggestWord(const CLI::App& app, const Names& used, const std::string& what) {
  constexpr std::string_view kUnexpected = "not expected: ";
  const std::size_t found = what.find(kUnexpected);
  if (found == what.npos) return "";
  Names known = used;
  const auto chosen = app.get_subcommands();
  const CLI::App& meant = chosen.empty() ? app : *chosen.front();
  for (const CLI::Option* option : meant.get_options()) known.push_back(option->get_name());
  if (chosen.empty())
    for (const CLI::App* each : app.get_subcommands(nullptr)) known.push_back(each->get_name());
  std::istringstream unexpected(what.substr(found + kUnexpected.size()));
  for (std::string wanted; unexpected >> wanted;) {
    const std::string nearest = FindNearest(known, wanted.substr(0, wanted.find('=')));
    if (!nearest.empty()) return "Did you mean " + nearest + "?\n";
  }
  return "";
}

}  // namespace

const Names kCommonOptions = {"--platform", "--module", "--scenario", "--lang", "--json"};

// The environment's words are no options of the command line: a command may have no use for them.
void AddCommonOptions(CLI::App& app, CommonOptions& options) {
  options.platform = ReadEnvironment("VELA_HEALTH_PLATFORM");
  options.module = ReadEnvironment("VELA_HEALTH_MODULE");
  app.add_option("--platform", options.platform,
                 "linux (this machine), simulator, or a platform library's path; by default "
                 "what VELA_HEALTH_PLATFORM names")
      ->type_name("NAME|FILE");
  app.add_option("--module", options.module,
                 "The health module's path; by default what VELA_HEALTH_MODULE names")
      ->type_name("FILE");
  // An empty name, as of a script's unset variable, must not turn into this machine.
  app.add_option("--scenario", options.scenario,
                 "Ask a simulated machine: the name of a shipped scenario, or a folder")
      ->type_name("NAME|DIR")
      ->check([](const std::string& name) { return std::string(name.empty() ? "no name" : ""); });
  app.add_option("--lang", options.language, "en, de, fr, es, ja or zh-CN")->type_name("LANGUAGE");
  app.add_flag("--json{document}", options.jsonForm,
               "Print the answer as JSON and nothing else; status --json=full the complete one")
      ->check([](const std::string& form) { return CheckJsonForm(form); })
      ->each([&options](const std::string&) { options.json = true; });
}

std::string FormatUsageError(const CLI::App& app, const Names& used, const std::string& what) {
  const auto chosen = app.get_subcommands();
  const CLI::App& meant = chosen.empty() ? app : *chosen.front();
  const std::string help =
      meant.help(chosen.empty() ? "" : "vela-health", CLI::AppFormatMode::Normal);
  const std::size_t usage = std::min(help.find("Usage:"), help.size());
  std::string text = what + "\n" + SuggestWord(app, used, what) +
                     help.substr(usage, help.find('\n', usage) - usage) + "\n";
  if (chosen.empty()) {
    Names all;
    for (const CLI::App* each : app.get_subcommands(nullptr)) all.push_back(each->get_name());
    text += "Subcommands:" + JoinNames(all) + "\n";
  } else {
    Names own;
    for (const CLI::Option* each : meant.get_options())
      if (!each->get_positional()) own.push_back(each->get_name());
    text += "Options:" + JoinNames(own) + JoinNames(used) + "\n";
  }
  return text + "Run with --help for more information.\n";
}

std::string DescribeOptions(const CLI::App& app, const Names& names) {
  const CLI::Formatter formatter;
  std::string text;
  for (const std::string& name : names) text += formatter.make_option(app.get_option(name), false);
  return text;
}

std::string JoinNames(const Names& names) {
  std::string text;
  for (const std::string& name : names) text += " " + name;
  return text;
}

}  // namespace host

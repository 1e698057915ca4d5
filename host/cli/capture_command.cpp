#include "host/cli/commands.h"

#include <iostream>

#include "common/json_reader.h"
#include "common/json_writer.h"
#include "host/answer/coverage.h"
#include "host/answer/verdict.h"
#include "host/cli/aliases.h"
#include "host/cli/new_files.h"
#include "host/cli/terminal.h"
#include "host/text/escape.h"
#include "host/text/quantity.h"

namespace host {
namespace {

constexpr const char* kState = "state.json";
constexpr const char* kAnswer = "expected.json";

struct Captured {
  std::string state, expected;
};

// What was recorded, and the whole answer. What the module logged depends on the platform: nothing
// is expected of it.
Captured MakeFiles(const std::string& recorded, const std::string& document, bool realNames) {
  Json::Value state, expected;
  common::ParseJson(document, expected);
  expected["log"] = Json::Value();
  if (realNames) return {recorded, common::WritePretty(expected)};
  if (!common::ParseJson(recorded, state))
    throw Failure(
        kInternal,
        "Cannot replace names in what was recorded. With --real-names it is kept as it is.");
  const Aliases aliases = ChooseAliases(state);
  ReplaceNames(state, aliases);
  ReplaceNames(expected, aliases);
  return {common::WritePretty(state), common::WritePretty(expected)};
}

std::string DescribeCapture(const Reply& reply, const Texts& texts) {
  const Finding finding = ParseAnswer(reply.document).rule;
  const Verdict verdict = JudgeAnswer(finding, reply.sources);
  return "Captured by vela-health " VELA_VERSION " on " + FormatLocalTime("%F") + ": " +
         texts.AddLabel(texts.FormatUi(ToString(verdict))) +
         FormatAnswer(finding, reply.sources, texts);
}

// As --scenario takes it: a name alone would be looked up among the shipped ones.
std::string AsPath(const std::string& folder) {
  return folder.find('/') != std::string::npos ? folder : "./" + folder;
}

void Print(const std::string& folder, const Texts& texts, bool json) {
  if (json) {
    Json::Value written;
    written["folder"] = folder;
    written["files"].append(kState);
    written["files"].append(kAnswer);
    std::cout << common::WriteCompact(written) << '\n';
    return;
  }
  const Style style = Style::ForStandardOutput();
  const std::string path = Sanitize(AsPath(folder));
  std::cout << texts.FormatUi("captured", style.Bold(Sanitize(folder))) << '\n'
            << "  " << style.Bold("vela-health --scenario " + path) << '\n'
            << style.WrapLines(0, "", texts.FormatUi("captured_holds", path + "/" + kState))
            << '\n';
}

}  // namespace

ExitStatus RunCapture(Session& session, const std::string& folder, const std::string& why,
                      bool realNames) {
  NewFolder target(folder);
  const Texts& texts = session.GetTexts();
  session.Record();
  const SimulatedMachine machine = session.OpenMachine();
  const Host& host = session.GetHost();
  const Reply reply = host.CallMethod(FindHealthMethod(host), machine);
  const std::string state =
      host.GetRecordedState(why.empty() ? DescribeCapture(reply, texts) : why);
  const Captured files = MakeFiles(state, reply.document, realNames);
  target.Make({{kState, files.state}, {kAnswer, files.expected}});
  Print(folder, texts, session.Options().json);
  return kHealthy;
}

}  // namespace host

// Texts that come from elsewhere, whatever they hold. Each function is a fuzzer: FUZZED names the
// one of this program.
#include "common/json_numbers.h"
#include "fuzz/one_request.h"
#include "platform/simulator/scenario.h"
#include "platform/simulator/scenario_writer.h"

namespace fuzz {

// What the SAN tool prints: its finding or none, the log lines of what is missing, and the same
// once numbers have no points.
void FuzzSanOutput(const std::string& text) {
  simulator::Machine machine;
  machine.sanOutput = text;
  const Answer answer = OneRequest(machine);
  const std::string id = answer.document["rule"]["id"].asString();
  Require(id == "system_health" || id == "san_status_warning", "a finding of the SAN");
  Require(answer.log.size() <= 2, "a line for each list at most");
  for (const std::string& line : answer.log)
    Require(line.starts_with("3 SystemInfo/san_status_info:"), line);

  machine.sanOutput = common::WithoutDecimalPoints(text);
  Require(OneRequest(machine) == answer, "numbers without points say the same");
}

// What the security scan left in its file: danger or nothing, and no log line.
void FuzzSecurityScan(const std::string& text) {
  simulator::Machine machine;
  machine.securityScan = text;
  const Answer answer = OneRequest(machine);
  const std::string id = answer.document["rule"]["id"].asString();
  Require(id == "system_health" || id == "securityscan_status_danger", "the scan's finding");
  Require(id == "system_health" || text.find('{') != text.npos, "danger is a member");
  Require(answer.log.empty(), "the scan's file is read in silence");
}

// A scenario file: a message that says where it is wrong, or a machine that answers the same
// twice, and once more when it was written down and read again.
void FuzzScenario(const std::string& text) {
  try {
    simulator::Machine machine = simulator::ParseScenario("state.json", text);
    const Answer answer = OneRequest(machine);
    Require(OneRequest(machine) == answer, "the same answer twice");
    const std::string written = simulator::WriteScenario(machine, "written");
    simulator::Machine again = simulator::ParseScenario("written", written);
    Require(OneRequest(again) == answer, written);
  } catch (const simulator::ScenarioError& error) {
    const std::string message = error.what();
    Require(message.starts_with("state.json:") && std::isdigit(message[11]) != 0, message);
  }
}

}  // namespace fuzz

extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size) {
  fuzz::FUZZED(std::string(data, size));
  return 0;
}

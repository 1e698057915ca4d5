// Whatever the SAN tool prints: its finding or none, the log lines of what is missing, and the
// same in a locale that writes a comma.
#include <cstdint>

#include "common/json_numbers.h"
#include "fuzz/one_request.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const simulator::Machine healthy;
  simulator::Machine machine = healthy;
  machine.sanOutput.emplace(reinterpret_cast<const char*>(data), size);

  const fuzz::Answer answer = fuzz::OneRequest(machine);
  const std::string id = answer.Rule()["id"].asString();
  fuzz::Require(id == "system_health" || id == "san_status_warning", "a finding of the SAN");
  fuzz::Require(answer.log.size() <= 2, "a line for each list at most");
  for (const std::string& line : answer.log)
    fuzz::Require(line.starts_with("3 SystemInfo/san_status_info:"), line);

  machine.sanOutput = common::WithWholeNumbers(*machine.sanOutput);
  fuzz::Require(fuzz::OneRequest(machine) == answer, "whole numbers say the same");
  return 0;
}

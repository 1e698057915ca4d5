// Whatever the security scan left in its file: danger or nothing, and no log line.
#include <cstdint>

#include "fuzz/one_request.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const simulator::Machine healthy;
  simulator::Machine machine = healthy;
  const std::string file(reinterpret_cast<const char*>(data), size);
  machine.securityScan = file;

  const fuzz::Answer answer = fuzz::OneRequest(machine);
  const std::string id = answer.Rule()["id"].asString();
  fuzz::Require(id == "system_health" || id == "securityscan_status_danger", "the scan's finding");
  fuzz::Require(id == "system_health" || file.find('{') != file.npos, "danger is a member");
  fuzz::Require(answer.log.empty(), "the scan's file is read in silence");
  return 0;
}

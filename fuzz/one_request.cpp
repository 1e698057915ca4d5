#include "fuzz/one_request.h"

#include <vela_api.h>

#include "tests/support/recorded_log.h"
#include "tests/support/recorded_response.h"

extern "C" const VELA::APIMethodRow* GetAPITable();

namespace fuzz {
namespace {

void RequireShape(const Json::Value& document) {
  const Json::Value& rule = document["rule"];
  const double priority = rule["priority"].asDouble();
  Require(document.size() == 4 && rule.size() == 4, "four members each");
  Require(rule["type"].asInt() >= 0 && rule["type"].asInt() <= 2, "one of three types");
  Require(priority >= -2.2 && priority <= 40.0, "a priority that a finding has");
  Require((rule["type"].asInt() == 0) == (priority < 0), "danger is what is negative");
  Require(rule["description"]["description_params"].isArray(), "a list of parameters");
  Require(document["interfaces"].size() <= 32, "32 interfaces at most");
}

}  // namespace

Answer OneRequest(simulator::Machine& machine) {
  VELA::SystemHealth::RecordedLog().clear();
  VELA::RecordedResponse response;
  simulator::Enter(&machine);
  GetAPITable()[0].handler(nullptr, response.AsResponse());
  simulator::Enter(nullptr);
  Require(response.answers == 1, "one answer");
  Require(machine.ledger.lists == 0 && machine.ledger.streams == 0 && machine.ledger.objects == 0,
          "everything is given back");
  RequireShape(response.document);
  return {response.document, VELA::SystemHealth::RecordedLog()};
}

}  // namespace fuzz

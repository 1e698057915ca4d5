// One request, from its machine to all that can be seen of it.
#pragma once

#include <string>
#include <vector>

#include <vela_api.h>

#include "platform/simulator/machine.h"
#include "tests/support/recorded_log.h"
#include "tests/support/recorded_response.h"

extern "C" const VELA::APIMethodRow* GetAPITable();

namespace VELA::SystemHealth {

struct Answer {
  Json::Value document;  // null without exactly one answer
  std::vector<std::string> log;

  bool operator==(const Answer&) const = default;
};

// All lists, streams and objects that the machine lent are given back.
inline bool OwesNothing(const simulator::Machine& machine) {
  const simulator::Ledger& ledger = machine.ledger;
  return ledger.lists == 0 && ledger.streams == 0 && ledger.objects == 0;
}

inline Answer Ask(simulator::Machine& machine) {
  RecordedLog().clear();
  simulator::Enter(&machine);
  RecordedResponse response;
  GetAPITable()[0].handler(nullptr, response.AsResponse());
  simulator::Enter(nullptr);
  return {response.answers == 1 ? response.document : Json::Value(), RecordedLog()};
}

}  // namespace VELA::SystemHealth

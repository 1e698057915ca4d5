// One request on a fuzzer's machine, and what must hold for every one of them.
#pragma once

#include <string>

#include "fuzz/require.h"
#include "tests/support/ask.h"

namespace fuzz {

using VELA::SystemHealth::Answer;

// Requires one answer of the right shape, and that everything was given back.
inline Answer OneRequest(simulator::Machine& machine) {
  const Answer answer = VELA::SystemHealth::Ask(machine);
  const Json::Value& rule = answer.document["rule"];
  const double priority = rule["priority"].asDouble();
  const int type = rule["type"].asInt();
  Require(VELA::SystemHealth::OwesNothing(machine), "everything is given back");
  Require(answer.document.size() == 4 && rule.size() == 4, "one answer, four members each");
  Require(type >= 0 && type <= 2, "one of three types");
  Require(priority >= -2.2 && priority <= 40.0, "a priority that a finding has");
  Require((type == 0) == (priority < 0), "danger is what is negative");
  Require(rule["description"]["description_params"].isArray(), "a list of parameters");
  Require(answer.document["interfaces"].size() <= 32, "32 interfaces at most");
  return answer;
}

}  // namespace fuzz

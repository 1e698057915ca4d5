// One request on a fuzzer's machine, and what must hold for every one of them.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <json/value.h>

#include "platform/simulator/machine.h"

namespace fuzz {

// Stops the fuzzer when `holds` does not, so that it keeps the input.
inline void Require(bool holds, const std::string& what) {
  if (holds) return;
  std::fprintf(stderr, "broken: %s\n", what.c_str());
  std::abort();
}

struct Answer {
  Json::Value document;
  std::vector<std::string> log;

  const Json::Value& Rule() const { return document["rule"]; }
  bool operator==(const Answer&) const = default;
};

// Requires one answer of the right shape, and that everything was given back.
Answer OneRequest(simulator::Machine& machine);

}  // namespace fuzz

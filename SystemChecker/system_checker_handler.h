// The runner: all checkers over one snapshot, the most urgent finding wins.
#pragma once

#include "SystemChecker/checker_rule.h"

namespace VELA::SystemHealth {

class SystemInfoHandler;

// What is said when no checker finds anything.
CheckerRule HealthyRule();

class SystemCheckerHandler {
 public:
  // The most urgent finding, the earlier checker's on a tie; the healthy default when
  // there is none. Every checker runs, whatever the ones before it found.
  CheckerRule Check(const SystemInfoHandler& info) const;
};

}  // namespace VELA::SystemHealth

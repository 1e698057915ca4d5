// What only `vela-health serve --demo` shows: every shipped scenario, and one of each finding.
#pragma once

#include <filesystem>
#include <set>
#include <string>
#include <string_view>

#include "host/platform.h"

namespace vela::host {

class Demo {
 public:
  // Both live as long as the demo. Throws Failure when there are no scenarios.
  Demo(const Platform& platform, std::filesystem::path scenarios);

  // A fresh machine of a shipped scenario; null when no scenario has this name, so that no
  // path leads out of the folder. Throws Failure when the scenario is damaged.
  SimulatedMachine Open(std::string_view name) const;
  // {"findings": [{"scenario": its name, "rule": as in the document of "get"}], "scenarios":
  // all names}: for each kind of finding, the most urgent first, the scenario that shows it.
  const std::string& Gallery() const { return gallery_; }

 private:
  const Platform& platform_;
  const std::filesystem::path folder_;
  std::set<std::string, std::less<>> names_;
  std::string gallery_;
};

}  // namespace vela::host

// What only `vela-health serve --demo` shows: every shipped scenario, and one of each finding.
#pragma once

#include <filesystem>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "host/loader/platform.h"

namespace host {

class Demo {
 public:
  // Both live as long as the demo. Throws Failure when there are no scenarios.
  Demo(const Platform& platform, std::filesystem::path scenarios);

  // Whether a shipped scenario has this name: no path leads out of the folder.
  bool Has(std::string_view name) const { return names_.contains(name); }
  // A fresh machine of a scenario that it has. Throws Failure when the scenario is damaged.
  SimulatedMachine Open(const std::string& name) const;
  // {"findings": [{"scenario": its name, "rule": as in the document of "get"}], "scenarios":
  // all names}: for each kind of finding, the most urgent first, the scenario that shows it.
  const std::string& Gallery() const { return gallery_; }
  // The scenarios of the gallery whose finding is no mere notice, the most urgent first.
  const std::vector<std::string>& Faults() const { return faults_; }

 private:
  const Platform& platform_;
  const std::filesystem::path folder_;
  std::set<std::string, std::less<>> names_;
  std::string gallery_;
  std::vector<std::string> faults_;
};

}  // namespace host

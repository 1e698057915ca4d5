// Scenario files: a machine as the ways in which it differs from a healthy one.
#pragma once

#include <filesystem>
#include <string>

#include "platform/simulator/machine.h"
#include "platform/simulator/scenario_reader.h"

namespace simulator {

// Reads `path`, or state.json in it when it is a folder. Throws ScenarioError with file,
// line and member when anything in it is wrong.
Machine LoadScenario(const std::filesystem::path& path);

// The same from text; `file` is what messages call it.
Machine ParseScenario(const std::string& file, const std::string& text);

}  // namespace simulator

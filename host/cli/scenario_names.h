// The names of the shipped scenarios, for who asks for one that is not there.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace host {

// A sentence with up to three names in `folder` that share the most words with `wanted`, or
// with where all names are.
std::string SuggestScenarios(const std::filesystem::path& folder, std::string_view wanted);

}  // namespace host

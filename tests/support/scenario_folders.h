// The folders below scenarios/, as tests walk them.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <json/value.h>

namespace scenarios {

// Of all scenarios, sorted.
std::vector<std::string> Names();

std::filesystem::path Folder(const std::string& name);

// A whole JSON file; a failed expectation and null when it is not there or not JSON.
Json::Value Read(const std::filesystem::path& file);

}  // namespace scenarios

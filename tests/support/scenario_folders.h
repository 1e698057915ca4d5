// Machines and what they must be answered: the folders below scenarios/, and the rows of
// tests/fixtures/boundaries.json, each of which differs from another machine by a value.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <json/value.h>

namespace scenarios {

// Of all folders, sorted.
std::vector<std::string> Names();

std::filesystem::path Folder(const std::string& name);

// A whole JSON file; a failed expectation and null when it is not there or not JSON.
Json::Value Read(const std::filesystem::path& file);

// The healthy machine's answer and log with the members of an expected.json in place.
Json::Value WholeAnswer(const Json::Value& expected);

// By name: "why", "state" and "expected", as the two files of a folder hold them.
Json::Value Boundaries();

// A row's "state" as a file in a folder of this process's own.
std::filesystem::path WriteState(const Json::Value& state);

}  // namespace scenarios

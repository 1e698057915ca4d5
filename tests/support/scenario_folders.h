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

struct Boundary {
  std::string name;
  std::filesystem::path state;  // a file in a folder of this process's own
  Json::Value expected;         // as an expected.json holds it
};
std::vector<Boundary> Boundaries();

}  // namespace scenarios

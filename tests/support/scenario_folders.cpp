#include "tests/support/scenario_folders.h"

#include <algorithm>
#include <fstream>

#include <gtest/gtest.h>
#include <json/reader.h>
#include <json/writer.h>

#include "tests/support/own_folder.h"

namespace scenarios {

std::vector<std::string> Names() {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(VELA_SCENARIOS))
    if (entry.is_directory()) names.push_back(entry.path().filename());
  std::sort(names.begin(), names.end());
  return names;
}

std::filesystem::path Folder(const std::string& name) {
  return std::filesystem::path(VELA_SCENARIOS) / name;
}

Json::Value Read(const std::filesystem::path& file) {
  Json::Value value;
  std::ifstream stream(file);
  std::string errors;
  EXPECT_TRUE(stream && Json::parseFromStream(Json::CharReaderBuilder(), stream, &value, &errors))
      << file << ": " << errors;
  return value;
}

Json::Value WholeAnswer(const Json::Value& expected) {
  Json::Value whole = Read(Folder("healthy") / "expected.json");
  for (const std::string& name : expected.getMemberNames()) whole[name] = expected[name];
  return whole;
}

Json::Value Boundaries() { return Read(Folder("../tests/fixtures/boundaries.json")); }

std::filesystem::path WriteState(const Json::Value& state) {
  const std::filesystem::path file = test_support::OwnFolder() + "state.json";
  std::ofstream(file) << state;
  return file;
}

}  // namespace scenarios

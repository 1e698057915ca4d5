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

std::vector<Boundary> Boundaries() {
  const Json::Value rows = Read(Folder("../tests/fixtures/boundaries.json"));
  std::vector<Boundary> all;
  for (const std::string& name : rows.getMemberNames()) {
    all.push_back({name, test_support::OwnFolder() + name + ".json", rows[name]["expected"]});
    std::ofstream(all.back().state) << rows[name]["state"];
  }
  return all;
}

}  // namespace scenarios

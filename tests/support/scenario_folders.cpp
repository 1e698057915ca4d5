#include "tests/support/scenario_folders.h"

#include <algorithm>
#include <fstream>

#include <gtest/gtest.h>
#include <json/reader.h>

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

}  // namespace scenarios

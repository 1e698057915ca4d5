#include "common/one_line.h"

#include <gtest/gtest.h>
#include <json/reader.h>
#include <json/writer.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>

namespace host {
namespace {

std::string ByTheLibrary(const Json::Value& document) {
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "";
  builder["precision"] = 15;
  return Json::writeString(builder, document);
}

TEST(OneLine, IsWhatTheLibraryWrites) {
  Json::Value odd(Json::objectValue);
  for (const std::string& text :
       {std::string("plain"), std::string(), std::string("\"\\/\b\f\n\r\t\x01\x7f"),
        std::string("nul\0inside", 10), std::string("Größe 名前 🖴"),
        std::string("cut \xe5\x90")}) {
    odd["texts"].append(text);
    odd[text] = text;
  }
  for (const double number : {2.2, 40.0, -20.0, 0.1 + 0.2, 1e300, 1e-7, 123456789012345678.0, -0.0,
                              std::nan(""), std::numeric_limits<double>::infinity()}) {
    odd["reals"].append(number);
  }
  odd["integers"].append(std::numeric_limits<Json::Int64>::min());
  odd["integers"].append(std::numeric_limits<Json::UInt64>::max());
  odd["rest"].append(true);
  odd["rest"].append(Json::Value());
  odd["rest"].append(Json::Value(Json::objectValue));
  odd["rest"].append(Json::Value(Json::arrayValue));
  EXPECT_EQ(common::OneLine(odd), ByTheLibrary(odd));
  EXPECT_TRUE(common::OneLine(odd).find("[2.2,40.0,-20.0,0.3,") != std::string::npos)
      << common::OneLine(odd);

  for (const auto& folder : std::filesystem::directory_iterator(VELA_SCENARIOS)) {
    std::ifstream file(folder.path() / "expected.json");
    Json::Value answer;
    if (file) file >> answer;
    EXPECT_EQ(common::OneLine(answer), ByTheLibrary(answer)) << folder.path();
  }
}

}  // namespace
}  // namespace host

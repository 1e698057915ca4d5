#include "common/json_writer.h"

#include <regex>

#include <json/writer.h>

namespace common {
namespace {

Json::StreamWriterBuilder MakeBuilder() {
  Json::StreamWriterBuilder builder;
  builder["commentStyle"] = "None";
  builder["indentation"] = "";
  builder["precision"] = 15;  // 2.2 is not 2.2000000000000002
  return builder;
}

Json::StreamWriterBuilder MakePrettyBuilder() {
  Json::StreamWriterBuilder builder = MakeBuilder();
  builder["emitUTF8"] = true;
  builder["enableYAMLCompatibility"] = true;  // no blank before a colon
  builder["indentation"] = "  ";
  return builder;
}

}  // namespace

std::string WriteCompact(const Json::Value& document) {
  static const Json::StreamWriterBuilder builder = MakeBuilder();
  return Json::writeString(builder, document);
}

std::string WritePretty(const Json::Value& document) {
  static const Json::StreamWriterBuilder builder = MakePrettyBuilder();
  static const std::regex brokenLine(": \n +");  // the library's: before each object and list
  return std::regex_replace(Json::writeString(builder, document), brokenLine, ": ") + '\n';
}

}  // namespace common

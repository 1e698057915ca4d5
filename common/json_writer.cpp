#include "common/json_writer.h"

#include <regex>

#include <json/writer.h>

namespace common {
namespace {

Json::StreamWriterBuilder MakeBuilder(Charset charset) {
  Json::StreamWriterBuilder builder;
  builder["emitUTF8"] = charset == Charset::Utf8;
  builder["commentStyle"] = "None";
  builder["indentation"] = "";
  builder["precision"] = 15;  // 2.2 is not 2.2000000000000002
  return builder;
}

Json::StreamWriterBuilder MakePrettyBuilder() {
  Json::StreamWriterBuilder builder = MakeBuilder(Charset::Utf8);
  builder["enableYAMLCompatibility"] = true;  // no blank before a colon
  builder["indentation"] = "  ";
  return builder;
}

}  // namespace

std::string WriteCompact(const Json::Value& document, Charset charset) {
  static const Json::StreamWriterBuilder ascii = MakeBuilder(Charset::Ascii);
  static const Json::StreamWriterBuilder utf8 = MakeBuilder(Charset::Utf8);
  return Json::writeString(charset == Charset::Ascii ? ascii : utf8, document);
}

std::string WritePretty(const Json::Value& document) {
  static const Json::StreamWriterBuilder builder = MakePrettyBuilder();
  static const std::regex brokenLine(": \n +");  // the library's: before each object and list
  return std::regex_replace(Json::writeString(builder, document), brokenLine, ": ") + '\n';
}

}  // namespace common

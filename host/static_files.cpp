#include "host/static_files.h"

#include <json/reader.h>
#include <json/writer.h>

#include <fstream>
#include <sstream>

#include "host/failure.h"
#include "host/language.h"

namespace vela::host {
namespace {

struct PageFile {
  const char *path, *file, *contentType;
};

constexpr PageFile kPage[] = {
    {"/", "index.html", "text/html; charset=utf-8"},
    {"/style.css", "style.css", "text/css; charset=utf-8"},
    {"/render.js", "render.js", "text/javascript; charset=utf-8"},
    {"/widget.js", "widget.js", "text/javascript; charset=utf-8"},
};

std::string Read(const std::filesystem::path& path) {
  const std::ifstream in(path, std::ios::binary);
  std::ostringstream bytes;
  if (in) bytes << in.rdbuf();
  if (!in || bytes.str().empty()) {
    throw Failure(kUnavailable, "Cannot read " + path.string() +
                                    ", which the page needs: build or install the program again.");
  }
  return std::move(bytes).str();
}

// Without the blanks that make the source readable, and without escapes.
std::string Compact(const std::string& json) {
  std::istringstream in(json);
  Json::Value value;
  in >> value;
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "";
  builder["emitUTF8"] = true;
  return Json::writeString(builder, value);
}

}  // namespace

StaticFiles::StaticFiles(const std::filesystem::path& data) {
  for (const PageFile& page : kPage) {
    files_[page.path] = {page.contentType, Read(data / "www" / page.file)};
  }
  for (const Language& language : Languages()) {
    const std::string name = std::string("texts/") + language.code + ".json";
    files_["/" + name] = {"application/json", Compact(Read(data / name))};
  }
}

const StaticFile* StaticFiles::Find(std::string_view path) const {
  const auto found = files_.find(path);
  return found == files_.end() ? nullptr : &found->second;
}

}  // namespace vela::host

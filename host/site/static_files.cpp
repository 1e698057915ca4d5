#include "host/site/static_files.h"

#include <json/reader.h>
#include <json/writer.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <iterator>
#include <sstream>
#include <utility>

#include "host/http/gzip.h"
#include "host/text/failure.h"
#include "host/text/language.h"

namespace host {
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

constexpr PageFile kDemo[] = {
    {"/gallery", "gallery.html", "text/html; charset=utf-8"},
    {"/gallery.css", "gallery.css", "text/css; charset=utf-8"},
    {"/gallery.js", "gallery.js", "text/javascript; charset=utf-8"},
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

// Without what only a reader of the source needs: indentation and lines that are a comment.
std::string Lean(const std::string& source) {
  std::istringstream lines(source);
  std::string lean;
  for (std::string line; std::getline(lines, line);) {
    line.erase(0, line.find_first_not_of(' '));
    if (!line.empty() && !line.starts_with("//")) lean += line + '\n';
  }
  return lean;
}

// What the page shows: without the catalogue's titles, advice on what needs none, words that
// `page` never names, the blanks that make the source readable, and escapes.
std::string TextsOfPage(const std::string& json, const std::string& page) {
  std::istringstream in(json);
  Json::Value value;
  in >> value;
  for (Json::Value& section : value) {
    if (section.isObject()) section.removeMember("title");
  }
  value.removeMember("system_health/system_ok");
  for (const std::string& word : value["ui"].getMemberNames()) {
    if (page.find('"' + word + '"') == std::string::npos) value["ui"].removeMember(word);
  }
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "";
  builder["emitUTF8"] = true;
  return Json::writeString(builder, value);
}

StaticFile::Form FormOf(const char* contentType, const std::string& name, std::string bytes) {
  const std::string tag = '"' + name + '"';
  const HttpAnswer unchanged = {
      304,
      contentType,
      {},
      {{"Cache-Control", "no-cache"}, {"Vary", "Accept-Encoding"}, {"ETag", tag}}};
  StaticFile::Form form = {tag, unchanged, unchanged};
  form.whole.status = 200;
  form.whole.body = std::move(bytes);
  return form;
}

}  // namespace

StaticFiles::StaticFiles(const std::filesystem::path& data, bool demo) {
  const auto add = [&](const PageFile& page) {
    Add(page.path, page.contentType, Lean(Read(data / "www" / page.file)));
  };
  std::string sources;
  for (const PageFile& page : kPage) {
    add(page);
    sources += files_[page.path].plain.whole.body;
  }
  if (demo) std::for_each(std::begin(kDemo), std::end(kDemo), add);
  for (const Language& language : ListLanguages()) {
    const std::string name = std::string("texts/") + language.code + ".json";
    Add("/" + name, "application/json", TextsOfPage(Read(data / name), sources));
  }
}

void StaticFiles::Add(const std::string& path, const char* contentType, std::string bytes) {
  std::string gzipped = Gzip(bytes);
  // Its last bytes are a sum over `bytes` and their number.
  const std::size_t sum =
      std::hash<std::string_view>()(std::string_view(gzipped).substr(gzipped.size() - 8));
  StaticFile& file = files_[path];
  file.plain = FormOf(contentType, std::to_string(sum), std::move(bytes));
  file.gzip = FormOf(contentType, std::to_string(sum) + "-gzip", std::move(gzipped));
  file.gzip.whole.headers.emplace_back("Content-Encoding", "gzip");
}

const StaticFile* StaticFiles::Find(std::string_view path) const {
  const auto found = files_.find(path);
  return found == files_.end() ? nullptr : &found->second;
}

}  // namespace host

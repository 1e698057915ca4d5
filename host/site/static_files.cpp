#include "host/site/static_files.h"

#include <json/value.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <iterator>
#include <regex>
#include <sstream>
#include <utility>

#include "common/json_reader.h"
#include "common/json_writer.h"
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

std::string ReadFile(const std::filesystem::path& path) {
  const std::ifstream in(path, std::ios::binary);
  std::ostringstream bytes;
  if (in) bytes << in.rdbuf();
  if (!in || bytes.str().empty()) {
    throw Failure(kUnavailable, "Cannot read " + path.string() +
                                    ", which the page needs: build or install the program again.");
  }
  return std::move(bytes).str();
}

// Leaves out what only a reader of the source needs: indentation and lines that are a comment.
std::string Minify(const std::string& source) {
  std::istringstream lines(source);
  std::string minified;
  for (std::string line; std::getline(lines, line);) {
    line.erase(0, line.find_first_not_of(' '));
    if (!line.empty() && !line.starts_with("//")) minified += line + '\n';
  }
  return minified;
}

// Leaves out what only a reader of a style sheet needs, too: blanks where one thing ends.
std::string MinifyStyle(const std::string& source) {
  static const std::regex kEnds(" *([{};]) *"), kBlanks("([:,]) "), kLast(";\\}");
  const std::string ends = std::regex_replace(Minify(source), kEnds, "$1");
  return std::regex_replace(std::regex_replace(ends, kBlanks, "$1"), kLast, "}");
}

// The page's labels, {key: text}: its own section, and those of the program's words that `sources`
// name. All else that it shows comes with an answer, in words.
std::string PickLabels(const std::string& json, const std::string& sources) {
  Json::Value texts;
  if (!common::ParseJson(json, texts) || !texts.isObject() || !texts["page"].isObject()) {
    throw Failure(kUnavailable,
                  "The page's texts are damaged: build or install vela-health again.");
  }
  Json::Value labels = texts["page"];
  for (const std::string& word : texts["ui"].getMemberNames())
    if (sources.find('"' + word + '"') != std::string::npos ||
        sources.find("ui." + word) != std::string::npos)
      labels[word] = texts["ui"][word];
  return common::WriteCompact(labels, common::Charset::Utf8);
}

// The description of the API, without the blanks that make the source readable.
std::string MinifyJson(const std::filesystem::path& file) {
  Json::Value value;
  if (!common::ParseJson(ReadFile(file), value)) {
    throw Failure(kUnavailable, file.string() + " is damaged: build or install the program again.");
  }
  return common::WriteCompact(value, common::Charset::Utf8);
}

}  // namespace

StaticFiles::StaticFiles(const std::filesystem::path& data, bool demo) {
  const auto add = [&](const PageFile& page) {
    const std::string source = ReadFile(data / "www" / page.file);
    const bool style = std::string_view(page.contentType).starts_with("text/css");
    Add(page.path, page.contentType, style ? MinifyStyle(source) : Minify(source));
  };
  std::string sources;
  for (const PageFile& page : kPage) {
    add(page);
    sources += files_[page.path].plain.bytes;
  }
  if (demo) std::for_each(std::begin(kDemo), std::end(kDemo), add);
  Add("/openapi.json", "application/json", MinifyJson(data / "www/openapi.json"));
  for (const Language& language : ListLanguages()) {
    const std::string name = std::string(language.code) + ".json";
    Add("/texts/" + name, "application/json", PickLabels(ReadFile(data / "texts" / name), sources));
  }
}

void StaticFiles::Add(const std::string& path, const char* contentType, std::string bytes) {
  const std::string tag = std::to_string(std::hash<std::string>()(bytes));
  std::string gzipped = Gzip(bytes);
  files_[path] = {contentType,
                  {'"' + tag + '"', std::move(bytes)},
                  {'"' + tag + "-gzip\"", std::move(gzipped)}};
}

std::optional<HttpAnswer> StaticFiles::Answer(const HttpRequest& request) const {
  const auto found = files_.find(request.path);
  if (found == files_.end()) return std::nullopt;
  const bool packed = AcceptsGzip(request.header("Accept-Encoding"));
  const File::Form& form = packed ? found->second.gzip : found->second.plain;
  HttpAnswer answer{
      304,
      found->second.contentType,
      {},
      {{"Cache-Control", "no-cache"}, {"Vary", "Accept-Encoding"}, {"ETag", form.tag}}};
  const char* known = request.header("If-None-Match");
  if (known != nullptr && known == form.tag) return answer;
  answer.status = 200;
  answer.body = form.bytes;
  if (packed) answer.headers.emplace_back("Content-Encoding", "gzip");
  return answer;
}

}  // namespace host

#include "host/health_site.h"

#include <charconv>
#include <optional>
#include <utility>

#include "host/gzip.h"
#include "host/page_answer.h"
#include "host/problem.h"

namespace vela::host {
namespace {

constexpr std::string_view kApi = "/api/";
constexpr std::string_view kPage = "/";
constexpr std::string_view kGallery = "/gallery.json";
constexpr std::string_view kAnswer = "/answer";  // what the page asks for
constexpr std::string_view kMetrics = "/metrics";
constexpr const char* kMetricsType = "text/plain; version=0.0.4; charset=utf-8";
constexpr std::string_view kHealthz = "/healthz";  // whether this process serves

HttpAnswer NotStored(std::string json) {
  HttpAnswer answer{200, "application/json", std::move(json)};
  answer.headers.emplace_back("Cache-Control", "no-store");
  return answer;
}

struct MethodName {
  std::string_view api, method;
  std::int64_t version;
};

// "NAME/VERSION/METHOD".
std::optional<MethodName> ParseMethod(std::string_view path) {
  const std::size_t first = path.find('/');
  const std::size_t second = path.find('/', first + 1);
  if (first == std::string_view::npos || second == std::string_view::npos) return std::nullopt;
  MethodName name{path.substr(0, first), path.substr(second + 1), 0};
  const auto [end, error] =
      std::from_chars(path.data() + first + 1, path.data() + second, name.version);
  if (error != std::errc() || end != path.data() + second) return std::nullopt;
  return name;
}

std::vector<std::string> Available(const Host& host) {
  std::vector<std::string> paths;
  for (const Module& module : host.Modules()) {
    for (const VELA::APIMethodRow& row : module) {
      paths.push_back(std::string(kApi) + row.api + "/" + std::to_string(row.version) + "/" +
                      row.method);
    }
  }
  return paths;
}

}  // namespace

HealthSite::HealthSite(const Host& host, SimulatedMachine machine,
                       const std::filesystem::path& data, bool demo)
    : host_(host), machine_(std::move(machine)), files_(data, demo) {
  if (demo) demo_.emplace(host.GetPlatform(), data / "scenarios");
}

bool HealthSite::MayWait(std::string_view path) const {
  if (!demo_ && !host_.GetPlatform().MayWait(machine_)) return false;
  return path.starts_with(kApi) || path == kAnswer || path == kMetrics;
}

HttpAnswer HealthSite::Answer(const HttpRequest& request) const {
  if (request.path.starts_with(kApi)) return AnswerApi(request.path.substr(kApi.size()));
  if (request.path == kPage || request.path == kAnswer) {
    const char* scenario = request.Argument("scenario");
    return scenario == nullptr ? AnswerPage(request, machine_) : Preview(request, scenario);
  }
  if (const StaticFile* file = files_.Find(request.path)) return AnswerFile(request, *file);
  if (request.path == kMetrics) return {200, kMetricsType, metrics_.Scrape(host_, machine_)};
  if (request.path == kHealthz) return {200, "text/plain; charset=utf-8", "ok\n"};
  if (demo_ && request.path == kGallery) return {200, "application/json", demo_->Gallery()};
  return Problem(404, "Not found", "There is nothing at " + std::string(request.path) + ".",
                 Available(host_));
}

HttpAnswer HealthSite::AnswerPage(const HttpRequest& request,
                                  const SimulatedMachine& machine) const {
  if (request.path == kPage) return AnswerFile(request, *files_.Find(kPage));
  return NotStored(PageAnswer(host_, machine));
}

HttpAnswer HealthSite::Preview(const HttpRequest& request, std::string_view scenario) const {
  if (!demo_) {
    return Problem(404, "No preview", "Scenarios are shown only by vela-health serve --demo.");
  }
  const SimulatedMachine machine = demo_->Open(scenario);
  if (machine != nullptr) return AnswerPage(request, machine);
  return Problem(404, "No such scenario",
                 "No scenario has the name \"" + std::string(scenario) +
                     "\". The page /gallery lists all of them.");
}

HttpAnswer HealthSite::AnswerApi(std::string_view path) const {
  const auto name = ParseMethod(path);
  const VELA::APIMethodRow* row =
      name ? host_.Find(name->api, name->version, name->method) : nullptr;
  if (row == nullptr) return NoSuchMethod(path);
  const auto start = std::chrono::steady_clock::now();
  std::string document = host_.AskDocument(*row, machine_);
  metrics_.Answered(std::chrono::steady_clock::now() - start);
  return NotStored(std::move(document));
}

HttpAnswer HealthSite::AnswerFile(const HttpRequest& request, const StaticFile& file) const {
  HttpAnswer answer{200, file.contentType, {}};
  const bool gzip = AcceptsGzip(request.Header("Accept-Encoding"));
  const std::string tag = "\"" + file.tag + (gzip ? "-gzip\"" : "\"");
  answer.headers = {{"Cache-Control", "no-cache"}, {"Vary", "Accept-Encoding"}, {"ETag", tag}};
  const char* known = request.Header("If-None-Match");
  if (known != nullptr && known == tag) {
    answer.status = 304;
    return answer;
  }
  if (gzip) answer.headers.emplace_back("Content-Encoding", "gzip");
  answer.fixed = gzip ? file.gzipped : file.bytes;
  return answer;
}

HttpAnswer HealthSite::NoSuchMethod(std::string_view path) const {
  return Problem(404, "No such method",
                 "No loaded module has the API, version and method " + std::string(path) + ".",
                 Available(host_));
}

}  // namespace vela::host

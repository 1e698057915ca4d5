#include "host/site/health_site.h"

#include <charconv>
#include <optional>
#include <utility>

#include "host/http/gzip.h"
#include "host/http/problem.h"
#include "host/site/page_answer.h"

namespace host {
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

const HttpAnswer* FileAnswer(const HttpRequest& request, const StaticFile& file) {
  const StaticFile::Form& form =
      AcceptsGzip(request.Header("Accept-Encoding")) ? file.gzip : file.plain;
  const char* known = request.Header("If-None-Match");
  return known != nullptr && known == form.tag ? &form.unchanged : &form.whole;
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

Reaction HealthSite::React(const HttpRequest& request) const {
  if (request.path.starts_with(kApi)) {
    if (MethodAt(request.path) != nullptr) return Question{std::string(request.path)};
    return Problem(404, "No such method",
                   "No loaded module has the API, version and method " +
                       std::string(request.path.substr(kApi.size())) + ".",
                   Available(host_));
  }
  if (request.path == kPage || request.path == kAnswer) return ReactToPage(request);
  if (const StaticFile* file = files_.Find(request.path)) return FileAnswer(request, *file);
  if (request.path == kMetrics) return Question{std::string(kMetrics)};
  if (request.path == kHealthz) return &alive_;
  if (demo_ && request.path == kGallery) {
    return HttpAnswer{200, "application/json", demo_->Gallery()};
  }
  return Problem(404, "Not found", "There is nothing at " + std::string(request.path) + ".",
                 Available(host_));
}

Reaction HealthSite::ReactToPage(const HttpRequest& request) const {
  const char* argument = request.Argument("scenario");
  const std::string scenario = argument == nullptr ? "" : argument;
  if (argument != nullptr && !demo_) {
    return Problem(404, "No preview", "Scenarios are shown only by vela-health serve --demo.");
  }
  if (argument != nullptr && !demo_->Has(scenario)) {
    return Problem(
        404, "No such scenario",
        "No scenario has the name \"" + scenario + "\". The page /gallery lists all of them.");
  }
  if (request.path == kPage) return FileAnswer(request, *files_.Find(kPage));
  return Question{std::string(kAnswer), scenario};
}

HttpAnswer HealthSite::Ask(const Question& question, std::size_t requests) const {
  if (question.path == kMetrics) return {200, kMetricsType, metrics_.Scrape(host_, machine_)};
  if (question.path != kAnswer) return AskMethod(*MethodAt(question.path), requests);
  const SimulatedMachine machine =
      question.scenario.empty() ? machine_ : demo_->Open(question.scenario);
  return NotStored(PageAnswer(host_, machine));
}

const VELA::APIMethodRow* HealthSite::MethodAt(std::string_view path) const {
  const auto name = ParseMethod(path.substr(kApi.size()));
  return name ? host_.FindMethod(name->api, name->version, name->method) : nullptr;
}

HttpAnswer HealthSite::AskMethod(const VELA::APIMethodRow& method, std::size_t requests) const {
  const auto start = std::chrono::steady_clock::now();
  std::string document = host_.CallForDocument(method, machine_);
  metrics_.Answered(std::chrono::steady_clock::now() - start, requests);
  return NotStored(std::move(document));
}

}  // namespace host

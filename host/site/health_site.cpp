#include "host/site/health_site.h"

#include <charconv>
#include <chrono>
#include <optional>
#include <utility>

#include "host/answer/complete_answer.h"
#include "host/site/fleet_list.h"
#include "host/site/metric_families.h"
#include "host/text/language.h"

namespace host {
namespace {

constexpr std::string_view kApi = "/api/";
constexpr std::string_view kPage = "/";
constexpr std::string_view kGallery = "/gallery.json";
constexpr std::string_view kFleet = "/fleet";
constexpr std::string_view kComplete = "/v1/health";
constexpr std::string_view kMetrics = "/metrics";
constexpr std::string_view kOpenApi = "/openapi.json";
constexpr std::string_view kHealthz = "/healthz";  // whether this process serves

HttpAnswer NotStored(std::string json) {
  HttpAnswer answer{200, "application/json", std::move(json)};
  answer.headers.emplace_back("Cache-Control", "no-store");
  return answer;
}

std::vector<std::string> ListCodes() {
  std::vector<std::string> codes;
  for (const Language& language : ListLanguages()) codes.emplace_back(language.code);
  return codes;
}

std::map<std::string, Texts> ReadTexts(const std::filesystem::path& folder) {
  std::map<std::string, Texts> texts;
  for (const std::string& code : ListCodes()) texts.emplace(code, Texts(folder, code));
  return texts;
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

std::vector<std::string> ListMethods(const Host& host) {
  std::vector<std::string> paths;
  for (const Module& module : host.Modules()) {
    for (const VELA::APIMethodRow& row : module) {
      paths.push_back(std::string(kApi) + row.api + "/" + std::to_string(row.version) + "/" +
                      row.method);
    }
  }
  return paths;
}

std::vector<std::string> ListPaths(const Host& host) {
  std::vector<std::string> paths = ListMethods(host);
  for (const std::string_view path : {kComplete, kMetrics, kHealthz, kOpenApi, kPage})
    paths.emplace_back(path);
  return paths;
}

}  // namespace

HealthSite::HealthSite(const Host& host, SimulatedMachine machine,
                       const std::filesystem::path& data, bool demo)
    : host_(host),
      machine_(std::move(machine)),
      files_(data, demo),
      texts_(ReadTexts(data / "texts")) {
  if (demo) demo_.emplace(host.GetPlatform(), data / "scenarios");
}

std::variant<HttpAnswer, MachineQuery> HealthSite::Route(const HttpRequest& request) const {
  if (AsksMachine(request.path)) return RouteToMachine(request);
  if (request.path.starts_with(kApi)) {
    return Problem(404, "No such method",
                   "No loaded module has the API, version and method " +
                       std::string(request.path.substr(kApi.size())) + ".",
                   ListMethods(host_));
  }
  if (auto file = files_.Answer(request)) return *std::move(file);
  if (request.path == kHealthz) return AnswerHealthz(request);
  if (demo_ && request.path == kGallery) {
    return HttpAnswer{200, "application/json", demo_->Gallery()};
  }
  if (demo_ && request.path == kFleet) return ListFleet(request, *demo_);
  return Problem(404, "Not found", "There is nothing at " + std::string(request.path) + ".",
                 ListPaths(host_));
}

// The page is a file, and still shows a machine.
bool HealthSite::AsksMachine(std::string_view path) const {
  return path == kPage || path == kComplete || path == kMetrics ||
         (path.starts_with(kApi) && FindMethod(path) != nullptr);
}

std::variant<HttpAnswer, MachineQuery> HealthSite::RouteToMachine(
    const HttpRequest& request) const {
  const char* argument = request.argument("scenario");
  const std::string scenario = argument == nullptr ? "" : argument;
  if (argument != nullptr && !demo_) {
    return Problem(404, "No preview", "Scenarios are shown only by vela-health serve --demo.");
  }
  if (argument != nullptr && !demo_->Has(scenario)) {
    return Problem(
        404, "No such scenario",
        "No scenario has the name \"" + scenario + "\". The page /gallery lists all of them.");
  }
  if (request.path == kPage) return *files_.Answer(request);
  MachineQuery query{std::string(request.path), scenario};
  query.openMetrics = request.path == kMetrics &&
                      ChooseExposition(request.header("Accept")) == Exposition::OpenMetrics;
  if (request.path != kComplete) return query;
  const char* wanted = request.argument("lang");
  query.language = wanted != nullptr ? FindLanguage(wanted)
                                     : ChooseAcceptedLanguage(request.header("Accept-Language"));
  if (!query.language.empty()) return query;
  return Problem(
      400, "No such language",
      "There are no texts in \"" + std::string(wanted) + "\". Leave lang out, or use one of these.",
      ListCodes());
}

HttpAnswer HealthSite::AskMachine(const MachineQuery& query, std::size_t requests) const {
  const SimulatedMachine machine = query.scenario.empty() ? machine_ : demo_->Open(query.scenario);
  const auto start = std::chrono::steady_clock::now();
  const auto answered = [&] {
    metrics_.Answered(std::chrono::steady_clock::now() - start, requests);
  };
  if (query.path == kMetrics) {
    const CompleteAnswer complete = AskForEverything(host_, machine);
    answered();  // before it is told: a scrape counts itself
    return ExposeMetrics(complete, query.openMetrics ? Exposition::OpenMetrics : Exposition::Text);
  }
  HttpAnswer answer = query.path == kComplete
                          ? AskComplete(machine, query.language)
                          : NotStored(host_.CallForDocument(*FindMethod(query.path), machine));
  answered();
  return answer;
}

HttpAnswer HealthSite::ExposeMetrics(const CompleteAnswer& complete, Exposition form) const {
  auto families = CollectFamilies(complete, texts_.at("en"));
  for (auto& family : metrics_.Collect()) families.push_back(std::move(family));
  HttpAnswer answer{200, NameContentType(form), Expose(families, form)};
  answer.headers.emplace_back("Vary", "Accept");
  answer.packs = true;
  return answer;
}

HttpAnswer HealthSite::AskComplete(const SimulatedMachine& machine,
                                   const std::string& language) const {
  const CompleteAnswer complete = AskForEverything(host_, machine);
  HttpAnswer answer = NotStored(WriteCompleteAnswer(complete, texts_.at(language)));
  answer.headers.emplace_back("Content-Language", language);
  answer.headers.emplace_back("Vary", "Accept-Language");
  answer.packs = true;
  return answer;
}

const VELA::APIMethodRow* HealthSite::FindMethod(std::string_view path) const {
  const auto name = ParseMethod(path.substr(kApi.size()));
  return name ? host_.FindMethod(name->api, name->version, name->method) : nullptr;
}

}  // namespace host

#include "host/cli/session.h"

#include <utility>

#include "host/text/language.h"

namespace host {
namespace {

constexpr const char* kExplainFile = "explain/VELA.Core.System.SystemHealth.Explain.so";
constexpr const char* kRecorderFile = "libvela-platform-recorder.so";
constexpr const char* kModuleFile = "VELA.Core.System.SystemHealth.so";

bool IsPath(const std::string& name) { return name.find('/') != std::string::npos; }

}  // namespace

Session::Session(CommonOptions options)
    : options_(std::move(options)),
      language_(ChooseLanguage(options_.language)),
      simulated_(!options_.scenario.empty()) {}

std::string Session::FindPlatform() const {
  if (IsPath(options_.platform)) return options_.platform;
  const std::string fallback = simulated_ ? "simulator" : "linux";
  const std::string& name = options_.platform.empty() ? fallback : options_.platform;
  return places_.FindLibrary("libvela-platform-" + name + ".so");
}

const Host& Session::GetHost() {
  if (!host_) {
    const std::string module =
        options_.module.empty() ? places_.FindLibrary(kModuleFile).string() : options_.module;
    std::vector<std::string> modules = {module};
    // Ours, for reasons and for the findings that lost; a health answer does not need it.
    const std::filesystem::path explain = places_.FindLibrary(kExplainFile);
    if (std::filesystem::exists(explain)) modules.push_back(explain);
    const std::string recorder = recorded_ ? places_.FindLibrary(kRecorderFile).string() : "";
    host_.emplace(HostFiles{FindPlatform(), modules, recorder});
  }
  return *host_;
}

const Texts& Session::GetTexts() {
  if (!texts_) texts_.emplace(places_.Data() / "texts", language_);
  return *texts_;
}

SimulatedMachine Session::OpenScenario(const std::string& nameOrPath) {
  const std::string path = places_.FindScenario(nameOrPath);
  simulated_ = true;
  return GetHost().GetPlatform().OpenScenario(path);
}

SimulatedMachine Session::OpenMachine() {
  return options_.scenario.empty() ? SimulatedMachine() : OpenScenario(options_.scenario);
}

}  // namespace host

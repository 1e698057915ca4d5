// What vela-health serves.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "host/demo.h"
#include "host/host.h"
#include "host/http.h"
#include "host/metrics.h"
#include "host/static_files.h"

namespace vela::host {

class HealthSite : public Site {
 public:
  // `host` lives as long as the site; `data` holds the page. With `demo` also any shipped
  // scenario and the gallery. Throws Failure.
  HealthSite(const Host& host, SimulatedMachine machine, const std::filesystem::path& data,
             bool demo);

  bool MayWait(std::string_view path) const override;
  HttpAnswer Answer(const HttpRequest& request) const override;

 private:
  HttpAnswer AnswerPage(const HttpRequest& request, const SimulatedMachine& machine) const;
  HttpAnswer Preview(const HttpRequest& request, std::string_view scenario) const;
  HttpAnswer AnswerFile(const HttpRequest& request, const StaticFile& file) const;
  HttpAnswer AnswerApi(std::string_view path) const;
  HttpAnswer NoSuchMethod(std::string_view path) const;

  const Host& host_;
  const SimulatedMachine machine_;
  const StaticFiles files_;
  std::optional<Demo> demo_;
  const Metrics metrics_;
};

}  // namespace vela::host

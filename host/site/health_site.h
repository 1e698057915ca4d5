// What vela-health serves.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "host/http/http.h"
#include "host/loader/host.h"
#include "host/site/demo.h"
#include "host/site/metrics.h"
#include "host/site/static_files.h"

namespace host {

class HealthSite : public Site {
 public:
  // `host` lives as long as the site; `data` holds the page. With `demo` also any shipped
  // scenario and the gallery. Throws Failure.
  HealthSite(const Host& host, SimulatedMachine machine, const std::filesystem::path& data,
             bool demo);

  Reaction React(const HttpRequest& request) const override;
  HttpAnswer Ask(const Question& question, std::size_t requests) const override;

 private:
  const VELA::APIMethodRow* MethodAt(std::string_view path) const;
  Reaction ReactToPage(const HttpRequest& request) const;
  HttpAnswer AskMethod(const VELA::APIMethodRow& method, std::size_t requests) const;

  const Host& host_;
  const SimulatedMachine machine_;
  const StaticFiles files_;
  std::optional<Demo> demo_;
  const Metrics metrics_;
  const HttpAnswer alive_{200, "text/plain; charset=utf-8", "ok\n"};
};

}  // namespace host

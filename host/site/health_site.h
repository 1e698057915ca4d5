// What vela-health serves.
#pragma once

#include <filesystem>
#include <optional>
#include <string_view>
#include <variant>

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

  std::variant<HttpAnswer, MachineQuery> Route(const HttpRequest& request) const override;
  HttpAnswer AskMachine(const MachineQuery& query, std::size_t requests) const override;

 private:
  using MethodRow = VELA::APIMethodRow;

  const MethodRow* FindMethod(std::string_view path) const;
  std::variant<HttpAnswer, MachineQuery> RoutePage(const HttpRequest& request) const;
  HttpAnswer AskMethod(const MethodRow& method, std::size_t requests) const;

  const Host& host_;
  const SimulatedMachine machine_;
  const StaticFiles files_;
  std::optional<Demo> demo_;
  const Metrics metrics_;
};

}  // namespace host

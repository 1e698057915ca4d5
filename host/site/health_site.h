// What vela-health serves.
#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "host/answer/complete_answer.h"
#include "host/http/http.h"
#include "host/loader/host.h"
#include "host/site/demo.h"
#include "host/site/exposition.h"
#include "host/site/metrics.h"
#include "host/site/static_files.h"
#include "host/text/texts.h"

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
  bool AsksMachine(std::string_view path) const;
  std::variant<HttpAnswer, MachineQuery> RouteToMachine(const HttpRequest& request) const;
  HttpAnswer ExposeMetrics(const CompleteAnswer& complete, Exposition form) const;
  HttpAnswer AskComplete(const SimulatedMachine& machine, const std::string& language) const;

  const Host& host_;
  const SimulatedMachine machine_;
  const StaticFiles files_;
  const std::map<std::string, Texts> texts_;  // by language; read at the start, by all threads
  std::optional<Demo> demo_;
  const Metrics metrics_;
};

}  // namespace host

// A platform, the modules over it, and one request at a time and thread.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/loader/library.h"
#include "host/loader/platform.h"

namespace host {

// What one request brought: the document as the module gave it, and beside it what the
// sources said meanwhile: the platform, and the module's log.
struct Reply {
  std::string document;
  std::vector<VELASourceReport> sources;
};

struct HostFiles {
  std::string platform;
  std::vector<std::string> modules;
  std::string recorder;  // the library that stands between both; empty: none
};

class Host {
 public:
  // Throws Failure.
  explicit Host(const HostFiles& files);

  const Platform& GetPlatform() const { return platform_; }
  const std::vector<Module>& Modules() const { return modules_; }
  // Null when no module has it.
  const VELA::APIMethodRow* FindMethod(std::string_view api, std::int64_t version,
                                       std::string_view method) const;

  // Runs a handler on this thread; any number of threads may. Throws Failure when it gave
  // no document, and what the module throws: nothing but std::bad_alloc.
  Reply CallMethod(const VELA::APIMethodRow& method, const SimulatedMachine& machine) const;
  // The same without the sources' reports.
  std::string CallForDocument(const VELA::APIMethodRow& method,
                              const SimulatedMachine& machine) const;
  // The machine as the modules saw it, as a scenario's state.json; only with a recorder, and
  // in the thread of the request.
  std::string GetRecordedState(const std::string& why) const { return recorder_->GetState(why); }

 private:
  Platform platform_;
  std::optional<Recorder> recorder_;
  std::vector<Module> modules_;
};

constexpr const char* kHealthAPI = "VELA.Core.System.SystemHealth";
constexpr std::int64_t kHealthVersion = 1;
constexpr const char* kHealthMethod = "get";

// The row of the health API's "get". Throws Failure when no module has it.
const VELA::APIMethodRow& FindHealthMethod(const Host& host);

}  // namespace host

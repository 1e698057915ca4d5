// One request of one thread: what it has read so far, and how long it may still wait.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/base/deadline.h"
#include "platform/linux/base/settings.h"
#include "platform/linux/chassis/chassis.h"
#include "platform/linux/chassis/expansion_units.h"
#include "platform/linux/network/netlink.h"
#include "platform/linux/services/configuration_fault.h"
#include "platform/linux/services/ha_state.h"
#include "platform/linux/services/pacemaker.h"
#include "platform/linux/services/web_server.h"
#include "platform/linux/storage/storage_view.h"
#include "platform/linux/ups/nut_client.h"

namespace linux_platform {

// What the answers were made from that no view of a source holds, kept for parts and evidence. A
// source that was not asked, or not judged by it, leaves its own empty.
struct Learned {
  std::optional<ConfigurationFault> refused;  // the web server's configuration
  ClusterReport cluster;
  std::vector<ClusterCause> mirrors;  // of DRBD, that are not whole
  std::vector<HeardUps> upses;
};

// Each source is read at the first question about it, and once. What is returned stays as it is
// until the request ends. For one thread.
class Request {
 public:
  const SettingsFile& GetCurrentSettings();
  const SettingsFile& GetFactorySettings();
  const StorageView& GetStorage();
  const Chassis& GetChassis();
  const ExpansionUnits& GetExpansionUnits();
  const WebServerState& GetWebServer();
  const ClusterServices& GetClusterServices();
  // Null when the kernel did not tell them, which `reason` explains; the next call asks again.
  const std::vector<Interface>* GetInterfaces(std::string& reason);

  Learned& GetLearned() { return learned_; }
  // Asks the UPSes that were heard for more, once.
  const std::vector<HeardUps>& GetUpses();

  TimeBudget& GetTimeBudget() { return timeBudget_; }
  // For tests: as if the request had waited so long already.
  void SetWaited(std::chrono::milliseconds waited) { timeBudget_ = TimeBudget(waited); }

 private:
  const Settings& Current() { return GetCurrentSettings().settings; }

  TimeBudget timeBudget_;
  Learned learned_;
  bool upsesDescribed_ = false;
  std::shared_ptr<const SettingsFile> current_, factory_;
  std::optional<StorageView> storage_;
  std::optional<Chassis> chassis_;
  std::optional<ExpansionUnits> expansionUnits_;
  std::optional<WebServerState> webServer_;
  std::optional<ClusterServices> clusterServices_;
  std::optional<std::vector<Interface>> interfaces_;
};

// The calling thread's request, which lasts for as long as any scope in it does. The first one
// opens it: VelaConf's for a snapshot, a platform call's own outside of one.
class RequestScope {
 public:
  RequestScope();
  RequestScope(const RequestScope&) = delete;
  RequestScope& operator=(const RequestScope&) = delete;

  Request& operator*() const { return *request_; }
  Request* operator->() const { return request_.get(); }

 private:
  std::shared_ptr<Request> request_;
};

}  // namespace linux_platform

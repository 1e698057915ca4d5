#include "platform/linux/contract/request.h"

#include "platform/linux/notes/notes.h"

namespace linux_platform {
namespace {

// Weak: a scope that ends in another thread than it began in leaves nothing behind.
thread_local constinit std::weak_ptr<Request> threadsRequest;

template <typename Value, typename Read>
const Value& ReadOnce(std::optional<Value>& value, const Read& read) {
  if (!value) value.emplace(read());
  return *value;
}

}  // namespace

RequestScope::RequestScope() : request_(threadsRequest.lock()) {
  if (!request_) threadsRequest = request_ = std::make_shared<Request>();
}

const SettingsFile& Request::GetCurrentSettings() {
  static FileMemo<SettingsFile> memo;
  if (!current_) current_ = RecallSettings(kCurrentSettings, memo);
  return *current_;
}

const SettingsFile& Request::GetFactorySettings() {
  static FileMemo<SettingsFile> memo;
  if (!factory_) factory_ = RecallSettings(kFactorySettings, memo);
  return *factory_;
}

const StorageView& Request::GetStorage() {
  if (!storage_) TellDriveNotes(storage_.emplace(ReadStorage(Current())).disks);
  return *storage_;
}

const Chassis& Request::GetChassis() {
  return ReadOnce(chassis_, [this] { return ReadChassis(Current()); });
}

const ExpansionUnits& Request::GetExpansionUnits() {
  return ReadOnce(expansionUnits_, [this] { return ReadExpansionUnits(Current()); });
}

const WebServerState& Request::GetWebServer() {
  return ReadOnce(webServer_, [this] { return ReadWebServer(Current(), timeBudget_); });
}

const ClusterServices& Request::GetClusterServices() {
  return ReadOnce(clusterServices_, [this] { return ReadClusterServices(timeBudget_); });
}

const std::vector<Interface>* Request::GetInterfaces(std::string& reason) {
  if (!interfaces_ && !ReadInterfaces(interfaces_.emplace(), reason)) interfaces_.reset();
  return interfaces_ ? &*interfaces_ : nullptr;
}

}  // namespace linux_platform

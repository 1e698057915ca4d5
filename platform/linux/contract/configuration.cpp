// The settings in force and the factory defaults, and single values of any such file. The module
// opens its settings first and closes them last: that is its request.
#include <sys/stat.h>

#include <cstring>
#include <mutex>

#include "platform/linux/base/open.h"
#include "platform/linux/base/root.h"
#include "platform/linux/contract/error.h"
#include "platform/linux/contract/popen.h"
#include "platform/linux/contract/request.h"
#include "platform/status/source_status.h"
#include "vela_conf.h"
#include "velac.h"

using namespace linux_platform;
using source_status::Source, source_status::SourceScope;

namespace {

const Settings& Report(const SettingsFile& file, SourceScope& scope) {
  if (file.state == SettingsState::Failed)
    scope.Failed("ls -l /etc/velainfo.conf /etc.defaults/velainfo.conf", "%s", file.reason.c_str());
  return file.settings;
}

// What the owner does not want watched. A word that names no source changes nothing, so it is told.
void ApplyAccepted(const Settings& settings, SourceScope& scope) {
  std::string unknown;
  for (const std::string_view word : settings.List("accept")) {
    if (const auto source = common::FindSource(word))
      source_status::Accept(*source);
    else
      unknown.append(unknown.empty() ? "" : ", ").append(word);
  }
  if (!unknown.empty())
    scope.ReadWithRemark(
        "accept takes: network configuration hardware web-server ups volumes disks "
        "external-volumes expansion-units high-availability san smart",
        "\"accept\" in %s names no source with: %s", kCurrentSettings, unknown.c_str());
}

// What a VelaConf holds: its request, which it keeps open.
struct Sources {
  explicit Sources(SourceScope& scope)
      : current(Report(request->GetCurrentSettings(), scope)),
        factory(Report(request->GetFactorySettings(), scope)) {
    ApplyAccepted(current, scope);
  }

  RequestScope request;
  const Settings &current, &factory;
  mutable std::string maxDisks = {};
  mutable std::once_flag counted = {};
};

const char* CurrentText(const void* sources, const char* key) {
  return key != nullptr ? static_cast<const Sources*>(sources)->current.Text(key) : nullptr;
}

// A model's factory defaults say how many disks it takes. Where none say so, the
// number of internal disks that are there stands in.
const char* FactoryText(const void* sources, const char* key) {
  const auto& both = *static_cast<const Sources*>(sources);
  const char* value = key != nullptr ? both.factory.Text(key) : nullptr;
  if (value != nullptr || key == nullptr || std::strcmp(key, "maxdisks") != 0) return value;
  std::call_once(both.counted, [&both] { both.maxDisks = std::to_string(VLIBCMaxDiskGet()); });
  return both.maxDisks.c_str();
}

// A request has read its own two already; any other is read into `other`.
const SettingsFile& GetSettingsFile(const char* path, Request& request, SettingsFile& other) {
  if (std::strcmp(path, kCurrentSettings) == 0) return request.GetCurrentSettings();
  if (std::strcmp(path, kFactorySettings) == 0) return request.GetFactorySettings();
  return other = ReadSettings(path);
}

const char* OrDefault(const char* value, const char* defaultValue) {
  if (value != nullptr) return value;
  return defaultValue != nullptr ? defaultValue : "";
}

bool Equal(const char* value, const char* expected) {
  return value != nullptr && expected != nullptr && std::strcmp(value, expected) == 0;
}

}  // namespace

VelaConf::VelaConf() : sources_(nullptr) {
  SourceScope scope(Source::Configuration);
  sources_ = new Sources(scope);
}

VelaConf::~VelaConf() { delete static_cast<Sources*>(sources_); }

const char* VelaConf::Info(const char* key, const char* defaultValue) const {
  return OrDefault(CurrentText(sources_, key), defaultValue);
}
const char* VelaConf::Def(const char* key, const char* defaultValue) const {
  return OrDefault(FactoryText(sources_, key), defaultValue);
}
bool VelaConf::InfoCheckValue(const char* key, const char* value, bool) const {
  return Equal(CurrentText(sources_, key), value);
}
bool VelaConf::DefCheckValue(const char* key, const char* value, bool) const {
  return Equal(FactoryText(sources_, key), value);
}

int VLIBCFileGetKeyValue(const char* path, const char* key, char* buffer, int size, int) {
  SourceScope scope(Source::Configuration);
  if (path == nullptr || key == nullptr || buffer == nullptr || size <= 0)
    return SetError(Error::BadArgument);

  const RequestScope request;
  SettingsFile other;
  const SettingsFile& file = GetSettingsFile(path, *request, other);
  if (Report(file, scope); file.state == SettingsState::Failed) return SetError(Error::FileUnread);
  const char* value = file.settings.Text(key);
  if (value == nullptr)
    return SetError(file.state == SettingsState::Missing ? Error::NoSuchFile : Error::NoSuchKey);
  const std::size_t needed = std::strlen(value) + 1;
  if (needed > static_cast<std::size_t>(size)) return SetError(Error::TooLong);
  std::memcpy(buffer, value, needed);
  return static_cast<int>(needed - 1);
}

int VLIBCFileExist(const char* path) {
  SourceScope scope(Source::Configuration);
  if (path == nullptr) return 0;
  // The module would log on every request that the tool was not started; without one it is
  // silent.
  if (std::string reason; std::strcmp(path, kSanTool) == 0 && !MayRunSanTool(reason)) {
    SourceScope(Source::San).Failed("velaiscsiep --get_service_status", "%s", reason.c_str());
    return 0;
  }
  struct stat status = {};
  const bool exists = Stat(BelowRoot(path), status) && S_ISREG(status.st_mode);
  if (!exists && std::strcmp(path, kSanTool) == 0)
    SourceScope(Source::San).Absent("%s is not installed", kSanTool);
  return exists;
}

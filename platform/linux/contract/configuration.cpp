// The settings in force and the factory defaults, and single values of any such file.
#include <sys/stat.h>

#include <cstring>
#include <memory>
#include <mutex>

#include "platform/linux/base/deadline.h"
#include "platform/linux/base/root.h"
#include "platform/linux/base/settings.h"
#include "platform/linux/contract/error.h"
#include "platform/linux/contract/expansion_units.h"
#include "platform/linux/contract/hardware.h"
#include "platform/linux/contract/popen.h"
#include "platform/linux/storage/storage_view.h"
#include "platform/status/source_status.h"
#include "vela_conf.h"
#include "velac.h"

using namespace linux_platform;
using source_status::Source, source_status::SourceScope;

namespace {

struct BothFiles {
  SharedSettings shared;
  std::unique_ptr<const Settings> current, factory;
  mutable std::string maxDisks;
  mutable std::once_flag counted;
};

const char* Current(const void* sources, const char* key) {
  return key != nullptr ? static_cast<const BothFiles*>(sources)->current->Value(key) : nullptr;
}

// A model's factory defaults say how many disks it takes. Where none say so, the
// number of internal disks that are there stands in.
const char* Factory(const void* sources, const char* key) {
  const auto& files = *static_cast<const BothFiles*>(sources);
  const char* value = key != nullptr ? files.factory->Value(key) : nullptr;
  if (value != nullptr || key == nullptr || std::strcmp(key, "maxdisks") != 0) return value;
  std::call_once(files.counted, [&files] { files.maxDisks = std::to_string(VLIBCMaxDiskGet()); });
  return files.maxDisks.c_str();
}

std::unique_ptr<const Settings> Load(const char* path, SourceScope& scope) {
  std::string text, reason;
  if (ReadSettings(path, text, reason) == SettingsState::Failed) scope.Failed("%s", reason.c_str());
  return std::make_unique<const Settings>(std::move(text));
}

const char* OrDefault(const char* value, const char* defaultValue) {
  if (value != nullptr) return value;
  return defaultValue != nullptr ? defaultValue : "";
}

bool Equal(const char* value, const char* expected) {
  return value != nullptr && expected != nullptr && std::strcmp(value, expected) == 0;
}

}  // namespace

// Opening the settings is the first thing that a request does: what an earlier one of
// this thread has seen and waited for does not count any more.
VelaConf::VelaConf() : sources_(nullptr) {
  SourceScope scope(Source::Configuration);
  NewRequest();
  ForgetStorage();
  ForgetHardware();
  ForgetUnits();
  auto files = std::make_unique<BothFiles>();
  files->current = Load(kCurrentSettings, scope);
  files->factory = Load(kFactorySettings, scope);
  sources_ = files.release();
}

VelaConf::~VelaConf() { delete static_cast<BothFiles*>(sources_); }

const char* VelaConf::Info(const char* key, const char* defaultValue) const {
  return OrDefault(Current(sources_, key), defaultValue);
}
const char* VelaConf::Def(const char* key, const char* defaultValue) const {
  return OrDefault(Factory(sources_, key), defaultValue);
}
bool VelaConf::InfoCheckValue(const char* key, const char* value, bool) const {
  return Equal(Current(sources_, key), value);
}
bool VelaConf::DefCheckValue(const char* key, const char* value, bool) const {
  return Equal(Factory(sources_, key), value);
}

int VLIBCFileGetKeyValue(const char* path, const char* key, char* buffer, int size, int) {
  SourceScope scope(Source::Configuration);
  if (path == nullptr || key == nullptr || buffer == nullptr || size <= 0)
    return SetError(Error::BadArgument), -1;

  std::string text, reason;
  const SettingsState state = ReadSettings(path, text, reason);
  if (state == SettingsState::Failed) {
    scope.Failed("%s", reason.c_str());
    return SetError(Error::FileUnread), -1;
  }
  const bool missing = state == SettingsState::Missing && text.empty();
  const Settings settings(std::move(text));
  const char* value = settings.Value(key);
  if (value == nullptr) return SetError(missing ? Error::NoSuchFile : Error::NoSuchKey), -1;
  const std::size_t needed = std::strlen(value) + 1;
  if (needed > static_cast<std::size_t>(size)) return SetError(Error::TooLong), -1;
  std::memcpy(buffer, value, needed);
  return static_cast<int>(needed - 1);
}

int VLIBCFileExist(const char* path) {
  SourceScope scope(Source::Configuration);
  if (path == nullptr) return 0;
  // The module would log on every request that the tool was not started; without one it is
  // silent.
  if (std::string reason; std::strcmp(path, kSanTool) == 0 && !MayRunSanTool(reason)) {
    SourceScope(Source::San).Failed("%s", reason.c_str());
    return 0;
  }
  struct stat status = {};
  return stat(BelowRoot(path).c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

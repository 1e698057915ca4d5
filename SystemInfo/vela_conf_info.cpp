#include "SystemInfo/vela_conf_info.h"

#include <optional>

#include "common/number.h"
#include "common/text.h"
#include "module/base/log.h"

namespace VELA::SystemHealth {
namespace {

constexpr LogPosition kNotADouble{"SystemInfo/vela_conf_info", 35};

}  // namespace

std::string VelaConfInfo::Info(const std::string& key, const std::string& defaultValue) const {
  return common::OrEmpty(conf_.Info(key.c_str(), defaultValue.c_str()));
}

bool VelaConfInfo::InfoCheckValue(const std::string& key, const std::string& value,
                                  bool flag) const {
  return conf_.InfoCheckValue(key.c_str(), value.c_str(), flag);
}

double VelaConfInfo::InfoDouble(const std::string& key, double defaultValue) const {
  return InfoDouble(key.c_str(), defaultValue);
}

double VelaConfInfo::InfoDouble(const char* key, double defaultValue) const {
  const std::string value = common::OrEmpty(conf_.Info(key, ""));
  if (value.empty()) return defaultValue;
  const std::optional<double> number = common::ToDouble(value);
  if (!number)
    LogError(kNotADouble, "Failed to convert string [%s] to double, use default.", value.c_str());
  return number.value_or(defaultValue);
}

double VelaConfInfo::PeekDouble(const char* key, double defaultValue) const {
  return common::ToDouble(common::OrEmpty(conf_.Info(key, ""))).value_or(defaultValue);
}

std::string VelaConfInfo::Def(const std::string& key, const std::string& defaultValue) const {
  return common::OrEmpty(conf_.Def(key.c_str(), defaultValue.c_str()));
}

bool VelaConfInfo::DefCheckValue(const std::string& key, const std::string& value,
                                 bool flag) const {
  return conf_.DefCheckValue(key.c_str(), value.c_str(), flag);
}

}  // namespace VELA::SystemHealth

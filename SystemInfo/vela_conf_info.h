// The appliance's configuration: current settings and factory defaults, read on demand.
#pragma once

#include <string>

#include <vela_conf.h>

#include "SystemInfo/abstract_info.h"

namespace VELA::SystemHealth {

class VelaConfInfo : public AbstractInfo {
 public:
  void Init() override {}  // nothing is preloaded

  // The current settings.
  std::string Info(const std::string& key, const std::string& defaultValue) const;
  bool InfoCheckValue(const std::string& key, const std::string& value, bool flag) const;
  // The leading number of the value, by the rules of the "C" locale. An absent or empty
  // value gives `defaultValue`; so does one that is no double, which is logged.
  double InfoDouble(const std::string& key, double defaultValue) const;
  double InfoDouble(const char* key, double defaultValue) const;
  // The same without the line in the log, for who asks what was asked before.
  double PeekDouble(const char* key, double defaultValue) const;

  // The factory defaults.
  std::string Def(const std::string& key, const std::string& defaultValue) const;
  bool DefCheckValue(const std::string& key, const std::string& value, bool flag) const;

 private:
  VelaConf conf_;
};

}  // namespace VELA::SystemHealth

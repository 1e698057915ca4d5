// The base of all collectors.
#pragma once

namespace VELA::SystemHealth {

class AbstractInfo {
 public:
  AbstractInfo() = default;
  AbstractInfo(const AbstractInfo&) = delete;
  AbstractInfo& operator=(const AbstractInfo&) = delete;
  virtual ~AbstractInfo() = default;

  // Gathers the collector's data. A source that fails is logged and leaves its values
  // at their defaults.
  virtual void Init() = 0;
};

}  // namespace VELA::SystemHealth

// The uninterruptible power supply.
#pragma once

#include <cstdint>

#include "SystemInfo/abstract_info.h"

namespace VELA::SystemHealth {

struct UpsInfo {
  std::int32_t status = 0;  // 2: on battery, 3: battery low
  bool upsEnabled = false;
  bool upsConnected = false;
};

class UpsStatusInfo : public AbstractInfo {
 public:
  void Init() override;

  const UpsInfo& GetUpsInfo() const { return ups_; }

 private:
  void LoadUpsStatus();

  UpsInfo ups_;
};

}  // namespace VELA::SystemHealth

// The attached expansion units.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "SystemInfo/abstract_info.h"

namespace VELA::SystemHealth {

class EboxStatusInfo : public AbstractInfo {
 public:
  struct EboxStatus {
    std::string name = "Expansion Unit";
    bool fanFail = false;
    std::array<bool, 2> powerSupplyOk = {true, true};
  };

  void Init() override;

  const std::vector<EboxStatus>& GetEboxes() const { return eboxes_; }

 private:
  void LoadEboxStatus();

  std::vector<EboxStatus> eboxes_;
};

}  // namespace VELA::SystemHealth

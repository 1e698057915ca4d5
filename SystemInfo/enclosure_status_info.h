// Storage enclosures. No source for them exists yet: the list is always empty.
#pragma once

#include <vector>

#include "SystemInfo/abstract_info.h"

namespace VELA::SystemHealth {

struct EnclosureStatus {};

class EnclosureStatusInfo : public AbstractInfo {
 public:
  void Init() override;

  const std::vector<EnclosureStatus>& GetEnclosureStatus() const { return enclosures_; }

 private:
  void LoadEnclosuresStatusInfo();

  std::vector<EnclosureStatus> enclosures_;
};

}  // namespace VELA::SystemHealth

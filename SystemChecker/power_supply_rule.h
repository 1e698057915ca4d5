// The finding that the machine and its expansion units share.
#pragma once

#include <string>
#include <vector>

#include "SystemChecker/checker_rule.h"

namespace VELA::SystemHealth {

// `failed` holds one text for each failed supply, with "{0}" where the localised word for
// a power supply belongs: "{0}1", or "RX-1{0}2" for a unit's. Must not be empty.
CheckerRule PowerSupplyRule(const std::string& id, const std::vector<std::string>& failed);

}  // namespace VELA::SystemHealth

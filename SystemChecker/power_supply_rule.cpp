#include "SystemChecker/power_supply_rule.h"

#include <boost/algorithm/string/join.hpp>

namespace VELA::SystemHealth {

CheckerRule PowerSupplyRule(const std::string& id, const std::vector<std::string>& failed) {
  return CheckerRule(
      CheckerRuleType::Warning, 3.9, id,
      Description::AdditionalDescription(boost::algorithm::join(failed, ", ") + "{1} {2}",
                                         {{"system", "power_supply"},
                                          {"common", "colon"},
                                          {"common", "enclosure_status_abnormal"}}));
}

}  // namespace VELA::SystemHealth

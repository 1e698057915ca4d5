#include "platform/linux/systemd_units.h"

namespace vela::linuxplatform {

UnitsAnswer ReadUnits(const std::vector<std::string>&, std::vector<UnitState>&,
                      std::string& reason) {
  reason = "this platform was built without sd-bus";
  return UnitsAnswer::NoSystemd;
}

}  // namespace vela::linuxplatform

#include "SystemChecker/checkers.h"

namespace VELA::SystemHealth {

// No source fills the enclosure list, and no rules are settled for it: nothing to report.
std::optional<CheckerRule> EnclosureStatusChecker(const SystemInfoHandler&) { return std::nullopt; }

}  // namespace VELA::SystemHealth

// The document that "get" answers with.
#pragma once

#include <json/value.h>

#include "SystemChecker/checker_rule.h"

namespace VELA::SystemHealth {

// {"rule", "hostname" ("" when it cannot be read), "uptime" ("26:3:4": hours, minutes and
// seconds since boot; "" when it cannot be read), "interfaces": [{"id", "ip", "type"}]}.
// What cannot be read is logged.
Json::Value HealthDocument(const CheckerRule& rule);

}  // namespace VELA::SystemHealth

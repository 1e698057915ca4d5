// Error answers: application/problem+json (RFC 9457).
#pragma once

#include <string>
#include <vector>

#include "host/http/http.h"

namespace host {

// `available` names what the caller could ask for instead; left out when empty.
HttpAnswer Problem(unsigned status, const char* title, const std::string& detail,
                   const std::vector<std::string>& available = {});

}  // namespace host

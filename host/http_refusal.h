// Which requests are served at all.
#pragma once

#include <optional>

#include "host/host_names.h"
#include "host/http.h"

struct MHD_Connection;

namespace vela::host {

// From the head of a request; none when it is served.
std::optional<HttpAnswer> Refusal(MHD_Connection* connection, const char* method,
                                  const HostNames& names);

}  // namespace vela::host

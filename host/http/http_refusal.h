// Which requests are served at all.
#pragma once

#include <optional>

#include "host/http/allowed_hosts.h"
#include "host/http/http.h"

struct MHD_Connection;

namespace host {

// From the head of a request; none when it is served.
std::optional<HttpAnswer> Refusal(MHD_Connection* connection, const char* method,
                                  const HostNames& names);

}  // namespace host

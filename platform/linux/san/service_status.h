// The document that the SAN tool prints.
#pragma once

#include <string>

#include <json/value.h>

namespace linux_platform {

// {"low_capacity_write_on": bool,
//  "luns": [{"name", "status", "location"}],           location "" for block devices;
//      status "Unhealthy", "unavailabling", "low_space" or "normal"
//  "volumes": [{"path", "free_size", "total_size"}]}   bytes, as df counts them
// Complete as far as can be read; `trouble` says in words what could not.
Json::Value ReadServiceStatus(std::string& trouble);

}  // namespace linux_platform

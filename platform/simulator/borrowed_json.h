// JSON that points to text owned elsewhere.
#pragma once

#include <json/value.h>

namespace vela::simulator {

// A copy whose keys and texts are those of `source`, which must outlive it: a simulated
// machine answers without copying its texts each time. Texts that hold a NUL are copied.
Json::Value Borrowed(const Json::Value& source);

}  // namespace vela::simulator

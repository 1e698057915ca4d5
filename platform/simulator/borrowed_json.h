// JSON that points to text owned elsewhere.
#pragma once

#include <functional>
#include <set>
#include <string>

#include <json/value.h>

namespace simulator {

// Each text once, at a place that stays.
using Texts = std::set<std::string, std::less<>>;

// A copy whose keys and texts stand in `texts`, which must outlive it: a simulated machine
// answers without copying its texts each time. Texts that hold a NUL are copied.
Json::Value Borrow(const Json::Value& source, Texts& texts);

}  // namespace simulator

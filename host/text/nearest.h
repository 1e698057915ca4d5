// What somebody meant who mistyped a name.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace host {

// The name that is at most two slips away from `wanted`, the nearest: a letter left out, added or
// replaced is one, two letters swapped are two. Empty when none is that near.
std::string FindNearest(const std::vector<std::string>& names, std::string_view wanted);

}  // namespace host

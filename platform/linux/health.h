// How an internal storage object is, worst last.
#pragma once

#include <algorithm>

namespace vela::linuxplatform {

enum class Health { Normal, Abnormal, Danger };

inline Health Worse(Health a, Health b) { return std::max(a, b); }

}  // namespace vela::linuxplatform

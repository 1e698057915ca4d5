// How an internal storage object is, worst last.
#pragma once

#include <algorithm>

namespace linux_platform {

enum class Health { Normal, Abnormal, Danger };

inline Health Worse(Health a, Health b) { return std::max(a, b); }

}  // namespace linux_platform

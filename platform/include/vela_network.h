// The appliance's network type names.
#pragma once

#pragma GCC visibility push(default)

namespace vela::network {

int GetIfType(const char* name, void* detail);
const char* GetTypeString(int type);  // "lan", "wifi", "bond", ...

}  // namespace vela::network

#pragma GCC visibility pop

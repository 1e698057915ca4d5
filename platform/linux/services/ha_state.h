// How a high-availability pair is doing. Pure functions over what its tools say.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace linux_platform {

// In the order of severity.
enum class HaState { Normal, Warning, EmptyPassive, Danger };

const char* NameHaState(HaState state);  // "normal", "warning", "empty_passive", "danger"
std::optional<HaState> ParseHaState(std::string_view text);

// The state that the XML of `crm_mon -1 --output-as=xml` tells; none, with the reason in
// words, when it is not such a document or says that crm_mon failed.
std::optional<HaState> ParseClusterState(std::string_view xml, std::string& reason);

// The worst state of the devices in /proc/drbd; none when it lists no device that is in
// use. Only DRBD 8 lists any; `isVersion8` tells.
std::optional<HaState> ParseDrbdState(std::string_view text, bool& isVersion8);

}  // namespace linux_platform

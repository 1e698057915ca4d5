#include "platform/linux/chassis/sensor_chips.h"

#include <algorithm>
#include <array>

namespace linux_platform {
namespace {

constexpr std::array<std::string_view, 17> kOthers = {
    "drivetemp", "nvme",   "w1_",    "amdgpu", "nouveau", "radeon", "i915", "xe",    "iwlwifi",
    "ath10k",    "ath11k", "ath12k", "mt7",    "rtw",     "BAT",    "ADP",  "hidpp",
};

// Power supplies by their drivers' names in the kernel's drivers/hwmon/pmbus.
constexpr std::array<std::string_view, 11> kSupplies = {
    "cffps", "dps920ab", "dps1900", "pfe1100", "pfe3000", "ipsps1",
    "crps",  "fsp",      "ym2151",  "yh5151",  "acbel",
};

constexpr std::array<std::string_view, 4> kFanWise = {"pmbus", "gpio_fan", "max31785", "ucd90"};

template <std::size_t N>
bool BeginsWithOne(std::string_view text, const std::array<std::string_view, N>& beginnings) {
  return std::ranges::any_of(beginnings,
                             [text](std::string_view each) { return text.starts_with(each); });
}

}  // namespace

bool IsChassisChip(std::string_view prefix) { return !BeginsWithOne(prefix, kOthers); }

bool IsSupply(std::string_view prefix) { return BeginsWithOne(prefix, kSupplies); }

bool KnowsItsFans(std::string_view prefix) {
  return IsSupply(prefix) || BeginsWithOne(prefix, kFanWise);
}

}  // namespace linux_platform

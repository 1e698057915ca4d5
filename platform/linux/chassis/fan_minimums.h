// Which fans the configuration of libsensors gives a minimum: that one was set on purpose, where a
// board may begin with any.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace linux_platform {

struct FanMinimum {
  std::string chip;     // the pattern that the block is for: "nct6779-*"
  std::string feature;  // "fan2"
};

// Those of the lines "set fanN_min VALUE" in the chip blocks of `text`, one for each pattern of
// the block.
std::vector<FanMinimum> ParseFanMinimums(std::string_view text);

}  // namespace linux_platform

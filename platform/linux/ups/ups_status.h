// What a UPS's words mean. Pure functions.
#pragma once

#include <cstdint>
#include <string_view>

namespace linux_platform {

enum class UpsState : std::int32_t { Unknown = 0, OnMains = 1, OnBattery = 2, BatteryLow = 3 };

// The state that NUT's "ups.status" stands for, a set of words in any order. Unknown: no word
// tells whether the mains are there.
UpsState JudgeUpsWords(std::string_view words);

// Whether `word` is one of them: "RB".
bool HasUpsWord(std::string_view words, std::string_view word);

// Takes the first word off `rest`; empty at the end. Quotes around a word come off.
std::string_view NextNutWord(std::string_view& rest);

}  // namespace linux_platform

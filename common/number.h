// Numbers in text, by the rules of the "C" locale whatever the process set.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace common {

// The leading number, as strtod(3) reads it; none when there is none or it is out of range.
std::optional<double> ToDouble(const std::string& text);

// Fractions dropped; none for a number that is negative, not finite or beyond 64 bits.
std::optional<std::uint64_t> ToSize(double number);

}  // namespace common

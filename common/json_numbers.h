// The JSON library reads fractions through a stream, by the rules of the process's C++
// locale: where that writes a comma, 1.5 is 1, or no number at all.
#pragma once

#include <string>
#include <string_view>

namespace common {

// Whether the process's C++ locale writes fractions as JSON does.
bool LocaleReadsFractions();

// The document with its numbers, those in texts apart, as the whole numbers that any
// locale reads: fractions dropped, and -1 for what is no size.
std::string WithWholeNumbers(std::string_view document);

}  // namespace common

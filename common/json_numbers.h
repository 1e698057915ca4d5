// The JSON library reads fractions through a stream, by the rules of the process's C++
// locale: where that writes a comma, 1.5 is 1, or no number at all.
#pragma once

#include <string>
#include <string_view>

namespace common {

// Whether the process's C++ locale writes fractions as JSON does.
bool LocaleReadsFractions();

// The document with its numbers, those in texts apart, as any locale reads them: "15e-1" for
// "1.5". The same numbers, and a document exactly where it was one.
std::string WithoutDecimalPoints(std::string_view document);

}  // namespace common

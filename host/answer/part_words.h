// What is known of a part, each piece in the words of one language.
#pragma once

#include <string>
#include <vector>

#include "host/answer/parts.h"
#include "host/text/texts.h"

namespace host {

// "Fans": what stands above several of that kind.
std::string NameGroup(source_status::PartKind kind, const Texts& texts);
// "needs attention".
std::string NameState(const VELAPart& part, const Texts& texts);
// "1 180 rpm", "46 °C"; empty where it has none.
std::string FormatReading(const VELAPart& part, const Texts& texts);
std::string FormatMark(const VELAPart& part, const Texts& texts);
// "10.2 TiB of 21.8 TiB (47 %)"; empty of what is no volume.
std::string FormatUse(const VELAPart& part, const Texts& texts);

// Not well: there is something to be done about it.
bool IsTroubled(const VELAPart& part);

}  // namespace host

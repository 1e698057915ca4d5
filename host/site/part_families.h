// The machine's parts as metrics: volumes, disks, temperatures, UPS.
#pragma once

#include "host/answer/complete_answer.h"
#include "host/site/series.h"
#include "host/text/texts.h"

namespace host {

// A platform that tells of no disks has no count of them: nobody looked.
void AddPartFamilies(Series& series, const CompleteAnswer& complete, const Texts& texts);

}  // namespace host

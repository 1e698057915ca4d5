// Figures behind a monitoring plug-in's line, in the form of the Monitoring Plugins' guidelines:
// 'label'=value[unit];[warn];[crit];[min];[max]
#pragma once

#include <string>

#include "host/answer/complete_answer.h"

namespace host {

// How many findings there are, how many sources were not read and how many disks are not well; used
// bytes of volumes, temperatures, charges of UPSes, each with its mark. At most 20 of a kind: those
// who read it give a line little room. No two labels are equal, and no language changes them, since
// graphs are kept by label.
std::string FormatPerformanceData(const CompleteAnswer& complete);

}  // namespace host

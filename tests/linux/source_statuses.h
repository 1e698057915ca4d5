// What the sources of the calling thread say of themselves, by name.
#pragma once

#include <map>
#include <string>

#include "platform/status/source_status.h"

struct SourceReport {
  int state = 0;  // 0 absent, 1 read, 2 failed
  std::string reason;
};

inline std::map<std::string, SourceReport> SourceReports() {
  VELASourceReport reports[16];
  const int count = VELAPlatformSources(reports, 16);
  std::map<std::string, SourceReport> all;
  for (int i = 0; i < count; ++i) all[reports[i].name] = {reports[i].state, reports[i].reason};
  return all;
}

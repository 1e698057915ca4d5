// What the sources of the calling thread say of themselves, by name.
#pragma once

#include <map>
#include <string>

#include "platform/status/notes.h"
#include "platform/status/source_status.h"

struct SourceReport {
  int state = 0;       // of source_status::State
  std::string reason;  // the first

  std::string Name() const { return source_status::NameState(source_status::State{state}); }
};

inline std::map<std::string, SourceReport> SourceReports() {
  VELASourceReport reports[16];
  const int count = VELAPlatformSources(reports, 16);
  std::map<std::string, SourceReport> all;
  for (int i = 0; i < count; ++i)
    all[reports[i].name] = {static_cast<int>(reports[i].state), reports[i].reasons[0].text};
  return all;
}

// What the calling thread was told to note: "paths_lost a 1/2 [multipath -ll a]", each between
// `before` and `after`.
inline std::string ToldNotes(const std::string& before, const std::string& after = "") {
  VELANote notes[kVELANotes];
  std::string all;
  for (int i = 0, count = source_status::CopyNotes(notes, kVELANotes); i < count; ++i)
    all += before + notes[i].key + " " + notes[i].part + " " + std::to_string(notes[i].figure) +
           "/" + std::to_string(notes[i].mark) + " [" + notes[i].command + "]" + after;
  return all;
}

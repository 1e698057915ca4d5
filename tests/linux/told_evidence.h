// The evidence of this thread's request, as a test holds it: "fan_stopped CPU Fan 0/600", each
// between blanks and "; ".
#pragma once

#include <string>

#include "platform/status/evidence.h"

inline std::string ToldEvidence() {
  std::string all;
  VELAPlatformEvidence(
      [](void* taker, const VELAEvidence* record) {
        std::string& told = *static_cast<std::string*>(taker);
        told += (told.empty() ? "" : "; ") + std::string(record->key) + " " + record->part + " " +
                std::to_string(record->figure) + "/" + std::to_string(record->mark);
        if (record->other != 0) told += "/" + std::to_string(record->other);
        if (*record->words != '\0') told += " '" + std::string(record->words) + "'";
        if (*record->path != '\0') told += " " + std::string(record->path);
        if (record->since != 0) told += " since " + std::to_string(record->since);
        told += " [" + std::string(record->show) + "]";
        for (const char* command : record->mend)
          if (*command != '\0') told += " [" + std::string(command) + "]";
      },
      &all);
  return all;
}

// Every finding that can occur.
#pragma once

#include <vector>

#include "host/answer/answer.h"

namespace host {

struct CatalogueEntry {
  double priority;
  FindingType type;
  const char* id;
  const char* textKey;
  const char* check;  // which makes it; "" of the healthy default
};

// The most urgent first; the healthy default is the last.
const std::vector<CatalogueEntry>& Catalogue();

}  // namespace host

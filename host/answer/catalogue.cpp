#include "host/answer/catalogue.h"

#include "SystemChecker/findings.h"

namespace host {

const std::vector<CatalogueEntry>& Catalogue() {
  static const std::vector<CatalogueEntry> entries = [] {
    std::vector<CatalogueEntry> all;
    for (const VELA::SystemHealth::Finding& finding : VELA::SystemHealth::kFindings) {
      const char* check = finding.check ? FindCheck(*finding.check).name : "";
      all.push_back({finding.priority, static_cast<FindingType>(finding.type), finding.id,
                     finding.textKey, check});
    }
    return all;
  }();
  return entries;
}

}  // namespace host

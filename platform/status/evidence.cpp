#include "platform/status/evidence.h"

#include "common/text.h"

namespace source_status {

void AddRelated(VELAEvidence& evidence, std::string_view relation, std::string_view part) {
  if (evidence.relatedCount == kVELARelatedParts) {
    ++evidence.moreRelated;
    return;
  }
  VELARelatedPart& related = evidence.related[evidence.relatedCount++];
  common::FillField(related.relation, relation);
  common::FillField(related.part, part);
}

}  // namespace source_status

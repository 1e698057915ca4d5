// The parts behind the names of an answer, for the host.
#include "platform/linux/parts/parts.h"

#include "platform/linux/contract/request.h"

using namespace linux_platform;

void VELAPlatformParts(VELATakePart take, void* taker) {
  const RequestScope request;
  const TakePart each = [take, taker](const VELAPart& part) { take(taker, &part); };
  TellStorageParts({request->GetStorage(), request->GetExpansionUnits(),
                    request->GetCurrentSettings().settings, request->GetFactorySettings().settings},
                   each);
  TellChassisParts(request->GetChassis(), each);
  TellUnitParts(request->GetExpansionUnits(), each);
  TellNodeParts(request->GetLearned().cluster, each);
  TellUpsParts(request->GetUpses(), each);
  std::string reason;  // an interface that nobody can name is a source's to tell
  if (const auto* interfaces = request->GetInterfaces(reason))
    TellInterfaceParts(*interfaces, each);
}

// Why the last answer was what it was, for the host.
#include "platform/linux/evidence/evidence.h"

#include "platform/linux/contract/request.h"

using namespace linux_platform;

void VELAPlatformEvidence(VELATakeEvidence take, void* taker) {
  const RequestScope request;
  const TakeEvidence each = [take, taker](const VELAEvidence& record) { take(taker, &record); };
  const StorageView& storage = request->GetStorage();
  TellStorageEvidence(storage, each);
  TellDiskEvidence(storage, each);
  const Settings& settings = request->GetCurrentSettings().settings;
  TellVolumeEvidence(storage, settings, each);
  TellExternalEvidence(storage, settings, each);
  TellChassisEvidence(request->GetChassis(), each);
  TellUnitEvidence(request->GetExpansionUnits(), each);
  TellWebServerEvidence(request->GetWebServer(), each);
  TellClusterEvidence(request->GetClusterServices(), each);
}

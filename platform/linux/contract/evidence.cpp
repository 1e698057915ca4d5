// Why the last answer was what it was, for the host.
#include "platform/linux/evidence/evidence.h"

#include <algorithm>

#include "common/json_reader.h"
#include "platform/linux/contract/request.h"
#include "platform/linux/ups/ups_status.h"

using namespace linux_platform;

namespace {

// The file that the module itself reads, which is not below the platform's root.
constexpr const char* kScanResult = "/var/lib/securityscan/systemResult.json";

Json::Value ReadScanResult() {
  Json::Value result;
  common::ReadJsonFile(kScanResult, result);
  return result;
}

// Only such a one is asked for more.
bool IsOnBattery(const std::vector<HeardUps>& upses) {
  return std::ranges::any_of(
      upses, [](const HeardUps& ups) { return JudgeUpsWords(ups.words) >= UpsState::OnBattery; });
}

}  // namespace

void VELAPlatformEvidence(VELATakeEvidence take, void* taker) {
  const RequestScope request;
  const TakeEvidence each = [take, taker](const VELAEvidence& record) { take(taker, &record); };
  const Learned& learned = request->GetLearned();
  const StorageView& storage = request->GetStorage();
  TellStorageEvidence(storage, each);
  TellDiskEvidence(storage, each);
  const Settings& settings = request->GetCurrentSettings().settings;
  TellVolumeEvidence(storage, settings, each);
  TellExternalEvidence(storage, settings, each);
  TellScanEvidence(ReadScanResult(), each);
  TellChassisEvidence(request->GetChassis(), each);
  TellUnitEvidence(request->GetExpansionUnits(), each);
  if (IsOnBattery(learned.upses)) TellUpsEvidence(request->GetUpses(), each);
  if (learned.refused)
    TellWebServerEvidence(request->GetWebServer(), *learned.refused, request->GetTimeBudget(),
                          each);
  TellClusterEvidence(learned.cluster.causes, each);
  TellClusterEvidence(learned.mirrors, each);
}

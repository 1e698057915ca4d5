// The security scan, by the result that it left: vela-lynis-result's, or another's.
#include <algorithm>
#include <string>

#include "common/json_reader.h"
#include "common/text.h"
#include "platform/linux/base/snapshot.h"
#include "platform/linux/evidence/cause.h"

namespace linux_platform {
namespace {

constexpr std::size_t kMostTests = 8;

VELAEvidence MakeRecord(const char* key, const std::string& part, const std::string& words,
                        const std::string& show) {
  VELAEvidence record = MakeEvidence(key, kSystemStatus, part);
  common::FillField(record.words, CutPeriod(words));
  SetShow(record, show);
  return record;
}

// "AUTH-9204: Multiple users with UID 0 found in passwd file"; another's words may be any.
VELAEvidence DescribeTest(const std::string& reason) {
  const std::size_t colon = reason.find(": ");
  const std::string test = reason.substr(0, colon);
  if (colon == reason.npos || test.find(' ') != test.npos)
    return MakeRecord("scan_reason", "", reason, "lynis audit system");
  return MakeRecord("scan_test", test, reason.substr(colon + 2),
                    WriteCommand("lynis show details {}", {test}));
}

struct Packages {
  std::int64_t count = 0, since = 0;
  std::string names;
};

Packages ListPackages(const Json::Value& result) {
  Packages packages;
  const Json::Value* times = common::FindMember(result, "vulnerableSince");
  if (times == nullptr || !times->isObject()) return packages;
  for (const std::string& name : times->getMemberNames()) {
    const std::int64_t since = NumberMember(*times, name.c_str());
    if (packages.count == 0 || since < packages.since) packages.since = since;
    packages.names += (packages.count == 0 ? "" : ", ") + name;
    ++packages.count;
  }
  return packages;
}

}  // namespace

void TellScanEvidence(const Json::Value& result, const TakeEvidence& take) {
  if (common::TextMember(result, "sysStatus") != "danger") return;
  const bool namesDangers = common::FindMember(result, "dangers") != nullptr;
  const Json::Value& reasons = ListMember(result, namesDangers ? "dangers" : "reasons");
  bool told = false;
  for (Json::ArrayIndex i = 0; i < reasons.size() && i < kMostTests; ++i) {
    if (!reasons[i].isString()) continue;
    take(DescribeTest(reasons[i].asString()));
    told = true;
  }
  const Packages packages = ListPackages(result);
  if (packages.count > 0) {
    VELAEvidence record = MakeRecord("scan_packages", "", packages.names, "apt list --upgradable");
    record.figure = packages.count;
    record.since = packages.since;
    SetMend(record, {"apt update", "apt upgrade"});
    take(record);
  } else if (!told) {
    take(MakeRecord("scan_unexplained", "", "", "lynis audit system"));
  }
}

}  // namespace linux_platform

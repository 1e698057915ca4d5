#include "platform/simulator/machine.h"

#include <algorithm>

namespace simulator {
namespace {

constexpr std::uint64_t kGiB = 1U << 30U;

thread_local Machine* entered = nullptr;

Volume HealthyVolume(int number) {
  const std::string digit = std::to_string(number);
  return {.path = "/volume" + digit,
          .spaceId = "volume_" + digit,
          .used = 1200 * kGiB,
          .total = 3600 * kGiB,
          .inodes = 240'000'000,
          .freeInodes = 230'000'000};
}

}  // namespace

DiskList& DiskList::operator=(const DiskList& other) {
  if (this == &other) return *this;
  Clear();
  for (const Json::Value& disk : other.disks_) Append(disk);
  return *this;
}

void DiskList::Clear() {
  disks_.clear();
  texts_.clear();
}

void DiskList::Append(const Json::Value& disk) { disks_.append(Borrow(disk, texts_)); }

Machine::Machine()
    : interfaces{{"eth0", "192.168.1.20"},
                 {"eth1", "192.168.1.21"},
                 {"eth2", "10.0.0.20"},
                 {"bond0", "fd00::20", "bond"}},
      defaults{{"maxdisks", "8"}, {"supportsystempwarning", "yes"}},
      usb{{.name = "usbshare1", .total = 64 * kGiB, .free = 40 * kGiB},
          {.name = "usbshare2", .total = 2000 * kGiB, .free = 900 * kGiB}} {
  securityScan = R"({"sysStatus": "safe"})";
  for (int number = 1; number <= 4; ++number) volumes.push_back(HealthyVolume(number));
  for (int number = 1; number <= 8; ++number)
    disks.Append(MakeDisk("Disk " + std::to_string(number), "normal",
                          "volume_" + std::to_string((number + 1) / 2)));
}

bool IsNamedLikeACard(std::string_view volume) { return volume.starts_with("sdshare"); }

Json::Value MakeDisk(const std::string& name, const std::string& status,
                     const std::string& usedBy) {
  Json::Value disk(Json::objectValue);
  disk["name"] = name;
  disk["status"] = status;
  disk["overview_status"] = "normal";
  disk["used_by"] = usedBy;
  return disk;
}

std::optional<source_status::State> FindState(std::string_view name) {
  const auto found = std::ranges::find(source_status::kStateNames, name, [](const auto& each) {
    return std::string_view(each.name);
  });
  if (found == source_status::kStateNames.end()) return std::nullopt;
  return found->state;
}

void ReportStatus(source_status::Source source, const StatedStatus& stated) {
  using source_status::State;
  const State state = FindState(stated.state).value_or(State::Failed);
  if (state == State::NotAsked) return;
  if (state == State::Read && stated.reason.empty()) return source_status::SayRead(source);
  source_status::Say(source, state, stated.remedy.c_str(), "%s", stated.reason.c_str());
  for (const auto& [reason, remedy] : stated.also)
    source_status::Say(source, state, remedy.c_str(), "%s", reason.c_str());
}

Machine& Simulated() {
  static Machine process;
  return entered != nullptr ? *entered : process;
}

void Enter(Machine* machine) { entered = machine; }

}  // namespace simulator

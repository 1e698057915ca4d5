#include "platform/linux/storage/zfs.h"

#include <array>
#include <chrono>
#include <thread>

#include "platform/linux/base/root.h"
#include "platform/linux/base/sysfs.h"

namespace linux_platform {
namespace {

constexpr const char* kPools = "/proc/spl/kstat/zfs/";

Health JudgeState(const std::string& state) {
  constexpr std::array<std::string_view, 4> kLost = {"FAULTED", "UNAVAIL", "REMOVED", "SUSPENDED"};
  if (state.empty() || state == "ONLINE") return Health::Normal;
  return std::ranges::find(kLost, state) != kLost.end() ? Health::Danger : Health::Abnormal;
}

}  // namespace

std::vector<std::string> ListZpools() {
  // The module's own statistics lie beside the pools, as files.
  std::vector<std::string> pools = NamesIn(BelowRoot(kPools));
  std::erase_if(pools, [](const std::string& name) {
    return !PathExists(BelowRoot(kPools, name, "/state"));
  });
  return pools;
}

Health ReadZpool(const std::string& pool) {
  const std::string state = BelowRoot(kPools, pool, "/state");
  Health health = JudgeState(Attribute(state));
  if (health != Health::Normal) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    health = JudgeState(Attribute(state));
  }
  const bool recorded = PathExists(BelowRoot("/var/lib/vela-platform/zfs/", pool));
  return recorded ? Worse(health, Health::Abnormal) : health;
}

Trouble MissZed() {
  const std::string pid = Attribute(BelowRoot("/run/zed.pid"));
  if (ToNumber(pid) && Attribute(BelowRoot("/proc/", pid, "/comm")) == "zed") return {};
  return {"nobody hears of read errors of ZFS pools: zed does not run",
          "systemctl enable --now zfs-zed"};
}

}  // namespace linux_platform

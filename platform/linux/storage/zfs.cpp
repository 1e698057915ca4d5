#include "platform/linux/storage/zfs.h"

#include <array>
#include <chrono>
#include <thread>

#include "platform/linux/base/file_memo.h"
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

std::vector<std::string> ListMissingZpools(std::vector<Trouble>& troubles) {
  struct Table {
    std::vector<std::string> pools;
    Trouble unread;
  };
  static FileMemo<Table> memo;
  constexpr const char* kFile = "/etc/zfs/zpool.cache";
  const auto cache =
      memo.Of(BelowRoot(kFile), std::size_t{4} << 20, [](ReadResult read, const std::string& text) {
        return Table{ParseZpoolCache(text), MissTable(kFile, read)};
      });
  AddTrouble(cache->unread, troubles);
  std::vector<std::string> pools = cache->pools;
  std::erase_if(
      pools, [](const std::string& name) { return PathExists(BelowRoot(kPools, name, "/state")); });
  return pools;
}

// Four bytes that say how it is packed, a version and flags; then a pair for each pool: its length
// packed and in memory, the name's length, the name, and what this does not need. A length of 0
// ends it.
std::vector<std::string> ParseZpoolCache(const std::string& text) {
  const std::string_view bytes = text;
  constexpr std::size_t kHeader = 12, kName = 12;
  const auto number = [&bytes](std::size_t at) {
    std::size_t value = 0;
    for (const char c : bytes.substr(at, 4)) value = value << 8 | static_cast<unsigned char>(c);
    return value;
  };
  std::vector<std::string> pools;
  if (bytes.size() < kHeader || bytes[0] != 1) return pools;
  for (std::size_t at = kHeader; at + kName <= bytes.size();) {
    const std::size_t length = number(at), name = number(at + 8);
    if (length < kName || length > bytes.size() - at || name > length - kName) break;
    pools.emplace_back(bytes.substr(at + kName, name));
    at += length;
  }
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
  if (DaemonRuns("/run/zed.pid", "zed")) return {};
  return {"nobody hears of read errors of ZFS pools: zed does not run",
          "systemctl enable --now zfs-zed"};
}

}  // namespace linux_platform

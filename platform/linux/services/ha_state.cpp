#include "platform/linux/services/ha_state.h"

#include <algorithm>
#include <array>

namespace linux_platform {
namespace {

constexpr std::array kTexts = {"normal", "warning", "empty_passive", "danger"};

// What follows "<name>:" up to the next blank; empty when the line has no such field.
std::string_view Field(std::string_view line, std::string_view name) {
  const std::string key = std::string(1, ' ').append(name).append(1, ':');
  const std::size_t at = line.find(key);
  if (at == std::string_view::npos) return {};
  line.remove_prefix(at + key.size());
  return line.substr(0, line.find(' '));
}

// This machine's half of "Primary/Secondary".
std::string_view Local(std::string_view pair) { return pair.substr(0, pair.find('/')); }

HaState DeviceState(std::string_view connection, std::string_view roles, std::string_view disks) {
  constexpr std::array<std::string_view, 3> kLost = {"Failed", "Inconsistent", "Diskless"};
  const bool lost = std::ranges::find(kLost, Local(disks)) != kLost.end();
  if (connection == "StandAlone" || (lost && Local(roles) == "Primary")) return HaState::Danger;
  const bool whole = connection == "Connected" && disks == "UpToDate/UpToDate";
  return whole ? HaState::Normal : HaState::Warning;
}

// " 0: cs:StandAlone ro:Primary/Unknown ds:UpToDate/DUnknown C r-----"
ClusterCause DescribeDevice(std::string_view line) {
  std::string_view number = line.substr(0, line.find(':'));
  number.remove_prefix(std::min(number.find_first_not_of(' '), number.size()));
  std::string words(Field(line, "cs"));
  for (const char* field : {"ro", "ds"}) words.append(", ").append(Field(line, field));
  return {"mirror_broken", "drbd" + std::string(number), words};
}

}  // namespace

const char* NameHaState(HaState state) { return kTexts[static_cast<std::size_t>(state)]; }

std::optional<HaState> ParseHaState(std::string_view text) {
  const auto found =
      std::ranges::find(kTexts, text, [](const char* each) { return std::string_view(each); });
  if (found == kTexts.end()) return std::nullopt;
  return static_cast<HaState>(found - kTexts.begin());
}

std::optional<HaState> ParseDrbdState(std::string_view text, bool& isVersion8,
                                      std::vector<ClusterCause>& causes) {
  isVersion8 = text.starts_with("version: 8.");
  std::optional<HaState> worst;
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    const std::string_view connection = Field(line, "cs");
    if (connection.empty() || connection == "Unconfigured") continue;
    const HaState state = DeviceState(connection, Field(line, "ro"), Field(line, "ds"));
    worst = std::max(worst.value_or(state), state);
    if (state != HaState::Normal) causes.push_back(DescribeDevice(line));
  }
  return worst;
}

}  // namespace linux_platform

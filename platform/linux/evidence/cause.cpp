#include "platform/linux/evidence/cause.h"

#include <algorithm>

#include "common/sanitize.h"
#include "common/text.h"

namespace linux_platform {
namespace {

bool IsPlain(char c) {
  constexpr std::string_view kPlain = "_@%+=:,./-";
  return isalnum(static_cast<unsigned char>(c)) != 0 || kPlain.find(c) != kPlain.npos;
}

std::string Quote(std::string_view name) {
  if (!name.empty() && std::ranges::all_of(name, IsPlain)) return std::string(name);
  std::string quoted = "'";
  for (const char c : name)
    if (c == '\'')
      quoted += "'\\''";
    else
      quoted += c;
  return quoted + "'";
}

constexpr std::size_t kRoom = sizeof VELAEvidence::show - 1;

// "sdc" of "sdc1", "nvme0n1" of "nvme0n1p2": of a disk that is gone only the name is left.
std::string CutPartition(const std::string& device) {
  std::string whole = device.substr(0, device.find_last_not_of("0123456789") + 1);
  if (IsDiskName(whole)) return whole;
  if (whole.ends_with('p')) whole.pop_back();
  return IsDiskName(whole) ? whole : device;
}

}  // namespace

VELAEvidence MakeEvidence(const char* key, const char* check, std::string_view part) {
  VELAEvidence record;
  common::FillField(record.key, key);
  common::FillField(record.check, check);
  common::FillField(record.part, part);
  return record;
}

std::string WriteCommand(std::string_view form, std::initializer_list<std::string_view> names) {
  std::string command;
  for (const std::string_view name : names) {
    if (common::Sanitize(name) != name) return {};
    const std::size_t place = form.find("{}");
    command.append(form.substr(0, place)).append(Quote(name));
    form.remove_prefix(place + 2);
  }
  command.append(form);
  return command.size() <= kRoom ? command : std::string();
}

void SetShow(VELAEvidence& record, const std::string& command) {
  common::FillField(record.show, command);
}

void SetMend(VELAEvidence& record, const std::vector<std::string>& commands) {
  if (std::ranges::any_of(commands, &std::string::empty)) return;
  int place = 0;
  for (const std::string& command : commands) common::FillField(record.mend[place++], command);
}

std::string_view CutPeriod(std::string_view message) {
  return message.substr(0, message.find_last_not_of(". ") + 1);
}

std::string NameDisk(const StorageView& view, const std::string& device) {
  std::string whole = FindDiskOf(device);
  if (whole == device) whole = CutPartition(device);
  const auto disk = std::ranges::find(view.disks, whole, &WholeDisk::device);
  return disk != view.disks.end() ? disk->name : whole;
}

}  // namespace linux_platform

// Enclosures, asked by SCSI commands for their diagnostic pages: the kernel itself shows
// only their slots. One that is wedged holds its asker in the kernel, so each is asked by a
// process of its own.
#include <fcntl.h>
#include <unistd.h>

#include <scsi/sg_cmds_basic.h>
#include <scsi/sg_cmds_extra.h>
#include <scsi/sg_lib.h>

#include <cerrno>
#include <cstring>
#include <map>

#include "common/json_reader.h"
#include "platform/linux/base/open.h"
#include "platform/linux/base/root.h"
#include "platform/linux/base/snapshot.h"
#include "platform/linux/base/sysfs.h"
#include "platform/linux/chassis/enclosure_snapshot.h"
#include "platform/linux/chassis/plugged_parts.h"
#include "platform/linux/chassis/ses_pages.h"
#include "platform/linux/collector/commands.h"
#include "platform/linux/collector/parts.h"
#include "platform/linux/collector/snapshot_folder.h"

namespace linux_platform {
namespace {

using common::ParseJson;

constexpr int kCommandSeconds = 10;
// A transport may take far longer to give a command up than the command was given.
constexpr Bounds kBounds = {std::chrono::seconds(18), std::size_t{256} << 10};
constexpr int kLongestPage = 0xFFFC;  // some adapters refuse what does not end on four bytes

// The node that takes SCSI commands for the device: generic, else the block layer's.
std::string FindNode(const std::string& device) {
  for (const std::string& name : NamesIn(Within(device, "scsi_generic")))
    return BelowRoot("/dev/") + name;
  for (const std::string& name : NamesIn(Within(device, "bsg")))
    return BelowRoot("/dev/bsg/") + name;
  return {};
}

bool Receive(int device, int page, std::vector<std::uint8_t>& bytes, std::string& reason) {
  bytes.assign(kLongestPage, 0);
  int left = 0;
  const int result = sg_ll_receive_diag_v2(device, true, page, bytes.data(), kLongestPage,
                                           kCommandSeconds, &left, false, 0);
  bytes.resize(bytes.size() - static_cast<std::size_t>(left));
  if (result == 0) return true;
  char words[80] = {};
  sg_get_category_sense_str(result, sizeof words, words, 0);
  reason = "it did not give page 0" + std::to_string(page) + "h: " + words;
  return false;
}

std::optional<Enclosure> ReadPages(const std::string& node, std::string& reason) {
  if (node.empty()) {
    reason = "the kernel module sg is not loaded";
    return std::nullopt;
  }
  const Descriptor device = Open(node, O_RDONLY);
  if (!device) {
    reason = node + " could not be opened: " + std::strerror(errno);
    return std::nullopt;
  }
  std::vector<std::uint8_t> configuration, status, names;
  std::string nameless;
  if (!Receive(device.Get(), 1, configuration, reason)) return {};
  if (!Receive(device.Get(), 2, status, reason)) return {};
  if (!Receive(device.Get(), 7, names, nameless)) names.clear();
  return ParseSesPages(configuration, status, names, reason);
}

// What /sys knows of an enclosure that could not be read.
Enclosure DescribeUnread(const std::string& name, const std::string& reason) {
  const std::string folder = Within(Sys("/class/enclosure"), name);
  std::string id = Attribute(Within(folder, "id"));
  if (id.starts_with("0x")) id.erase(0, 2);
  return {id, Attribute(Within(folder, "device/model")), reason, {}, {}};
}

Enclosure ReadEnclosure(const std::string& name) {
  const auto lock = TakeLock("ses-" + name);
  if (!lock) return DescribeUnread(name, kStillStuck);
  std::string reason;
  const auto read = ReadPages(FindNode(Sys("/class/enclosure/") + name + "/device"), reason);
  return read ? *read : DescribeUnread(name, reason);
}

// Nothing when it has neither fans nor supplies.
std::optional<Enclosure> ParseResult(const std::string& name, const CommandResult& result) {
  Json::Value entry;
  if (result.cut == Child::Cut::Late) return DescribeUnread(name, "no answer within 18 s");
  if (result.status != 0 || !ParseJson(result.output, entry))
    return DescribeUnread(name, "the process that asked it failed");
  if (!entry.isObject()) return std::nullopt;
  return Enclosure::FromJson(entry);
}

}  // namespace

std::string PrintEnclosure(const std::string& name) {
  const Enclosure enclosure = ReadEnclosure(name);
  const bool counts =
      !enclosure.unread.empty() || !enclosure.fans.empty() || !enclosure.supplies.empty();
  return PrintJson(counts ? enclosure.ToJson() : Json::Value());
}

Json::Value CollectSes() {
  const auto names = NamesIn(Sys("/class/enclosure"));
  if (names.empty()) return {};
  std::vector<Command> commands;
  for (const std::string& name : names)
    commands.push_back(BuildOwnCommand({"--enclosure", name}, kBounds));
  const std::vector<CommandResult> results = RunCommands(commands);
  // One enclosure may be reached on several paths, of which one that answers counts.
  std::map<std::string, Enclosure> byId;
  for (std::size_t i = 0; i < names.size(); ++i) {
    std::optional<Enclosure> enclosure = ParseResult(names[i], results[i]);
    if (!enclosure) continue;
    const auto [place, isNew] = byId.try_emplace(enclosure->id);
    if (isNew || !place->second.unread.empty()) place->second = std::move(*enclosure);
  }
  EnclosureSnapshot snapshot;
  const auto plugged = PluggedParts::FromJson(ReadMemory(PluggedParts::kSource));
  for (auto& [id, enclosure] : byId) {
    plugged.MarkGone(enclosure.NameSupplies(), enclosure.supplies);
    plugged.MarkGone(enclosure.NameFans(), enclosure.fans);
    snapshot.enclosures.push_back(std::move(enclosure));
  }
  return snapshot.ToJson();
}

}  // namespace linux_platform

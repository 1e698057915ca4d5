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
#include "platform/linux/base/descriptor.h"
#include "platform/linux/base/root.h"
#include "platform/linux/base/sysfs.h"
#include "platform/linux/chassis/ses_pages.h"
#include "platform/linux/collector/children.h"
#include "platform/linux/collector/parts.h"
#include "platform/linux/collector/snapshot_folder.h"

namespace linux_platform {
namespace {

using common::ParseJson, common::TextMember;

constexpr int kCommandSeconds = 10;
// A transport may take far longer to give a command up than the command was given.
constexpr Bounds kBounds = {std::chrono::seconds(18), std::size_t{256} << 10};
constexpr int kLongestPage = 0xFFFC;  // some adapters refuse what does not end on four bytes

// The node that takes SCSI commands for the device: generic, else the block layer's.
std::string NodeOf(const std::string& device) {
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
  if (result == 0) return bytes.resize(bytes.size() - static_cast<std::size_t>(left)), true;
  char words[80] = {};
  sg_get_category_sense_str(result, sizeof words, words, 0);
  reason = "it did not give page 0" + std::to_string(page) + "h: " + words;
  return false;
}

std::optional<Enclosure> ReadEnclosure(const std::string& node, std::string& reason) {
  if (node.empty()) return reason = "the kernel module sg is not loaded", std::nullopt;
  const Descriptor device(open(node.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  if (!device) return reason = node + " could not be opened: " + std::strerror(errno), std::nullopt;
  std::vector<std::uint8_t> configuration, status, names;
  std::string nameless;
  if (!Receive(device.Get(), 1, configuration, reason)) return {};
  if (!Receive(device.Get(), 2, status, reason)) return {};
  if (!Receive(device.Get(), 7, names, nameless)) names.clear();
  return ParseSesPages(configuration, status, names, reason);
}

Json::Value ListOf(const std::vector<EnclosurePart>& parts) {
  Json::Value list(Json::arrayValue);
  for (const EnclosurePart& part : parts) {
    Json::Value entry(Json::objectValue);
    entry["name"] = part.name;
    entry["state"] = TextOf(part.state);
    list.append(std::move(entry));
  }
  return list;
}

// What /sys knows of an enclosure that could not be read.
Json::Value UnreadEntry(const std::string& name, const std::string& reason) {
  const std::string enclosure = Within(Sys("/class/enclosure"), name);
  Json::Value entry(Json::objectValue);
  std::string id = Attribute(Within(enclosure, "id"));
  if (id.starts_with("0x")) id.erase(0, 2);
  entry["id"] = id;
  entry["product"] = Attribute(Within(enclosure, "device/model"));
  entry["unread"] = reason;
  return entry;
}

Json::Value EntryOf(const std::string& name, const Outcome& outcome) {
  Json::Value entry;
  if (outcome.cut == Child::Cut::Late) return UnreadEntry(name, "no answer within 18 s");
  if (outcome.status == 0 && ParseJson(outcome.output, entry)) return entry;
  return UnreadEntry(name, "the process that asked it failed");
}

}  // namespace

Json::Value ReadEnclosureNamed(const std::string& name) {
  const auto lock = TakeLock("ses-" + name);
  if (!lock) return UnreadEntry(name, "an earlier look at it is still stuck in the kernel");
  std::string reason;
  const auto read = ReadEnclosure(NodeOf(Sys("/class/enclosure/") + name + "/device"), reason);
  if (!read) return UnreadEntry(name, reason);
  if (read->fans.empty() && read->supplies.empty()) return {};
  Json::Value entry(Json::objectValue);
  entry["id"] = read->id;
  entry["product"] = read->product;
  entry["fans"] = ListOf(read->fans);
  entry["supplies"] = ListOf(read->supplies);
  return entry;
}

Json::Value CollectSes() {
  const auto names = NamesIn(Sys("/class/enclosure"));
  if (names.empty()) return {};
  std::vector<Order> orders;
  for (const std::string& name : names)
    orders.push_back({ThisProgram({"--enclosure", name}), kBounds});
  const std::vector<Outcome> outcomes = RunTogether(orders);
  // One enclosure may be reached on several paths; by identifier, so in its order too.
  std::map<std::string, Json::Value> entries;
  for (std::size_t i = 0; i < names.size(); ++i) {
    Json::Value entry = EntryOf(names[i], outcomes[i]);
    if (!entry.isObject()) continue;  // without fans and supplies
    Json::Value& place = entries[TextMember(entry, "id")];
    if (place.isNull() || place.isMember("unread")) place = std::move(entry);
  }
  Json::Value members(Json::objectValue);
  Json::Value& list = members["enclosures"] = Json::Value(Json::arrayValue);
  for (auto& [id, entry] : entries) list.append(std::move(entry));
  return members;
}

}  // namespace linux_platform

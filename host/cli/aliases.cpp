#include "host/cli/aliases.h"

#include <algorithm>
#include <cctype>
#include <regex>

#include "platform/status/source_status.h"

namespace host {
namespace {

constexpr const char* kHostName = "hostName";
// What is told beside the answer; all else are the system's own names, and what it is judged by.
constexpr const char* kTold[] = {"why", "sources", "notes", "parts", "evidence"};
// What is shorter is a number that may stand for anything else.
constexpr int kShortestId = 5;

void AddAlias(Aliases& aliases, const Json::Value& name, const std::string& kind, int& count) {
  if (!name.isString() || name.asString().empty() || aliases.contains(name.asString())) return;
  aliases[name.asString()] = kind + "-" + std::to_string(++count);
}

bool IsLetter(char letter) {
  const auto byte = static_cast<unsigned char>(letter);
  return byte >= 0x80U || std::isalnum(byte) != 0;
}

// Whether the `size` characters at `at` are no part of a longer word.
bool IsWord(const std::string& text, std::size_t at, std::size_t size) {
  const bool begins = at == 0 || !IsLetter(text[at - 1]);
  return begins && (at + size == text.size() || !IsLetter(text[at + size]));
}

// The longest name that is a whole word at this place; the end where there is none.
Aliases::const_iterator FindName(const std::string& text, std::size_t at, const Aliases& aliases) {
  auto best = aliases.end();
  for (auto each = aliases.begin(); each != aliases.end(); ++each) {
    const std::size_t size = each->first.size();
    if (text.compare(at, size, each->first) != 0 || !IsWord(text, at, size)) continue;
    if (best == aliases.end() || size > best->first.size()) best = each;
  }
  return best;
}

std::string ReplaceWords(const std::string& text, const Aliases& aliases) {
  std::string replaced;
  for (std::size_t at = 0; at < text.size();) {
    const auto name = FindName(text, at, aliases);
    const bool found = name != aliases.end();
    replaced += found ? name->second : text.substr(at, 1);
    at += found ? name->first.size() : 1;
  }
  return replaced;
}

void ReplaceAll(Json::Value& value, const Aliases& aliases) {
  if (value.isString()) value = ReplaceWords(value.asString(), aliases);
  if (!value.isArray() && !value.isObject()) return;
  for (Json::Value& element : value) ReplaceAll(element, aliases);
}

// Calls `look` with each text in it.
template <typename Look>
void LookAtTexts(const Json::Value& value, const Look& look) {
  if (value.isString()) look(value.asString());
  if (!value.isArray() && !value.isObject()) return;
  for (const Json::Value& element : value) LookAtTexts(element, look);
}

// "WD-1" and "Z 9" of "smartd has warned of disks ...: WD-1 (Health), Z 9 (SelfTest)". The end of a
// long reason is missing.
void AddStrayDisks(const std::string& reason, Aliases& aliases, int& count) {
  static const std::regex kDisk(R"(([^,(]+?)(?: \([^,]*)?(?:, |$))");
  if (!reason.starts_with(source_status::kStrayDisks)) return;
  const auto begin =
      reason.begin() + static_cast<std::ptrdiff_t>(source_status::kStrayDisks.size());
  for (std::sregex_iterator disk(begin, reason.end(), kDisk), end; disk != end; ++disk)
    AddAlias(aliases, (*disk)[1].str(), "serial", count);
}

// What stands behind the last "_", else behind the kind: 0x5000c5001 of wwn-0x5000c5001-part1.
void AddDeviceIds(const std::string& text, Aliases& aliases, int& count) {
  static const std::regex kId(
      R"(/by-id/[a-z]+-(?:[^/\s]*?_)?)"              // the kind, maker and model
      R"(([^/\s_]*?\d[^/\s_]*?))"                    // what is looked for
      R"((?:_\d+)?(?:-part\d+)?(?![^/\s,;:)'"]))");  // a name space, a partition
  for (std::sregex_iterator id(text.begin(), text.end(), kId), end; id != end; ++id)
    if ((*id)[1].length() >= kShortestId) AddAlias(aliases, (*id)[1].str(), "id", count);
}

}  // namespace

Aliases ChooseAliases(const Json::Value& state) {
  Aliases aliases;
  int hosts = 0, serials = 0, nodes = 0, ups = 0, ids = 0;
  AddAlias(aliases, state[kHostName], "host", hosts);
  for (const Json::Value& part : state["parts"]) {
    AddAlias(aliases, part["serial"], "serial", serials);
    if (part["kind"] == "node") AddAlias(aliases, part["name"], "node", nodes);
    if (part["kind"] == "UPS") AddAlias(aliases, part["name"], "UPS", ups);
  }
  LookAtTexts(state["sources"],
              [&](const std::string& text) { AddStrayDisks(text, aliases, serials); });
  for (const char* member : {"sources", "notes", "parts", "evidence"})
    LookAtTexts(state[member], [&](const std::string& text) { AddDeviceIds(text, aliases, ids); });
  return aliases;
}

void ReplaceNames(Json::Value& machine, const Aliases& aliases) {
  for (const char* member : {kHostName, "hostname"}) {
    const auto alias =
        machine.isMember(member) ? aliases.find(machine[member].asString()) : aliases.end();
    if (alias != aliases.end()) machine[member] = alias->second;
  }
  for (const char* member : kTold)
    if (machine.isMember(member)) ReplaceAll(machine[member], aliases);
}

}  // namespace host

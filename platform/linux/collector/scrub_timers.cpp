#include "platform/linux/collector/scrub_timers.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <regex>

#include "platform/linux/base/root.h"
#include "platform/linux/base/sysfs.h"

namespace linux_platform {
namespace {

// As "systemctl enable" leaves it. A timer that is masked is a link to /dev/null.
bool IsEnabled(const std::string& timer) {
  const std::string units = BelowRoot("/etc/systemd/system");
  if (LinkTarget(Within(units, timer)).ends_with("/dev/null")) return false;
  const auto wants = [&](const std::string& name) {
    return name.ends_with(".wants") && PathExists(Concatenate(units, "/", name, "/", timer));
  };
  return std::ranges::any_of(NamesIn(units), wants);
}

// What the pattern's group matches in a line of the file; empty without such a line.
std::string FindInLine(const char* path, const char* pattern) {
  std::string text;
  ReadSmallFile(BelowRoot(path).c_str(), std::size_t{64} << 10, text);
  text = Concatenate("\n", text);
  std::smatch found;
  const std::regex line(Concatenate("\n", pattern));
  return std::regex_search(text, found, line) ? found.str(1) : std::string();
}

// As in the instances of units: "/mnt/my-data" is "mnt-my\x2ddata".
std::string EscapePath(std::string_view path) {
  if (path == "/") return "-";
  path.remove_prefix(1);
  std::string escaped;
  for (const char c : path) {
    const bool isPlain = std::isalnum(static_cast<unsigned char>(c)) || c == ':' || c == '_' ||
                         (c == '.' && !escaped.empty());
    char code[8] = {};
    std::snprintf(code, sizeof code, "\\x%02x", static_cast<unsigned char>(c));
    escaped += c == '/' ? "-" : isPlain ? std::string(1, c) : code;
  }
  return escaped;
}

bool IsToBeMaintained(const std::string& target) {
  if (!IsEnabled("btrfs-scrub.timer")) return false;
  const char* settings = "/etc/default/btrfsmaintenance";
  if (!PathExists(BelowRoot(settings))) settings = "/etc/sysconfig/btrfsmaintenance";
  const auto find = [&](const char* pattern) { return FindInLine(settings, pattern); };
  const std::string where = find("BTRFS_SCRUB_MOUNTPOINTS=\"?([^\"\n]*)");
  return !find("BTRFS_SCRUB_PERIOD=\"?(daily|weekly|monthly)").empty() &&
         (where == "auto" || HasWord(where, target, ":"));
}

}  // namespace

bool AreArraysToBeChecked() {
  if (IsEnabled("mdcheck_start.timer")) return true;
  return !FindInLine("/etc/cron.d/mdadm", "[^#\n]*(checkarray)").empty() &&
         !FindInLine("/etc/default/mdadm", "AUTOCHECK=[\"']?(true)").empty();
}

bool IsToBeScrubbed(const std::string& target) {
  return IsEnabled(Concatenate("btrfs-scrub@", EscapePath(target), ".timer")) ||
         IsToBeMaintained(target);
}

}  // namespace linux_platform

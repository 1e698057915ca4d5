#include "platform/linux/base/sysfs.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>

#include "platform/linux/base/open.h"

namespace linux_platform {
namespace {

std::string& TheSysRoot() {
  static std::string root = "/sys";
  return root;
}

}  // namespace

const std::string& SysRoot() { return TheSysRoot(); }

void SetSysRoot(std::string_view root) { TheSysRoot() = root; }

std::string Attribute(const std::string& path) {
  const Descriptor file = Open(path, O_RDONLY);
  if (!file) return {};
  std::array<char, 4096> text;  // an attribute is at most one page and comes in one read
  const ssize_t got = read(file.Get(), text.data(), text.size());
  std::string_view value(text.data(), got > 0 ? static_cast<std::size_t>(got) : 0);
  return std::string(value.substr(0, value.find_last_not_of(" \n\t\0") + 1));
}

std::optional<std::int64_t> NumberAttribute(const std::string& path) {
  return ToNumber(Attribute(path));
}

bool PathExists(const std::string& path) { return Access(path, F_OK); }

std::vector<std::string> NamesIn(const std::string& folder) {
  std::vector<std::string> names;
  const auto opened = OpenFolder(folder);
  if (!opened) return names;
  names.reserve(16);
  while (const dirent* entry = readdir(opened.get()))
    if (entry->d_name[0] != '.') names.emplace_back(entry->d_name);
  std::ranges::sort(names);
  return names;
}

std::string LinkTarget(const std::string& path) {
  const std::string text = ReadLink(path);
  if (text.empty()) return errno == EINVAL ? path : std::string();
  std::string_view target = text;
  std::string folder = path.substr(0, path.rfind('/'));
  const std::string_view top = folder.starts_with(Root()) ? Root() : std::string_view();
  if (target.starts_with('/')) return Concatenate(top, target);
  for (; target.starts_with("../"); target.remove_prefix(3))
    if (folder.size() > top.size()) folder.resize(folder.rfind('/'));
  return Within(folder, target);
}

std::string_view LastComponent(std::string_view path) { return path.substr(path.rfind('/') + 1); }

bool HasWord(std::string_view text, std::string_view word, std::string_view separators) {
  const auto isBorder = [&](std::size_t at) {
    return at >= text.size() || separators.find(text[at]) != separators.npos;
  };
  for (auto at = text.find(word); at != text.npos; at = text.find(word, at + 1))
    if ((at == 0 || isBorder(at - 1)) && isBorder(at + word.size())) return true;
  return false;
}

std::optional<std::int64_t> ToNumber(std::string_view text) {
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || text.empty()) return {};
  return number;
}

bool DaemonRuns(const char* pidFile, std::string_view name) {
  const std::string pid = Attribute(BelowRoot(pidFile));
  return ToNumber(pid) && Attribute(BelowRoot("/proc/", pid, "/comm")) == name;
}

}  // namespace linux_platform

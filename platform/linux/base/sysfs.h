// Named attributes of /sys, one at a time: never "every file of the folder", because one
// that cannot be read must not spoil the rest.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/base/root.h"

namespace linux_platform {

// "/sys". Tests put a fixture tree in its place.
const std::string& SysRoot();
void SetSysRoot(std::string_view root);
// The path below it that the parts make up.
template <typename... Parts>
std::string Sys(const Parts&... parts) {
  return Concatenate(SysRoot(), parts...);
}

// The attribute's text without its last newline and blanks; empty for whatever reason.
std::string Attribute(const std::string& path);
std::optional<std::int64_t> NumberAttribute(const std::string& path);
bool PathExists(const std::string& path);
// The names in the folder, sorted; empty when there is none.
std::vector<std::string> NamesIn(const std::string& folder);
// Where the link at `path` leads, one step: that is all that a link of /sys needs, and
// one system call. `path` itself when it is no link; empty when nothing is there.
std::string LinkTarget(const std::string& path);
// `folder`, a slash and `name`.
inline std::string Within(std::string_view folder, std::string_view name) {
  return Concatenate(folder, "/", name);
}
std::string_view LastComponent(std::string_view path);

// Whether `text`, a list of words parted by any of `separators`, holds `word`.
bool HasWord(std::string_view text, std::string_view word, std::string_view separators = ",");
// The number that the whole text is.
std::optional<std::int64_t> ToNumber(std::string_view text);

// Whether the process whose number the file at `pidFile`, below the root, holds runs and is called
// `name`: another may have been given the number since.
bool DaemonRuns(const char* pidFile, std::string_view name);

}  // namespace linux_platform

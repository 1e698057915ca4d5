#include "platform/linux/storage/exports.h"

#include <sstream>

#include "platform/linux/base/root.h"
#include "platform/linux/base/sysfs.h"

namespace linux_platform {
namespace {

constexpr std::string_view kBorders = " \t\"=,";

bool NamesBelow(std::string_view line, std::string_view folder) {
  for (auto at = line.find(folder); at != line.npos; at = line.find(folder, at + 1)) {
    const std::size_t end = at + folder.size();
    const bool begins = at == 0 || kBorders.find(line[at - 1]) != line.npos;
    if (begins && (end == line.size() || line[end] == '/' || kBorders.find(line[end]) != line.npos))
      return true;
  }
  return false;
}

std::string ReadTables() {
  constexpr const char* kTables[] = {"/etc/exports", "/etc/samba/smb.conf",
                                     "/etc/rtslib-fb-target/saveconfig.json"};
  std::string all, text;
  for (const char* table : kTables) {
    ReadSmallFile(BelowRoot(table).c_str(), std::size_t{4} << 20, text);
    all.append(text).append("\n");
  }
  for (const std::string& table : NamesIn(BelowRoot("/etc/exports.d"))) {
    ReadSmallFile(BelowRoot("/etc/exports.d/", table).c_str(), std::size_t{1} << 20, text);
    all.append(text).append("\n");
  }
  return all;
}

}  // namespace

bool Exports::Contain(std::string_view folder) {
  if (!tables_) tables_ = ReadTables();
  std::istringstream lines(*tables_);
  for (std::string line; std::getline(lines, line);) {
    const std::size_t first = line.find_first_not_of(" \t");
    const bool isComment = first == line.npos || line[first] == '#' || line[first] == ';';
    if (!isComment && NamesBelow(line, folder)) return true;
  }
  return false;
}

}  // namespace linux_platform

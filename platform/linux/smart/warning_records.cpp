#include "platform/linux/smart/warning_records.h"

#include <cstdlib>
#include <sstream>

#include "platform/linux/base/sysfs.h"

namespace linux_platform {
namespace {

constexpr std::size_t kRecordCap = std::size_t{16} << 10;

}  // namespace

DriveWarnings ParseWarnings(std::string_view text) {
  DriveWarnings warnings;
  std::istringstream lines{std::string(text)};
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    std::string kind, last, bits;
    words >> kind >> last >> bits;
    if (kind.empty()) continue;
    DriveWarning& warning = warnings[kind] = {};
    warning.last = static_cast<std::time_t>(ToNumber(last).value_or(0));
    if (bits.starts_with("0x"))
      warning.bits = static_cast<unsigned>(std::strtoul(bits.c_str(), nullptr, 16));
  }
  return warnings;
}

std::map<std::string, DriveWarnings> ReadWarningRecords() {
  std::map<std::string, DriveWarnings> records;
  const std::string folder = BelowRoot(kWarningsFolder);
  for (const std::string& serial : NamesIn(folder)) {
    std::string text;
    ReadSmallFile(Within(folder, serial).c_str(), kRecordCap, text);
    DriveWarnings& warnings = records[serial] = ParseWarnings(text);
    if (warnings.empty()) warnings["Health"] = {};
  }
  return records;
}

}  // namespace linux_platform

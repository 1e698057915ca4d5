#include "platform/linux/collector/smartd_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <map>

#include "platform/linux/base/open.h"
#include "platform/linux/base/sysfs.h"

namespace linux_platform {
namespace {

constexpr const char* kFolder = "/var/lib/smartmontools";
constexpr std::size_t kStateCap = std::size_t{64} << 10;
// A week of a line each half an hour.
constexpr std::size_t kLogCap = std::size_t{256} << 10;
constexpr std::time_t kWeek = 7 * 86400;
// For as long it may still be at its first round, after which it writes all states.
constexpr std::time_t kFirstRound = 120;

// smartd's numbers of its kinds of warning, in the order of its source.
constexpr std::array<const char*, 13> kKinds = {"EmailTest",
                                                "Health",
                                                "Usage",
                                                "SelfTest",
                                                "ErrorCount",
                                                "FailedHealthCheck",
                                                "FailedReadSmartData",
                                                "FailedReadSmartErrorLog",
                                                "FailedReadSmartSelfTestLog",
                                                "FailedOpenDevice",
                                                "CurrentPendingSector",
                                                "OfflineUncorrectableSector",
                                                "Temperature"};

// The attributes of an ATA drive, the counters of a SCSI one, and the state's own keys. Those of
// NVMe are written from smartd 7.5 on.
const std::map<std::string_view, const char*> kFigureNames = {
    {"5", "reallocated sectors"},
    {"187", "reported uncorrectable errors"},
    {"197", "pending sectors"},
    {"198", "offline uncorrectable sectors"},
    {"read-total-unc-errors", "uncorrected reads"},
    {"verify-total-unc-errors", "uncorrected reads"},
    {"write-total-unc-errors", "uncorrected writes"},
    {"ata-error-count", "logged errors"},
    {"self-test-errors", "self-test errors"},
    {"nvme-media-errors", "media errors"},
    {"nvme-percentage-used", "worn per cent"},
};

std::string_view Strip(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t\r");
  if (first == text.npos) return {};
  return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

// The pieces of `text` between the separators.
std::vector<std::string_view> Split(std::string_view text, char separator) {
  std::vector<std::string_view> pieces;
  for (std::size_t end; (end = text.find(separator)) != text.npos; text.remove_prefix(end + 1))
    pieces.push_back(text.substr(0, end));
  pieces.push_back(text);
  return pieces;
}

// The count of reallocated sectors is the value's low 16 bits; other things may lie above.
void AddFigure(std::string_view name, std::uint64_t value, DriveFigures& figures) {
  const auto known = kFigureNames.find(name);
  if (known == kFigureNames.end()) return;
  figures[known->second] = name == "5" ? value & 0xFFFF : value;
}

void AddWarning(std::string_view number, std::int64_t last, DriveWarnings& warnings) {
  const auto kind = static_cast<std::uint64_t>(ToNumber(number).value_or(-1));
  if (kind > 0 && kind < kKinds.size()) warnings[kKinds[kind]].last = last;
}

// "2026-11-22 10:00:00", in universal time.
std::time_t ParseTime(std::string_view text) {
  std::tm time = {};
  return strptime(std::string(text).c_str(), "%Y-%m-%d %H:%M:%S", &time) != nullptr ? timegm(&time)
                                                                                    : 0;
}

// "5;100;304;" of an ATA drive is attribute, normalized and raw value; the others' are pairs.
DriveFigures ParseLogLine(const std::vector<std::string_view>& groups) {
  DriveFigures figures;
  for (std::size_t i = 1; i < groups.size(); ++i) {
    const std::vector<std::string_view> fields = Split(groups[i], ';');
    const bool attribute = !fields[0].empty() && ToNumber(fields[0]).has_value();
    for (std::size_t at = 0; at + (attribute ? 2 : 1) < fields.size(); at += attribute ? 3 : 2)
      if (const auto value = ToNumber(fields[at + (attribute ? 2 : 1)]))
        AddFigure(Strip(fields[at]), static_cast<std::uint64_t>(*value), figures);
  }
  return figures;
}

// The last bytes of a file, at most `cap`, and when it was written; false when there is none.
bool ReadTail(const std::string& path, std::size_t cap, std::string& text, std::time_t& written) {
  const Descriptor file = Open(path, O_RDONLY);
  struct stat status = {};
  if (!file || fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode)) return false;
  const auto size = static_cast<std::size_t>(status.st_size);
  text.resize(std::min(size, cap));
  const auto from = static_cast<off_t>(size - text.size());
  const ssize_t got = pread(file.Get(), text.data(), text.size(), from);
  if (got < 0) return false;
  text.resize(static_cast<std::size_t>(got));
  written = status.st_mtime;
  return true;
}

// Of "smartd.MODEL-SERIAL.ata.state", "smartd.VENDOR-MODEL-SERIAL.scsi.state" and
// "smartd.MODEL-SERIAL[-nN].nvme.state"; none of these words holds a "-" or ".".
bool ReadDrive(const std::string& file, std::time_t now, DriveRecord& drive) {
  const std::vector<std::string_view> parts = Split(file, '.');
  if (parts.size() != 4 || parts[0] != "smartd" || parts[3] != "state") return false;
  const std::vector<std::string_view> words = Split(parts[1], '-');
  const std::size_t place = parts[2] == "scsi" ? 2 : 1;
  if (words.size() <= place || words[place].empty()) return false;
  drive.serial = words[place];
  drive.type = parts[2];

  std::string text;
  const std::string folder = BelowRoot(kFolder);
  if (!ReadTail(Within(folder, file), kStateCap, text, drive.read)) return false;
  ParseSmartdState(text, drive);
  std::time_t logged = 0;
  const std::string log = Concatenate(folder, "/attrlog.", parts[1], ".", parts[2], ".csv");
  if (!ReadTail(log, kLogCap, text, logged)) return true;
  ParseAttributeLog(text, now - kWeek, drive);
  drive.read = std::max(drive.read, logged);
  return true;
}

}  // namespace

void ParseSmartdState(std::string_view text, DriveRecord& drive) {
  std::string_view attribute;
  for (const std::string_view line : Split(text, '\n')) {
    const std::size_t equals = line.find('=');
    if (equals == line.npos) continue;
    const std::string_view key = Strip(line.substr(0, equals));
    const std::string_view value = Strip(line.substr(equals + 1));
    const std::int64_t number = ToNumber(value).value_or(0);
    const std::vector<std::string_view> words = Split(key, '.');
    if (words.size() == 1) AddFigure(key, static_cast<std::uint64_t>(number), drive.figures);
    if (key == "nvme-available-spare")
      drive.figures["spare used per cent"] =
          static_cast<std::uint64_t>(100 - std::clamp<std::int64_t>(number, 0, 100));
    if (words.size() != 3) continue;
    if (words[0] == "mail" && words[2] == "last-sent-time")
      AddWarning(words[1], number, drive.warnings);
    if (words[0] == "ata-smart-attribute" && words[2] == "id")
      AddFigure(attribute = value, 0, drive.figures);
    if (words[0] == "ata-smart-attribute" && words[2] == "raw")
      AddFigure(attribute, static_cast<std::uint64_t>(number), drive.figures);
  }
}

void ParseAttributeLog(std::string_view text, std::time_t since, DriveRecord& drive) {
  for (const std::string_view line : Split(text, '\n')) {
    const std::vector<std::string_view> groups = Split(line, '\t');
    const std::time_t time = ParseTime(groups[0].substr(0, groups[0].find(';')));
    if (time < since || time == 0 || groups.size() < 2) continue;
    DriveFigures figures = ParseLogLine(groups);
    if (drive.earlier.empty()) drive.earlier = figures;
    for (const auto& [name, value] : figures) drive.figures[name] = value;
  }
}

std::vector<DriveRecord> ReadSmartdFiles(std::time_t started, std::time_t now) {
  std::vector<DriveRecord> drives;
  for (const std::string& file : NamesIn(BelowRoot(kFolder))) {
    DriveRecord drive;
    if (!ReadDrive(file, now, drive)) continue;
    drive.current = started > 0 && (drive.read >= started || now - started < kFirstRound);
    drives.push_back(std::move(drive));
  }
  // Of a drive with two states, the later one counts.
  std::ranges::stable_sort(drives, std::ranges::greater{}, &DriveRecord::read);
  return drives;
}

}  // namespace linux_platform

#include "platform/linux/smart/drive_verdict.h"

#include <algorithm>
#include <limits>

namespace linux_platform {
namespace {

constexpr std::uint64_t kNever = std::numeric_limits<std::uint64_t>::max();

// From each mark on; the growth is that of the last seven days.
struct FigureRule {
  const char* figure;
  std::uint64_t note, failing, growth;
  bool rotatingOnly;  // on a solid-state drive the number means something else
};

constexpr FigureRule kFigureRules[] = {
    {"reallocated sectors", 1, 100, 10, true},
    {"pending sectors", kNever, 1, kNever, true},
    {"offline uncorrectable sectors", kNever, 1, kNever, true},
    {"reported uncorrectable errors", 1, 10, 1, true},
    {"uncorrected reads", 1, 10, 1, false},
    {"uncorrected writes", kNever, 1, kNever, false},
    {"media errors", 1, 10, 1, false},
    {"logged errors", 1, kNever, kNever, false},
    {"self-test errors", 1, kNever, kNever, false},
    {"spare used per cent", 50, kNever, kNever, false},
    {"worn per cent", 90, kNever, kNever, false},
};

// Of an NVMe drive's critical warning.
constexpr unsigned kHeat = 0x02, kReliability = 0x04;

constexpr std::time_t kErrorsCountFor = 30 * 86400;
constexpr std::time_t kToldAgainWithin = 3 * 86400;
// What smartd writes so soon after a warning may be about the warning itself.
constexpr std::time_t kSameRound = 600;

constexpr std::string_view kFailingKinds[] = {"Health",
                                              "FailedHealthCheck",
                                              "Usage",
                                              "SelfTest",
                                              "FailedOpenDevice",
                                              "CurrentPendingSector",
                                              "OfflineUncorrectableSector"};

std::uint64_t GetFigure(const DriveFigures& figures, std::string_view name) {
  const auto found = figures.find(name);
  return found == figures.end() ? 0 : found->second;
}

void JudgeLevel(const FigureRule& rule, std::uint64_t value, DriveVerdict& verdict) {
  if (value >= rule.failing)
    verdict.Add({DriveHealth::Failing, rule.figure, value, rule.failing, false});
  else if (value >= rule.note)
    verdict.Add({DriveHealth::Note, rule.figure, value, rule.note, false});
}

void JudgeFigure(const FigureRule& rule, const DriveRecord& drive, DriveVerdict& verdict) {
  if (rule.rotatingOnly && !drive.rotating) return;
  const std::uint64_t value = GetFigure(drive.figures, rule.figure);
  const auto before = drive.earlier.find(rule.figure);
  const bool known = before != drive.earlier.end() && value > before->second;
  const std::uint64_t growth = known ? value - before->second : 0;
  if (growth >= rule.growth)
    verdict.Add({DriveHealth::Failing, rule.figure, growth, rule.growth, true});
  else
    JudgeLevel(rule, value, verdict);
}

// Without bits only smartd's state knows of it, and smartd tells again each day while it lasts.
DriveHealth JudgeUnknownBits(std::time_t last, std::time_t now) {
  return last == 0 || now - last <= kToldAgainWithin ? DriveHealth::Failing : DriveHealth::Note;
}

// "Reliability" alone may mean no more than that the drive is past its rated writes, unless its
// memory has lost data.
DriveHealth JudgeBits(unsigned bits, const DriveFigures& figures) {
  if ((bits & ~(kHeat | kReliability)) != 0) return DriveHealth::Failing;
  if ((bits & kReliability) == 0) return DriveHealth::Well;
  return GetFigure(figures, "media errors") > 0 ? DriveHealth::Failing : DriveHealth::Note;
}

DriveHealth JudgeWarning(std::string_view kind, const DriveWarning& warning,
                         const DriveRecord& drive, std::time_t now) {
  if (kind == "Health" && warning.bits != 0) return JudgeBits(warning.bits, drive.figures);
  if (kind == "Health" && drive.type == "nvme") return JudgeUnknownBits(warning.last, now);
  if (kind == "ErrorCount")
    return drive.type != "nvme" && now - warning.last <= kErrorsCountFor ? DriveHealth::Failing
                                                                         : DriveHealth::Note;
  return std::ranges::find(kFailingKinds, kind) != std::end(kFailingKinds) ? DriveHealth::Failing
                                                                           : DriveHealth::Well;
}

bool HasPassed(std::string_view kind, const DriveWarning& warning, const DriveRecord& drive) {
  if (drive.read <= warning.last) return false;
  if (kind == "FailedOpenDevice" || kind == "FailedReadSmartData")
    return drive.read - warning.last >= kSameRound;
  const auto pending = drive.figures.find("pending sectors");
  return kind == "CurrentPendingSector" && pending != drive.figures.end() && pending->second == 0;
}

}  // namespace

void DriveVerdict::Add(DriveRemark remark) {
  health = std::max(health, remark.health);
  remarks.push_back(std::move(remark));
}

DriveVerdict JudgeDrive(const DriveRecord& drive, std::time_t now) {
  DriveVerdict verdict;
  for (const auto& [kind, warning] : drive.warnings) {
    const DriveHealth health = JudgeWarning(kind, warning, drive, now);
    if (health != DriveHealth::Well) verdict.Add({health, kind, warning.bits, 0, false});
  }
  for (const FigureRule& rule : kFigureRules) JudgeFigure(rule, drive, verdict);
  return verdict;
}

void AddWarnings(const DriveWarnings& recorded, DriveRecord& drive) {
  for (const auto& [kind, warning] : recorded)
    if (!HasPassed(kind, warning, drive)) drive.warnings.insert_or_assign(kind, warning);
}

}  // namespace linux_platform

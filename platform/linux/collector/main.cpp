// vela-platform-collect: reads the slow sources and leaves what they said as snapshots.
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iostream>

#include "platform/linux/base/root.h"
#include "platform/linux/base/snapshot.h"
#include "platform/linux/base/sysfs.h"
#include "platform/linux/collector/command_line.h"
#include "platform/linux/collector/parts.h"
#include "platform/linux/collector/round.h"
#include "platform/linux/collector/snapshot_folder.h"

using namespace linux_platform;

namespace {

enum ExitStatus { kDone = 0, kNotWritten = 1, kUsage = 64 };

std::vector<const Part*> ChooseParts(const std::vector<std::string>& names) {
  std::vector<const Part*> parts;
  for (const Part& part : AllParts())
    if (names.empty() || std::ranges::find(names, part.name) != names.end()) parts.push_back(&part);
  return parts;
}

int Print(const std::string& text) {
  std::cout << text << std::flush;
  return std::cout ? kDone : kNotWritten;
}

int Collect(const CommandLine& line) {
  const std::string folder = BelowRoot(kSnapshotFolder);
  if (!MakeSnapshotFolder()) {
    std::cerr << "vela-platform-collect: " << folder
              << " cannot be written: " << std::strerror(errno)
              << (geteuid() != 0 ? ". Run it as root.\n" : "\n");
    return kNotWritten;
  }
  const auto lock = TakeLock("collect");
  if (!lock) {
    std::cerr << "vela-platform-collect: another one is at work; nothing was done.\n";
    return kDone;
  }
  const std::vector<const Part*> parts = ChooseParts(line.parts);
  for (;;) {
    const bool written = RunRound(parts);
    if (line.once) return written ? kDone : kNotWritten;
    sleep(kSnapshotPeriod);
  }
}

}  // namespace

int main(int count, char** arguments) {
  const CommandLine line = ParseCommandLine(count, arguments);
  if (!line.error.empty()) {
    std::cerr << "vela-platform-collect: " << line.error << "\n" << DescribeUsage();
    return kUsage;
  }
  if (line.help) return Print(DescribeHelp());
  if (line.version) return Print("vela-platform-collect " VELA_VERSION "\n");
  if (!line.root.empty()) {
    SetRoot(line.root, line.trustRoot);
    SetSysRoot(BelowRoot("/sys"));
  }
  if (!line.measure.empty()) return Print(PrintMount(line.measure, line.device));
  if (!line.enclosure.empty()) return Print(PrintEnclosure(line.enclosure));
  if (!line.print.empty()) return Print(PrintPart(*FindPart(line.print)));
  return Collect(line);
}

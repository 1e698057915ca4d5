// vela-platform-collect: reads the slow sources and leaves what they said as snapshots.
#include <sys/wait.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstring>
#include <iostream>

#include "platform/linux/base/root.h"
#include "platform/linux/base/snapshot.h"
#include "platform/linux/base/sysfs.h"
#include "platform/linux/collector/parts.h"
#include "platform/linux/collector/round.h"
#include "platform/linux/collector/snapshot_folder.h"

using namespace linux_platform;

namespace {

enum Exit { kDone = 0, kNotWritten = 1, kUsage = 64 };

struct Options {
  bool once = false;
  std::vector<std::string> parts;
  std::string print, root, measure, device, enclosure;
};

std::string Footer() {
  std::string text = "Parts:\n";
  for (const Part& part : AllParts())
    text += std::string("  ") + part.name + std::string(15 - std::strlen(part.name), ' ') +
            part.what + "\n";
  return text +
         "\nA source that this machine does not have leaves no snapshot. Run it as root: most\n"
         "sources answer nobody else. Exit state: 0 all snapshots are written, also of sources\n"
         "that failed; 1 a snapshot could not be written; 64 the arguments are wrong.";
}

std::string CheckPart(const std::string& name) {
  return FindPart(name) != nullptr ? "" : "there is no part \"" + name + "\"; --help lists them";
}

void Describe(CLI::App& app, Options& options) {
  app.footer(Footer());
  app.set_version_flag("--version", "vela-platform-collect " VELA_VERSION);
  app.add_flag("--once", options.once, "Write the snapshots once and end, instead of every minute");
  app.add_option("--part", options.parts, "Only this part; may be given several times")
      ->check(CheckPart)
      ->type_name("NAME")
      ->expected(1);
  app.add_option("--print", options.print, "Print what the part finds, and write no snapshot")
      ->check(CheckPart)
      ->type_name("NAME")
      ->excludes("--once")
      ->excludes("--part");
  app.add_option("--root", options.root, "The folder that /dev, /etc, /proc, /run and /sys are in")
      ->type_name("DIR")
      ->check(CLI::ExistingDirectory);
  // One mount and one enclosure, for the parts' own use.
  app.add_option("--measure", options.measure)->group("");
  app.add_option("--device", options.device)->group("");
  app.add_option("--enclosure", options.enclosure)->group("");
}

std::vector<const Part*> Chosen(const Options& options) {
  std::vector<const Part*> parts;
  for (const Part& part : AllParts())
    if (options.parts.empty() || std::ranges::find(options.parts, part.name) != options.parts.end())
      parts.push_back(&part);
  return parts;
}

int Print(const std::string& text) {
  std::cout << text << std::flush;
  return std::cout ? kDone : kNotWritten;
}

int CollectOnce(const Options& options) { return RunRound(Chosen(options)) ? kDone : kNotWritten; }

// Each round in a process of its own: one that sits in the kernel holds up no other.
int CollectEveryMinute(const Options& options) {
  for (;;) {
    const pid_t round = fork();
    if (round == 0) _exit(CollectOnce(options));
    if (round > 0) waitpid(round, nullptr, 0);
    sleep(kSnapshotPeriod);
  }
}

int Collect(const Options& options) {
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
  return options.once ? CollectOnce(options) : CollectEveryMinute(options);
}

}  // namespace

int main(int count, char** arguments) {
  CLI::App app(
      "Reads the sources that need root, send device commands or may hang, and leaves\n"
      "what they said in /run/vela-platform, where the health platform looks.",
      "vela-platform-collect");
  Options options;
  Describe(app, options);
  try {
    app.parse(count, arguments);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kDone : kUsage;
  }
  if (!options.root.empty()) SetRoot(options.root), SetSysRoot(options.root + "/sys");
  if (!options.measure.empty())
    return Print(MeasureMount(options.measure, options.device).toStyledString());
  if (!options.enclosure.empty())
    return Print(ReadEnclosureNamed(options.enclosure).toStyledString());
  if (!options.print.empty()) return Print(PrintedBy(*FindPart(options.print)));
  return Collect(options);
}

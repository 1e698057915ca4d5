// velaiscsiep: what the health platform asks about the iSCSI target of this machine. It
// only reads, and is started on every request: so it parses its few arguments itself.
#include <getopt.h>

#include <iostream>
#include <string>

#include "common/json_writer.h"
#include "platform/linux/base/root.h"
#include "platform/linux/base/sysfs.h"
#include "platform/linux/san/service_status.h"

using namespace linux_platform;

namespace {

enum Exit { kDone = 0, kIncomplete = 1, kUsage = 64 };

constexpr const char* kUsageText =
    "Usage: velaiscsiep --get_service_status [--root DIR]\n"
    "Prints the state of the iSCSI target's LUNs, and of the volumes that hold them, as JSON.\n"
    "  --get_service_status  print that document\n"
    "  --root DIR            the folder that /etc, /proc, /run, /sys and the LUNs' files are in\n"
    "Exit status: 0 complete; 1 something could not be read, the rest is printed; 64 the\n"
    "arguments are wrong.\n";

int PrintUsage(std::ostream& stream, Exit status) {
  stream << kUsageText;
  return status;
}

int PrintServiceStatus() {
  std::string trouble;
  const Json::Value document = ReadServiceStatus(trouble);
  std::cout << common::WriteCompact(document) << std::endl;
  if (trouble.empty() && std::cout) return kDone;
  std::cerr << "velaiscsiep: " << (std::cout ? trouble : "the answer could not be written") << "\n";
  return kIncomplete;
}

}  // namespace

int main(int count, char** arguments) {
  constexpr option kOptions[] = {{"get_service_status", no_argument, nullptr, 's'},
                                 {"root", required_argument, nullptr, 'r'},
                                 {"help", no_argument, nullptr, 'h'},
                                 {}};
  bool asked = false;
  for (int found; (found = getopt_long(count, arguments, "h", kOptions, nullptr)) != -1;) {
    if (found == 'h') return PrintUsage(std::cout, kDone);
    if (found == '?') return PrintUsage(std::cerr, kUsage);
    if (found == 's') asked = true;
    if (found != 'r') continue;
    SetRoot(optarg, false);
    SetSysRoot(BelowRoot("/sys"));
  }
  if (!asked || optind != count) return PrintUsage(std::cerr, kUsage);
  return PrintServiceStatus();
}

#include "platform/linux/collector/command_line.h"

#include <getopt.h>

#include <cstring>
#include <filesystem>
#include <utility>

#include "platform/linux/collector/parts.h"

namespace linux_platform {
namespace {

enum Option {
  kOnce = 256,
  kPart,
  kPrint,
  kRoot,
  kMeasure,
  kDevice,
  kEnclosure,
  kVersion,
  kTrustRoot
};

constexpr option kOptions[] = {
    {"help", no_argument, nullptr, 'h'},
    {"version", no_argument, nullptr, kVersion},
    {"once", no_argument, nullptr, kOnce},
    {"part", required_argument, nullptr, kPart},
    {"print", required_argument, nullptr, kPrint},
    {"root", required_argument, nullptr, kRoot},
    {"trust-root", no_argument, nullptr, kTrustRoot},
    {"measure", required_argument, nullptr, kMeasure},
    {"device", required_argument, nullptr, kDevice},
    {"enclosure", required_argument, nullptr, kEnclosure},
    {},
};

constexpr std::pair<int, bool CommandLine::*> kFlags[] = {{'h', &CommandLine::help},
                                                          {kVersion, &CommandLine::version},
                                                          {kOnce, &CommandLine::once},
                                                          {kTrustRoot, &CommandLine::trustRoot}};
constexpr std::pair<int, std::string CommandLine::*> kTexts[] = {
    {kPrint, &CommandLine::print},
    {kRoot, &CommandLine::root},
    {kMeasure, &CommandLine::measure},
    {kDevice, &CommandLine::device},
    {kEnclosure, &CommandLine::enclosure}};

void Apply(int chosen, const char* value, CommandLine& line) {
  if (chosen == kPart) line.parts.emplace_back(value);
  for (const auto& [option, member] : kFlags)
    if (option == chosen) line.*member = true;
  for (const auto& [option, member] : kTexts)
    if (option == chosen) line.*member = value;
}

std::string CheckPart(const char* option, const std::string& name) {
  if (FindPart(name) != nullptr) return {};
  return std::string(option) + ": there is no part \"" + name + "\"; --help lists them";
}

std::string CheckValues(const CommandLine& line) {
  for (const std::string& name : line.parts)
    if (std::string error = CheckPart("--part", name); !error.empty()) return error;
  if (!line.print.empty() && line.once) return "--once excludes --print";
  if (!line.print.empty() && !line.parts.empty()) return "--part excludes --print";
  if (!line.root.empty() && !std::filesystem::is_directory(line.root))
    return "--root: Directory does not exist: " + line.root;
  return line.print.empty() ? "" : CheckPart("--print", line.print);
}

}  // namespace

CommandLine ParseCommandLine(int count, char** arguments) {
  CommandLine line;
  opterr = 0;
  for (int chosen; (chosen = getopt_long(count, arguments, ":h", kOptions, nullptr)) != -1;) {
    const bool isLetter = chosen == '?' && optopt > 0 && optopt < kOnce;
    const std::string argument =
        isLetter ? std::string("-") + static_cast<char>(optopt) : arguments[optind - 1];
    if (chosen == ':') line.error = argument + ": its value is missing";
    if (chosen == '?') line.error = "The following argument was not expected: " + argument;
    if (!line.error.empty()) return line;
    Apply(chosen, optarg, line);
  }
  if (optind < count)
    line.error = std::string("The following argument was not expected: ") + arguments[optind];
  else if (!line.help && !line.version)
    line.error = CheckValues(line);
  return line;
}

std::string DescribeUsage() {
  return "Usage: vela-platform-collect [--once] [--part NAME]... [--root DIR]\n"
         "       vela-platform-collect --print NAME [--root DIR]\n";
}

std::string DescribeHelp() {
  std::string text =
      "Reads the sources that need root, send device commands or may hang, and leaves\n"
      "what they said in /run/vela-platform, where the health platform looks.\n" +
      DescribeUsage() +
      "\nOptions:\n"
      "  -h,--help      Print this help message and exit\n"
      "  --version      Display program version information and exit\n"
      "  --once         Write the snapshots once and end, instead of every minute\n"
      "  --part NAME    Only this part; may be given several times\n"
      "  --print NAME   Print what the part finds, and write no snapshot\n"
      "  --root DIR     The folder that /etc, /proc, /run and /sys are in: no link leads out\n"
      "                 of it, none of its devices is opened, and root runs none of its programs\n"
      "  --trust-root   None of this holds: DIR and all in it is your own\n"
      "\nParts:\n";
  for (const Part& part : AllParts())
    text += std::string("  ") + part.name + std::string(15 - std::strlen(part.name), ' ') +
            part.what + "\n";
  return text +
         "\nA source that this machine does not have leaves no snapshot. Run it as root: most\n"
         "sources answer nobody else. Exit status: 0 all snapshots are written, also of sources\n"
         "that failed; 1 a snapshot could not be written; 64 the arguments are wrong.\n";
}

}  // namespace linux_platform

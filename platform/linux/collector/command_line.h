// What the collector is asked to do.
#pragma once

#include <string>
#include <vector>

namespace linux_platform {

struct CommandLine {
  bool once = false, help = false, version = false, trustRoot = false;
  std::vector<std::string> parts;  // none: all
  std::string print, root;
  // One mount or one enclosure: what the collector starts itself again with.
  std::string measure, device, enclosure;

  std::string error;  // what is wrong with the arguments; "" when nothing is
};

CommandLine ParseCommandLine(int count, char** arguments);

// How the program is called, in two lines, and all about it.
std::string DescribeUsage();
std::string DescribeHelp();

}  // namespace linux_platform

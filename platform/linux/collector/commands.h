// Several programs at once, each read to its end within its own bounds.
#pragma once

#include <string>
#include <vector>

#include "platform/linux/base/process.h"

namespace linux_platform {

struct Command {
  std::vector<std::string> arguments;  // the program's path first
  Bounds bounds;
};

struct CommandResult {
  std::string reason;  // why it was not started; "" when it was
  std::string output;
  int status = -1;  // as waitpid(2) gives it; -1 when it is not known
  Child::Cut cut = Child::Cut::None;
};

CommandResult RunCommand(const Command& command);
// In the order of `commands`. Takes as long as the slowest.
std::vector<CommandResult> RunCommands(const std::vector<Command>& commands);

// What starts this very program again, with the same root and trust.
Command BuildOwnCommand(std::vector<std::string> arguments, Bounds bounds);

}  // namespace linux_platform

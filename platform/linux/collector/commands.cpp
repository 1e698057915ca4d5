#include "platform/linux/collector/commands.h"

#include <filesystem>
#include <future>

#include "platform/linux/base/root.h"

namespace linux_platform {

CommandResult RunCommand(const Command& command) {
  CommandResult result;
  Child child(command.arguments, command.bounds, result.reason);
  if (!child.Started()) return result;
  char buffer[4096];
  for (ssize_t got; (got = child.Read(buffer, sizeof buffer)) > 0;)
    result.output.append(buffer, static_cast<std::size_t>(got));
  result.cut = child.WasCut();
  result.status = child.Finish();
  return result;
}

std::vector<CommandResult> RunCommands(const std::vector<Command>& commands) {
  std::vector<std::future<CommandResult>> running;
  for (const Command& command : commands)
    running.push_back(std::async(std::launch::async, RunCommand, std::cref(command)));
  std::vector<CommandResult> results;
  for (auto& each : running) results.push_back(each.get());
  return results;
}

Command BuildOwnCommand(std::vector<std::string> arguments, Bounds bounds) {
  arguments.insert(arguments.begin(), std::filesystem::read_symlink("/proc/self/exe"));
  if (!Root().empty()) arguments.insert(arguments.end(), {"--root", Root()});
  if (TrustsRoot()) arguments.emplace_back("--trust-root");
  return {std::move(arguments), bounds};
}

}  // namespace linux_platform

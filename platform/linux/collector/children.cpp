#include "platform/linux/collector/children.h"

#include <filesystem>
#include <future>

#include "platform/linux/base/root.h"

namespace linux_platform {
namespace {

Outcome Run(const Order& order) {
  Outcome outcome;
  Child child(order.arguments, order.bounds, outcome.reason);
  if (!child.Started()) return outcome;
  char buffer[4096];
  for (ssize_t got; (got = child.Read(buffer, sizeof buffer)) > 0;)
    outcome.output.append(buffer, static_cast<std::size_t>(got));
  outcome.cut = child.WasCut();
  outcome.status = child.Finish();
  return outcome;
}

}  // namespace

std::vector<Outcome> RunTogether(const std::vector<Order>& orders) {
  std::vector<std::future<Outcome>> running;
  for (const Order& order : orders)
    running.push_back(std::async(std::launch::async, Run, std::cref(order)));
  std::vector<Outcome> outcomes;
  for (auto& each : running) outcomes.push_back(each.get());
  return outcomes;
}

std::vector<std::string> ThisProgram(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), std::filesystem::read_symlink("/proc/self/exe"));
  const std::string root = BelowRoot("");
  if (!root.empty()) arguments.insert(arguments.end(), {"--root", root});
  return arguments;
}

}  // namespace linux_platform

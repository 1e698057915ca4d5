#include "platform/linux/base/descendants.h"

#include <signal.h>

#include <string>
#include <vector>

#include "platform/linux/base/sysfs.h"

namespace linux_platform {
namespace {

constexpr std::size_t kMost = 256;

void AppendChildren(pid_t parent, std::vector<pid_t>& family) {
  const std::string tasks = "/proc/" + std::to_string(parent) + "/task";
  for (const std::string& task : NamesIn(tasks)) {
    const std::string children = Attribute(Within(Within(tasks, task), "children"));
    for (std::size_t at = 0; at < children.size() && family.size() < kMost;) {
      const std::size_t end = std::min(children.find(' ', at), children.size());
      if (const auto child = ToNumber(children.substr(at, end - at)))
        family.push_back(static_cast<pid_t>(*child));
      at = end + 1;
    }
  }
}

}  // namespace

// A stopped process starts nothing and reaps nothing: the numbers of its children stay theirs
// until all are found and killed.
void KillWithDescendants(pid_t leader) {
  std::vector<pid_t> family = {leader};
  for (std::size_t i = 0; i < family.size(); ++i) {
    kill(family[i], SIGSTOP);
    AppendChildren(family[i], family);
  }
  for (const pid_t member : family) kill(member, SIGKILL);
  kill(-leader, SIGKILL);
}

}  // namespace linux_platform

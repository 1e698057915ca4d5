#include "platform/linux/base/program.h"

#include <sys/wait.h>

#include "platform/linux/base/root.h"

namespace linux_platform {

using std::chrono::milliseconds, std::chrono::steady_clock;

ProgramEnd RunProgram(std::vector<std::string> arguments, Bounds bounds, TimeBudget& budget,
                      std::string& output, int& status, std::string& reason) {
  const std::string name = arguments.at(0);
  arguments[0] = BelowRoot(name);
  output.clear();
  const bool wholeTurn = budget.GrantsWholeTurn(bounds.time);
  bounds.time = std::chrono::duration_cast<milliseconds>(budget.DeadlineFor(bounds.time) -
                                                         steady_clock::now());
  if (bounds.time <= milliseconds(0)) {
    reason = name + " was not run: other sources have used up the request's time";
    return ProgramEnd::NoTurn;
  }
  Child child(arguments, bounds, reason);
  if (!child.Started()) return ProgramEnd::NotStarted;
  char part[16384];
  for (ssize_t got; (got = child.Read(part, sizeof part)) > 0;)
    output.append(part, static_cast<std::size_t>(got));
  if (child.WasCut() == Child::Cut::Late) {
    reason = name + " was stopped: it did not finish within " +
             std::to_string(bounds.time.count()) + " ms";
    return wholeTurn ? ProgramEnd::Late : ProgramEnd::NoTurn;
  }
  if (child.WasCut() == Child::Cut::Long) {
    reason =
        name + " was stopped: it printed more than " + std::to_string(bounds.output) + " bytes";
    return ProgramEnd::Broken;
  }
  const int ended = child.Finish();
  if (ended == -1 || !WIFEXITED(ended)) {
    reason = name + " was ended by a signal, or its end is not known";
    return ProgramEnd::Broken;
  }
  status = WEXITSTATUS(ended);
  return ProgramEnd::Exited;
}

}  // namespace linux_platform

#include <iostream>

#include "host/cli/commands.h"
#include "host/cli/new_files.h"
#include "host/site/exposition.h"
#include "host/site/metric_families.h"

namespace host {

ExitStatus RunMetrics(Session& session, const std::string& file) {
  // A file of metrics begins so, whatever the machine has.
  if (!file.empty()) ExpectReplaceable(file, "# HELP vela_health_", "file of vela-health metrics");
  const SimulatedMachine machine = session.OpenMachine();
  const CompleteAnswer complete = AskForEverything(session.GetHost(), machine);
  const std::string text = Expose(CollectFamilies(complete, session.GetTexts()), Exposition::Text);
  if (file.empty())
    std::cout << text;
  else
    ReplaceFile(file, text, Readers::All);
  return kHealthy;
}

}  // namespace host

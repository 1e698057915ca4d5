// The options of the commands that have many, with their help.
#pragma once

#include "host/cli/commands.h"
#include "host/cli/serve_command.h"

namespace CLI {
class App;
}

namespace host {

// Their values go to `options`.
void AddNotifyOptions(CLI::App& notify, NotifyOptions& options);
void AddServeOptions(CLI::App& serve, ServeOptions& options);

}  // namespace host

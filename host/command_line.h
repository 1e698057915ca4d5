// The command line, from arguments to exit state.
#pragma once

namespace vela::host {

int RunCommandLine(int count, const char* const* arguments);

}  // namespace vela::host

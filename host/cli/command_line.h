// The command line, from arguments to exit state.
#pragma once

namespace host {

int RunCommandLine(int count, const char* const* arguments);

}  // namespace host

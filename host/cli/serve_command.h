// vela-health serve: the API over HTTP until a signal stops it.
#pragma once

#include <string>
#include <vector>

#include "host/cli/session.h"
#include "host/text/failure.h"

namespace host {

struct ServeOptions {
  std::string listen;  // as for ParseListenAddress
  int port = -1;       // in place of the one in `listen`; negative: not given
  bool allowRemote = false;
  std::vector<std::string> hostNames = {};  // under which it may be asked, beside its own
  bool demo = false;                        // previews of scenarios and the gallery of findings
};

// Says its address on standard output. Throws Failure.
ExitStatus RunServe(Session& session, const ServeOptions& options);

}  // namespace host

#include "host/cli/serve_command.h"

#include <malloc.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <iostream>

#include "host/cli/service_manager.h"
#include "host/cli/standard_output.h"
#include "host/http/http_server.h"
#include "host/http/listen_address.h"
#include "host/http/request_check.h"
#include "host/site/health_site.h"

namespace host {
namespace {

// From now on they wait, in this thread and in those that it starts; but for those that whoever
// started us ignores.
sigset_t HoldStopSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
    struct sigaction action = {};
    sigaction(number, nullptr, &action);
    if (action.sa_handler != SIG_IGN) sigaddset(&signals, number);
  }
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  return signals;
}

ListenAddress ParseAddress(const ServeOptions& options) {
  ListenAddress address = ParseListenAddress(options.listen);
  if (options.port >= 0) address.port = static_cast<std::uint16_t>(options.port);
  return address;
}

// A name to listen on is one to be asked under.
AllowedHosts ParseAllowedHosts(const ServeOptions& options) {
  std::vector<std::string> names = options.hostNames;
  names.push_back(ParseListenAddress(options.listen).host);
  return {options.allowRemote, names};
}

// A server that runs but can open nothing would answer nobody. It needs three for itself, one for a
// simulated machine, one for a connection, and one to read with.
void ExpectFreeDescriptors() {
  std::array<int, 6> taken;
  for (int& each : taken) each = dup(STDERR_FILENO);
  const bool all = taken.back() >= 0;
  for (const int each : taken) close(each);
  if (all) return;
  throw Failure(kUnavailable,
                "Cannot serve: this process may open too few files. Raise their number, such as "
                "with ulimit -n 1024.");
}

}  // namespace

ExitStatus RunServe(Session& session, const ServeOptions& options) {
  mallopt(M_ARENA_MAX, 2);  // one a thread would keep more memory than the threads save time
  ExpectFreeDescriptors();
  const ListenSocket socket(ParseAddress(options), options.allowRemote);
  const bool preview = options.demo && session.Options().scenario.empty();
  const SimulatedMachine machine =
      preview ? session.OpenScenario("healthy") : session.OpenMachine();
  const Host& host = session.GetHost();
  FindHealthMethod(host);  // no module, no service
  const HealthSite site(host, machine, session.GetPlaces().Data(), options.demo);
  const sigset_t signals = HoldStopSignals();
  ServiceManager manager;
  HttpServer server(socket, site, ParseAllowedHosts(options), {manager.ServersEnd()});
  malloc_trim(0);  // what reading the texts and starting took
  WriteOutput("Serving on " + socket.Url() + " (stop with Ctrl-C)\n");
  manager.TellReady(socket.Url());
  manager.AwaitSignal(signals);
  manager.TellStopping();
  pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);  // the next one ends it at once
  if (!server.Stop()) {
    std::cerr << "vela-health: stopped while a request was still waiting for the machine\n";
    std::_Exit(kHealthy);
  }
  return kHealthy;
}

}  // namespace host

#include <signal.h>
#include <syslog.h>
#include <unistd.h>

#include "host/cli/commands.h"
#include "host/cli/standard_output.h"

int main(int count, char** arguments) {
  host::OccupyMissingStreams();
  // The module writes its failures to the system log; a person at a terminal sees them, too.
  const int echo = isatty(STDERR_FILENO) != 0 ? LOG_PERROR : 0;
  openlog("vela-health", LOG_PID | echo, LOG_USER);
  signal(SIGXFSZ, SIG_IGN);  // a limit to files is an error of write(2), which has words
  signal(SIGPIPE, SIG_IGN);  // so is a reader who has gone
  return host::RunCommandLine(count, arguments);
}

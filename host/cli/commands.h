// The command line and its commands. All print to std::cout, which is held back until the
// command has come to its end, and throw Failure.
#pragma once

#include <string>

#include "host/cli/session.h"
#include "host/text/failure.h"

namespace host {

// From arguments to exit status; says on standard error what went wrong.
int RunCommandLine(int count, const char* const* arguments);

// The most urgent finding in words, what to do about it, and what was read.
ExitStatus RunStatus(Session& session);

// One line and performance data, as monitoring plug-ins print them.
ExitStatus RunCheck(Session& session);

// What each check saw and found, and why this finding won.
ExitStatus RunExplain(Session& session);

// The verdicts of two machines side by side: each is a scenario or a file with a saved answer.
// The exit status is b's.
ExitStatus RunDiff(Session& session, const std::string& a, const std::string& b);

// The findings of the catalogue that have the word in their title, their name or their check's;
// of an empty word all. On the terminal or as a Markdown page; as JSON with --json.
ExitStatus RunFindings(Session& session, const std::string& word, bool markdown);

// Makes the folder with state.json, whose `why` is the line for people (empty: when and what
// was captured), and expected.json, the answer. Aliases stand for names and serial numbers unless
// `realNames`. When it throws there is no folder.
ExitStatus RunCapture(Session& session, const std::string& folder, const std::string& why,
                      bool realNames);

struct NotifyOptions {
  std::string hooks = "/etc/vela-health/notify.d";  // the folder of what is run
  std::string state;  // the folder of what was told; empty: the unit's, else the usual one
  int timeout = 30;   // seconds that a hook may take
  bool test = false;  // a sample to every hook, and nothing is remembered
};

// Asks once, and runs the hooks when something is to be told. kHealthy: everything was delivered.
ExitStatus RunNotify(Session& session, const NotifyOptions& options);

// The metrics as node_exporter's textfile collector reads them, to the file, or to standard output
// when that is empty. A file that is there is replaced only when it holds such metrics; when it
// throws the file is what it was. kHealthy: written, whatever the machine's state.
ExitStatus RunMetrics(Session& session, const std::string& file);

// The answer as one page; "-" is standard output. A file that is there is replaced only when it
// is a report, too; when it throws the file is what it was.
ExitStatus RunReport(Session& session, const std::string& file);

}  // namespace host

// What SIGINT, SIGTERM, SIGHUP and SIGQUIT do, but for those that whoever started us ignores.
#pragma once

namespace host {

// From now on each ends the process at once, with all that it started; whoever waits for it sees
// that it died of the signal.
void EndAtStopSignals();

// For a command that finishes what runs: from now on they wait for AwaitStopSignal, in this thread
// and in those that it starts. Once that has seen one, the next ends the process after all.
void HoldStopSignals();
void AwaitStopSignal();

// Kills all that this process started, but for daemons, which made themselves nobody's children.
// What a SIGKILL does not end within 100 ms sits in the kernel and is left to its end. Calls only
// what a signal handler may.
void KillChildren();

}  // namespace host

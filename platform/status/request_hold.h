// Answer, parts and evidence from one look at the machine.
#pragma once

// --- The border to the host, found with dlsym. A platform may lack it.

extern "C" {
// From now on what this thread's requests read is kept and shared by them, until it is released:
// the document, its parts and its evidence then speak of the same moment, and the machine is looked
// at once. Pairs; one hold a thread.
__attribute__((visibility("default"))) void VELAPlatformHoldRequest();
__attribute__((visibility("default"))) void VELAPlatformReleaseRequest();
}

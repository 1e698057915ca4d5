// What deserves to be known and changes no answer, one function a matter. None opens a device or
// sleeps. docs/decisions/linux-notes.md has the marks and their reasons.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/base/deadline.h"
#include "platform/linux/storage/disks.h"

namespace linux_platform {

// All notes but those of drives and UPSes, which a request has read anyway. Waits half a second at
// most, for systemd.
void GatherNotes();

void TellDriveNotes(const std::vector<WholeDisk>& disks);
// Of one UPS, by its status words.
void TellUpsNotes(const std::string& name, std::string_view words);

void TellMemoryErrors();
// Of memory chips that are disks (eMMC).
void TellChipWear();
// Of arrays, mappings and scrubs, as the collector has seen them.
void TellCollectedNotes();
void TellBondLegs();

// The kernel's clock, as adjtimex(2) tells it.
struct KernelClock {
  bool unsynchronised = false;
  long maxError = 0;  // in microseconds; it grows while nobody sets the clock right
};
KernelClock ReadKernelClock();
void TellClock(const KernelClock& clock);

// Units of backup and storage.
void TellFailedUnits(TimeBudget& budget);

}  // namespace linux_platform

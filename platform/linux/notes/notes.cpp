#include "platform/linux/notes/notes.h"

namespace linux_platform {

// The weightier first: there is room for so many.
void GatherNotes() {
  TellMemoryErrors();
  TellCollectedNotes();
  TellChipWear();
  TimeBudget budget;
  TellFailedUnits(budget);
  TellBondLegs();
  TellClock(ReadKernelClock());
}

}  // namespace linux_platform

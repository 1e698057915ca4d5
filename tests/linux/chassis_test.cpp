// What the machines of machines_test.cpp do not tell of the chassis and its expansion units.
#include <gtest/gtest.h>

#include "tests/linux/machine_tree.h"
#include "tests/linux/source_statuses.h"
#include "velac.h"

namespace {

// The slots of all units; what the sources say is begun anew.
std::vector<int> ListSlots() {
  VELAPlatformSourcesReset();
  VELA_EBOX_INFO* list = nullptr;
  EXPECT_EQ(VELAEBoxInfoEnum(&list), 0);
  std::vector<int> slots;
  for (VELA_EBOX_INFO* unit = list; unit != nullptr; unit = unit->next)
    slots.push_back(unit->slotIndex);
  VELAEBoxInfoEnumFree(list);
  return slots;
}

TEST(Chassis, SlotsOfUnitsCountFromZeroAndEndAtABitThatNoMaskCanCarry) {
  const MachineTree machine("units-beyond-the-mask");
  const std::vector<int> slots = ListSlots();
  ASSERT_EQ(slots.size(), 34U);
  EXPECT_EQ(slots[0], 0);
  EXPECT_EQ(slots[30], 30);
  EXPECT_EQ(slots[33], 31);
}

TEST(Chassis, ThatThereIsNothingToWatchIsNoFailure) {
  const struct {
    const char *machine, *source;
    int state;
    const char* reason;
  } cases[] = {
      {"laptop-on-battery", "expansion units", 0, "no enclosure with SES"},
      {"laptop-on-battery", "hardware", 0,
       "no sensor chips, management controller or second mains adapter"},
      {"enclosures-that-are-no-units", "expansion units", 0, "no enclosure is an expansion unit"},
      {"full", "expansion units", 1, ""},
      {"full", "hardware", 1, ""},
      {"controller-with-odd-members", "hardware", 1, ""},
      {"two-mains-one-out", "hardware", 1, ""},
      {"parts-that-predict-their-end", "hardware", 1,
       "supply PS2 still works, and predicts its own failure"},
      {"parts-that-predict-their-end", "expansion units", 1,
       "Right of JBOD-24 still works, and predicts its own failure"},
      {"parts-that-are-gone", "hardware", 1, "supply PS2 is gone"},
      {"parts-that-are-gone", "expansion units", 1, "Right of JBOD-24 is gone"},
      {"enclosure-inside", "expansion units", 0, "no enclosure with SES"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.machine) + ", " + c.source);
    const MachineTree machine(c.machine);
    ListSlots();
    VELARedundantPowerSupport();
    EXPECT_EQ(SourceReports()[c.source].state, c.state);
    EXPECT_EQ(SourceReports()[c.source].reason, c.reason);
  }
}

}  // namespace

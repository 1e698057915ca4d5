// What the machines of machines_test.cpp do not tell of expansion units.
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

TEST(ExpansionUnits, SlotsCountFromZeroAndEndAtABitThatNoMaskCanCarry) {
  const MachineTree machine("units-beyond-the-mask");
  const std::vector<int> slots = ListSlots();
  ASSERT_EQ(slots.size(), 34U);
  EXPECT_EQ(slots[0], 0);
  EXPECT_EQ(slots[30], 30);
  EXPECT_EQ(slots[33], 31);
}

TEST(ExpansionUnits, ThatThereIsNoneIsNoFailure) {
  const struct {
    const char* machine;
    std::size_t units;
    int state;
    const char* reason;
  } cases[] = {
      {"laptop-on-battery", 0, 0, "no enclosure with SES"},
      {"enclosures-that-are-no-units", 0, 0, "no enclosure is an expansion unit"},
      {"full", 1, 1, ""},
  };
  for (const auto& c : cases) {
    const MachineTree machine(c.machine);
    EXPECT_EQ(ListSlots().size(), c.units) << c.machine;
    EXPECT_EQ(SourceReports()["expansion units"].state, c.state) << c.machine;
    EXPECT_EQ(SourceReports()["expansion units"].reason, c.reason) << c.machine;
  }
  EXPECT_EQ(VELAEBoxInfoEnum(nullptr), -1);
}

}  // namespace

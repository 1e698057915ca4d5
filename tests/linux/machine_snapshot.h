// A root whose collector has just written what a test wants to be known.
#pragma once

#include <ctime>
#include <string>

#include "tests/linux/temporary_root.h"

class MachineSnapshot : public TemporaryRoot {
 public:
  MachineSnapshot() { TemporaryRoot::Write("/proc/sys/kernel/random/boot_id", "this-boot\n"); }
  // `members` are the source's own: "\"fans\": []". `age` in seconds.
  void Write(const std::string& source, const std::string& members, int age = 0) const {
    TemporaryRoot::Write("/run/vela-platform/" + source + ".json",
                         R"({"boot_id": "this-boot", "period": 60, "written": )" +
                             std::to_string(std::time(nullptr) - age) + ", " + members + "}");
  }
};

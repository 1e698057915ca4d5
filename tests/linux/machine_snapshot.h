// A root whose collector has just written what a test wants to be known, and whose programs are
// scripts of the test's own.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

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
  void Install(const std::string& program, const std::string& script) const {
    using std::filesystem::permissions, std::filesystem::perms;
    permissions(Path(), perms(0755));
    permissions(TemporaryRoot::Write(program, "#!/bin/sh\n" + script + "\n"), perms(0755));
  }
};

// What `ask` gets as the installed service does: as a user who is neither root nor in any group
// of interest. Needs root.
template <typename Ask>
auto AsNobody(const Ask& ask) {
  EXPECT_EQ(setresuid(65534, 65534, 0), 0);
  auto answer = ask();
  EXPECT_EQ(setresuid(0, 0, 0), 0);
  return answer;
}

// A machine made of small files: /proc, /etc, /run and /var below a throw-away root, and a /sys.
//
// A folder of tests/fixtures/linux/machines/ is a machine as data: two text files. "tree" says what
// it is made of, one thing a line:
//   # why this machine is here
//   base NAME                     all of that machine first
//   disk sda pci0/ata1 8:0 2      a whole disk: its place below /sys/devices, number, partitions
//   over md0 9:0 sda1 sdb1        an array or mapping over other devices
//   /path = text                  a file of this one line
//   /path                         a file of the lines that follow, indented by two blanks
//   /path -> /other               a link within the tree
//   - /path                       taken away again
// In paths of files and texts {now} is the time in seconds since 1970, {now-181} an earlier one,
// \xHH a byte, {root} the folder that all lies in, {fixtures} tests/fixtures/linux, {device} the
// number of the real root's device. What begins with "#!" is a program. "expected" is all that the
// platform says of it (machines_test.cpp walks all folders), "san" what the SAN tool says
// (san_tool_test.cpp). A folder with neither is a base of others.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <string>
#include <string_view>
#include <vector>

#include "tests/linux/temporary_root.h"

class MachineTree : public TemporaryRoot {
 public:
  MachineTree();
  // The machine of that folder.
  explicit MachineTree(const std::string& name) : MachineTree() { Load(name); }
  ~MachineTree();

  // The names of all machines that have that file.
  static std::vector<std::string> ListThoseWith(const std::string& file);
  // What a machine's file holds.
  static std::string Read(const std::string& name, const std::string& file);
  // A machine's name as a test's.
  static std::string GetTestName(const testing::TestParamInfo<std::string>& machine) {
    return std::regex_replace(machine.param, std::regex("-"), "_");
  }

  // Adds what the lines of that machine's "tree" say.
  void Load(const std::string& name) const;

  // The same of one line.
  void AddLine(const std::string& line) const;

  // A whole disk `name` on `bus`, a path below /sys/devices, with `partitions` numbered from 1.
  void Disk(const std::string& name, const std::string& bus, int major, int minor,
            int partitions = 0) const;
  void Mounts(const std::string& text) const { Write("/proc/self/mountinfo", text); }

 private:
  // A mapping or array over other devices.
  void Mapped(const std::string& name, int major, int minor,
              const std::vector<std::string>& below) const;
  void Link(const std::string& from, const std::string& to) const;
  void LoadLine(const std::string& line, std::istream& rest) const;
  void Device(const std::string& name, const std::string& folder, int major, int minor) const;
};

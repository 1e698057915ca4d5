// A machine made of small files: /proc and /etc below a throw-away root, and a /sys.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "platform/linux/base/sysfs.h"
#include "tests/linux/temporary_root.h"

class MachineTree : public TemporaryRoot {
 public:
  MachineTree() {
    linux_platform::SetSysRoot((Path() / "sys").string());
    Write("/sys/dev/block/.here", "");
    Write("/sys/class/block/.here", "");
    Write("/sys/block/.here", "");
    Write("/proc/swaps", "Filename Type Size Used Priority\n");
  }
  ~MachineTree() { linux_platform::SetSysRoot("/sys"); }

  // A whole disk `name` on `bus`, a path below /sys/devices, with `partitions`
  // numbered from 1. `number` is its device number: "8:0".
  void Disk(const std::string& name, const std::string& bus, int major, int minor,
            int partitions = 0) const {
    const std::string folder = "/sys/devices/" + bus + "/block/" + name;
    Device(name, folder, major, minor);
    Link("/sys/block/" + name, folder);
    for (int i = 1; i <= partitions; ++i) {
      const std::string part = name + (isdigit(name.back()) != 0 ? "p" : "") + std::to_string(i);
      Device(part, folder + "/" + part, major, minor + i);
      Write(folder + "/" + part + "/partition", std::to_string(i) + "\n");
    }
  }

  // A mapping or array over other devices.
  void Mapped(const std::string& name, int major, int minor,
              const std::vector<std::string>& below) const {
    const std::string folder = "/sys/devices/virtual/block/" + name;
    Device(name, folder, major, minor);
    Link("/sys/block/" + name, folder);
    for (const std::string& device : below)
      std::filesystem::create_symlink(
          std::filesystem::canonical(Path().string() + "/sys/class/block/" + device),
          MadeFolder(folder + "/slaves") / device);
  }

  struct Member {
    const char *device, *state, *slot;
  };
  // An md array with its attributes.
  void Array(const std::string& name, int minor, const std::string& level, const std::string& state,
             int disks, int degraded, const std::vector<Member>& members) const {
    std::vector<std::string> below;
    for (const Member& member : members) below.emplace_back(member.device);
    Mapped(name, 9, minor, below);
    const std::string folder = "/sys/devices/virtual/block/" + name + "/md/";
    Write(folder + "level", level + "\n");
    Write(folder + "array_state", state + "\n");
    Write(folder + "metadata_version", "1.2\n");
    Write(folder + "raid_disks", std::to_string(disks) + "\n");
    Write(folder + "degraded", std::to_string(degraded) + "\n");
    for (const Member& member : members) {
      const std::string own = folder + "dev-" + member.device + "/";
      Write(own + "state", std::string(member.state) + "\n");
      Write(own + "slot", std::string(member.slot) + "\n");
      Write(own + "block/size", "1\n");
    }
  }

  void Mounts(const std::string& text) const { Write("/proc/self/mountinfo", text); }
  void Link(const std::string& from, const std::string& to) const {
    std::filesystem::create_directories(
        (Path().string() + from).substr(0, (Path().string() + from).rfind('/')));
    std::filesystem::create_symlink(Path().string() + to, Path().string() + from);
  }

 private:
  std::filesystem::path MadeFolder(const std::string& path) const {
    std::filesystem::create_directories(Path().string() + path);
    return Path().string() + path;
  }
  void Device(const std::string& name, const std::string& folder, int major, int minor) const {
    Write(folder + "/size", "2048\n");
    Write(folder + "/dev", std::to_string(major) + ":" + std::to_string(minor) + "\n");
    Link("/sys/class/block/" + name, folder);
    Link("/sys/dev/block/" + std::to_string(major) + ":" + std::to_string(minor), folder);
  }
};

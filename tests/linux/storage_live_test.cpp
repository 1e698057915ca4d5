// Real file systems in files, brought into real trouble. Loop devices are no volumes, so
// the mount table's real lines are shown with a disk's device number.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <fstream>

#include "tests/linux/machine_tree.h"
#include "vela_storage.h"

namespace {

using VELA::ZRT::STORAGE_MANAGER::Space;
using VELA::ZRT::STORAGE_MANAGER::Volume;

class LoopVolume {
 public:
  LoopVolume(const std::string& type, const std::string& options) {
    const std::string image = folder_.Write("/image", "").string();
    std::filesystem::create_directory(folder_.Path() / "mounted");
    mounted_ = Shell("truncate -s 400M " + image + "; mkfs." + type + " -q " + image +
                     "; mount -o loop" + options + " " + image + " " + Target());
  }
  ~LoopVolume() { system(("umount -l " + Target() + " 2>/dev/null").c_str()); }
  LoopVolume(const LoopVolume&) = delete;
  LoopVolume& operator=(const LoopVolume&) = delete;

  bool Mounted() const { return mounted_; }
  std::string Target() const { return (folder_.Path() / "mounted").string(); }
  static bool Shell(const std::string& commands) {
    return system(("PATH=$PATH:/sbin:/usr/sbin; set -e; { " + commands + "; } >/dev/null 2>&1")
                      .c_str()) == 0;
  }

  // What the platform says of it now.
  std::string Status() const {
    std::ifstream table("/proc/self/mountinfo");
    std::string line, found;
    while (std::getline(table, line))
      if (line.find(Target()) != std::string::npos) found = line;
    const std::size_t number = found.find(" 7:");
    if (number == std::string::npos) return "not mounted";
    MachineTree machine;
    machine.Mounts(found.replace(number, 3, " 8:") + "\n");
    std::filesystem::remove_all(machine.Path() / "sys/dev");  // as in a container
    const Space space(23);
    return space.GetAll() == nullptr ? "no volume" : Volume::ToJsonSpaceStatus(*space.GetAll());
  }

 private:
  TemporaryRoot folder_;
  bool mounted_ = false;
};

TEST(LiveStorage, AnXfsThatShutDownHasCrashed) {
  const LoopVolume volume("xfs", "");
  if (!volume.Mounted()) GTEST_SKIP() << "needs root, loop devices and xfsprogs";
  EXPECT_EQ(volume.Status(), "normal");
  ASSERT_TRUE(LoopVolume::Shell("xfs_io -x -c shutdown " + volume.Target()));
  EXPECT_EQ(volume.Status(), "crashed");
}

TEST(LiveStorage, AnExt4ThatMetAnErrorHasCrashedAndARemountedOneHasNot) {
  const LoopVolume volume("ext4", ",errors=remount-ro");
  if (!volume.Mounted()) GTEST_SKIP() << "needs root, loop devices and e2fsprogs";
  EXPECT_EQ(volume.Status(), "normal");
  ASSERT_TRUE(LoopVolume::Shell("mount -o remount,ro " + volume.Target()));
  EXPECT_EQ(volume.Status(), "no volume") << "read-only by choice";
  ASSERT_TRUE(LoopVolume::Shell("mount -o remount,rw " + volume.Target()));
  ASSERT_TRUE(LoopVolume::Shell("echo test > /sys/fs/ext4/$(basename $(findmnt -no SOURCE " +
                                volume.Target() + "))/trigger_fs_error"));
  EXPECT_EQ(volume.Status(), "crashed");
}

}  // namespace

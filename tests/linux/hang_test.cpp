// Mounts that never answer, in a mount namespace of the test's own: a request must not
// touch them. A request that does hangs in the kernel, so it runs in a child.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "tests/linux/machine_tree.h"
#include "vela_storage.h"
#include "velac.h"

namespace {

using namespace std::chrono_literals;
using VELA::ZRT::STORAGE_MANAGER::Space;
using Manager = VELA::ZRT::STORAGE_MANAGER::Volume;

// All that a request asks of the storage.
void Ask() {
  for (const int volumeClass : {8, 4}) VELAMountVolInfoFree(VELAMountVolAllEnum(0, volumeClass, 0));
  const Space space(23);
  for (const auto* record = space.GetAll(); record != nullptr; record = record->next) {
    _tag_volume_usage usage = {};
    FS_INFO* info = nullptr;
    Manager::GetVolumeFSInfo(record->path, usage, info);
  }
  Space::GetOverviewStatus();
  VELA::ZRT::STORAGE_WEBUTILS::Volume::IsSystemVolCrashed();
}

bool IsReaped(pid_t child, std::chrono::milliseconds bound) {
  const auto end = std::chrono::steady_clock::now() + bound;
  while (std::chrono::steady_clock::now() < end) {
    if (waitpid(child, nullptr, WNOHANG) == child) return true;
    std::this_thread::sleep_for(5ms);
  }
  return false;
}

template <typename Body>
bool EndsWithin(std::chrono::milliseconds bound, const Body& body) {
  const pid_t child = fork();
  if (child == 0) {
    body();
    _exit(0);
  }
  if (IsReaped(child, bound)) return true;
  kill(child, SIGKILL);
  IsReaped(child, 1s);  // what it waited for is pending until it is dead, if it can be
  return false;
}

class HangingMount : public testing::Test {
 protected:
  void SetUp() override {
    if (unshare(CLONE_NEWNS) != 0 || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
      GTEST_SKIP() << "needs root";
    machine_.Disk("sda", "pci0000:00/ata1/host0/target0:0:0/0:0:0:0", 8, 0, 2);
    target_ = machine_.Path().string() + "/hangs";
    std::filesystem::create_directory(target_);
  }
  // The children go first: a look-up of the mount point would join those that wait there.
  void TearDown() override {
    for (const int end : ends_)
      if (end >= 0) close(end);
    for (int i = 0; i < 200 && waitpid(-1, nullptr, WNOHANG) >= 0; ++i)
      std::this_thread::sleep_for(10ms);
    umount2(target_.c_str(), MNT_DETACH);
  }

  // A FUSE file system whose server never reads a request.
  bool MountFuse() {
    ends_[0] = open("/dev/fuse", O_RDWR | O_CLOEXEC);
    const std::string options =
        "fd=" + std::to_string(ends_[0]) + ",rootmode=40000,user_id=0,group_id=0";
    return ends_[0] >= 0 && mount("silent", target_.c_str(), "fuse", 0, options.c_str()) == 0;
  }
  // An automount whose daemon never answers.
  bool MountAutofs() {
    if (pipe2(ends_, O_CLOEXEC) != 0) return false;
    // The daemon's own group would pass: it is put elsewhere.
    const pid_t other = fork();
    if (other == 0) setpgid(0, 0), pause(), _exit(0);
    setpgid(other, other);
    const std::string options = "fd=" + std::to_string(ends_[1]) +
                                ",pgrp=" + std::to_string(other) + ",minproto=5,maxproto=5,direct";
    const bool mounted = mount("silent", target_.c_str(), "autofs", 0, options.c_str()) == 0;
    kill(other, SIGKILL);
    waitpid(other, nullptr, 0);
    return mounted;
  }

  MachineTree machine_;
  std::string target_;
  int ends_[2] = {-1, -1};
};

TEST_F(HangingMount, AVolumeBehindASilentFuseIsNotAskedFor) {
  if (!MountFuse()) GTEST_SKIP() << "no FUSE here";
  ASSERT_FALSE(EndsWithin(300ms, [this] { access((target_ + "/x").c_str(), F_OK); }))
      << "it was meant to hang";
  machine_.Mounts("1 0 8:1 / / rw - ext4 /dev/none/sda1 rw\n2 1 0:50 / " + target_ +
                  " rw - fuse.silent silent rw\n3 2 8:2 / " + target_ +
                  "/x rw - ext4 /dev/none/sda2 rw\n");
  EXPECT_TRUE(EndsWithin(2s, Ask));
}

TEST_F(HangingMount, AnAutomountIsNotSetOff) {
  if (!MountAutofs()) GTEST_SKIP() << "no autofs here";
  ASSERT_FALSE(EndsWithin(300ms, [this] { close(open(target_.c_str(), O_PATH | O_DIRECTORY)); }))
      << "it was meant to hang";
  // As after an expiry between the reading of the table and the look at the volume.
  machine_.Mounts("1 0 8:1 / / rw - ext4 /dev/none/sda1 rw\n2 1 8:2 / " + target_ +
                  " rw - ext4 /dev/none/sda2 rw\n");
  EXPECT_TRUE(EndsWithin(2s, Ask));
}

}  // namespace

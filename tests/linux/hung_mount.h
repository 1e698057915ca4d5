// Mounts that never answer: whoever asks sits in the kernel until the mount is gone.
#pragma once

#include <fcntl.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <thread>

#include <linux/fuse.h>

class HungMount {
 public:
  explicit HungMount(const std::string& folder)
      : folder_(folder), device_(open("/dev/fuse", O_RDWR | O_CLOEXEC)) {
    const std::string options =
        "fd=" + std::to_string(device_) + ",rootmode=40000,user_id=0,group_id=0,allow_other";
    isThere_ = device_ >= 0 &&
               mount("hung", folder.c_str(), "fuse", MS_NOSUID | MS_NODEV, options.c_str()) == 0;
    if (!isThere_) return;
    Greet();
    reader_ = std::thread([this] { TakeRequests(); });
  }
  // By force: that ends the connection, and with it every wait.
  ~HungMount() {
    if (isThere_) umount2(folder_.c_str(), MNT_FORCE | MNT_DETACH);
    if (reader_.joinable()) reader_.join();
    if (device_ >= 0) close(device_);
  }
  HungMount(const HungMount&) = delete;
  HungMount& operator=(const HungMount&) = delete;

  bool IsThere() const { return isThere_; }

 private:
  // The first request must be answered, or the ones that follow are not even sent.
  void Greet() {
    alignas(8) char request[64 << 10];
    if (read(device_, request, sizeof request) <= 0) return;
    fuse_in_header header;
    std::memcpy(&header, request, sizeof header);
    struct {
      fuse_out_header header;
      fuse_init_out init;
    } answer = {};
    answer.header.len = sizeof answer;
    answer.header.unique = header.unique;
    answer.init.major = FUSE_KERNEL_VERSION;
    answer.init.minor = FUSE_KERNEL_MINOR_VERSION;
    answer.init.max_write = 4096;
    isThere_ = write(device_, &answer, sizeof answer) == sizeof answer;
  }

  // Who asked can be killed until the request is taken, and then no more.
  void TakeRequests() {
    alignas(8) char request[64 << 10];
    while (read(device_, request, sizeof request) > 0 || errno == EINTR) {
    }
  }

  std::string folder_;
  int device_;
  bool isThere_ = false;
  std::thread reader_;
};

// An automount whose daemon never answers.
class UnansweredAutomount {
 public:
  explicit UnansweredAutomount(const std::string& folder) : folder_(folder) {
    if (pipe2(ends_, O_CLOEXEC) != 0) return;
    // The daemon's own group would pass: it is put elsewhere.
    const pid_t other = fork();
    if (other == 0) setpgid(0, 0), pause(), _exit(0);
    setpgid(other, other);
    const std::string options = "fd=" + std::to_string(ends_[1]) +
                                ",pgrp=" + std::to_string(other) + ",minproto=5,maxproto=5,direct";
    isThere_ = mount("silent", folder.c_str(), "autofs", 0, options.c_str()) == 0;
    kill(other, SIGKILL);
    waitpid(other, nullptr, 0);
  }
  ~UnansweredAutomount() {
    for (const int end : ends_)
      if (end >= 0) close(end);
    if (isThere_) umount2(folder_.c_str(), MNT_DETACH);
  }
  UnansweredAutomount(const UnansweredAutomount&) = delete;
  UnansweredAutomount& operator=(const UnansweredAutomount&) = delete;

  bool IsThere() const { return isThere_; }

 private:
  std::string folder_;
  int ends_[2] = {-1, -1};
  bool isThere_ = false;
};

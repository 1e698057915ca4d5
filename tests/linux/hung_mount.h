// A mount that never answers: whoever asks sits in the kernel until the mount is gone.
#pragma once

#include <fcntl.h>
#include <sys/mount.h>
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

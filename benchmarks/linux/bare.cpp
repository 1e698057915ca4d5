#include <dirent.h>
#include <fcntl.h>
#include <linux/if_addr.h>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/vfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <string>
#include <vector>

#include "benchmarks/linux/sides.h"
#include "platform/linux/storage_view.h"

namespace {

std::array<char, 32768> buffer;

template <typename Header>
void Dump(int socket, unsigned short type) {
  struct {
    nlmsghdr message;
    alignas(NLMSG_ALIGNTO) Header header;
    rtattr attribute;
    unsigned mask;
  } request = {};
  const bool links = type == RTM_GETLINK;
  request.message.nlmsg_len = links ? sizeof request : NLMSG_LENGTH(sizeof(Header));
  request.message.nlmsg_type = type;
  request.message.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
  request.attribute = {RTA_LENGTH(sizeof(unsigned)), IFLA_EXT_MASK};
  request.mask = 1 << 3;  // no statistics
  send(socket, &request, request.message.nlmsg_len, 0);
  for (bool done = false; !done;) {
    auto left = static_cast<unsigned>(recv(socket, buffer.data(), buffer.size(), 0));
    for (auto* each = reinterpret_cast<nlmsghdr*>(buffer.data()); NLMSG_OK(each, left);
         each = NLMSG_NEXT(each, left))
      done = done || each->nlmsg_type == NLMSG_DONE || each->nlmsg_type == NLMSG_ERROR;
  }
}

void ReadFile(const char* path) {
  const int file = open(path, O_RDONLY | O_CLOEXEC);
  if (file < 0) return;
  while (read(file, buffer.data(), buffer.size()) > 0) continue;
  close(file);
}

void ListFolder(const char* path) {
  DIR* folder = opendir(path);
  if (folder == nullptr) return;
  while (readdir(folder) != nullptr) continue;
  closedir(folder);
}

// What the disks and volumes of this machine are known by, found out beforehand.
struct Known {
  std::vector<std::string> volumes, links, attributes;
};
const Known& Machine() {
  static const Known known = [] {
    Known found;
    const auto view = vela::linuxplatform::ReadStorage();
    for (const auto& volume : view.volumes) {
      found.volumes.push_back(volume.path);
      if (volume.disks.empty()) continue;
      found.links.push_back("/sys/dev/block/" + std::to_string(major(volume.device)) + ":" +
                            std::to_string(minor(volume.device)));
      found.attributes.push_back("/sys/block/" + volume.disks.front() + "/size");
      if (volume.type == "ext4")
        found.attributes.push_back("/sys/fs/ext4/" + volume.disks.front() + "/errors_count");
    }
    for (const auto& disk : view.disks) {
      found.links.push_back("/sys/block/" + disk.device);
      if (disk.device.starts_with("sd"))
        found.attributes.push_back("/sys/block/" + disk.device + "/device/state");
    }
    return found;
  }();
  return known;
}

}  // namespace

void BareNetwork() {
  const int socket = ::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE);
  sockaddr_nl address = {};
  address.nl_family = AF_NETLINK;
  bind(socket, reinterpret_cast<sockaddr*>(&address), sizeof address);
  Dump<ifinfomsg>(socket, RTM_GETLINK);
  Dump<ifaddrmsg>(socket, RTM_GETADDR);
  close(socket);
}

void BareStorage() {
  for (const char* path :
       {"/etc/velainfo.conf", "/etc/fstab", "/proc/self/mountinfo", "/proc/swaps"})
    ReadFile(path);
  ListFolder("/sys/block");
  for (const std::string& volume : Machine().volumes) {
    const int root = open(volume.c_str(), O_PATH | O_CLOEXEC);
    struct stat status;
    struct statfs figures;
    fstat(root, &status);
    fstatfs(root, &figures);
    close(root);
  }
  for (const std::string& link : Machine().links)
    if (readlink(link.c_str(), buffer.data(), buffer.size()) < 0) continue;
  ListFolder("/var/lib/vela-platform/smart");
  ListFolder("/sys/class/enclosure");
  for (const std::string& attribute : Machine().attributes) ReadFile(attribute.c_str());
}

void BareFork() {
  const pid_t child = fork();
  if (child == 0) {
    execl("/bin/true", "true", nullptr);
    _exit(127);
  }
  waitpid(child, nullptr, 0);
}

#include <dirent.h>
#include <fcntl.h>
#include <linux/if_addr.h>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysinfo.h>
#include <sys/sysmacros.h>
#include <sys/vfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <string>
#include <vector>

#include "benchmarks/linux/sides.h"
#include "platform/linux/base/root.h"
#include "platform/linux/base/settings.h"
#include "platform/linux/base/sysfs.h"
#include "platform/linux/storage/block.h"
#include "platform/linux/storage/md.h"
#include "platform/linux/storage/storage_view.h"

using namespace linux_platform;

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

// One page at most, in one read.
void ReadAttribute(const char* path) {
  const int file = open(path, O_RDONLY | O_CLOEXEC);
  if (file < 0) return;
  static_cast<void>(read(file, buffer.data(), buffer.size()) > 0);
  close(file);
}

void ListFolder(const char* path) {
  DIR* folder = opendir(path);
  if (folder == nullptr) return;
  while (readdir(folder) != nullptr) continue;
  closedir(folder);
}

// What the disks, arrays and volumes of a machine are known by, found out beforehand.
struct Known {
  std::vector<std::string> volumes, links, there, folders, attributes;
};

void AddArray(const std::string& name, Known& known) {
  const std::string folder = Sys("/block/" + name + "/md/");
  known.there.push_back(folder);
  known.folders.push_back(folder);
  for (const char* attribute :
       {"level", "array_state", "metadata_version", "raid_disks", "degraded"})
    known.attributes.push_back(folder + attribute);
  for (const auto& member : ReadMdArray(name).members) {
    const std::string own = folder + "dev-" + member.device;
    known.attributes.push_back(own + "/state");
    known.attributes.push_back(own + "/slot");
    known.there.push_back(own + "/block");
    known.links.push_back(Sys("/class/block/" + member.device));
    known.there.push_back(Sys("/class/block/" + member.device) + "/partition");
  }
  known.attributes.push_back(BelowRoot("/etc/mdadm/mdadm.conf"));
}

Known FindOut() {
  Known known;
  const auto view = linux_platform::ReadStorage(linux_platform::Settings());
  for (const auto& volume : view.volumes) {
    known.volumes.push_back(volume.path);
    if (volume.disks.empty()) continue;
    known.links.push_back(Sys("/dev/block/" + std::to_string(major(volume.device)) + ":" +
                              std::to_string(minor(volume.device))));
    known.attributes.push_back(Sys("/block/" + volume.disks.front() + "/size"));
    known.attributes.push_back(Sys("/fs/ext4/" + volume.disks.front() + "/errors_count"));
  }
  for (const std::string& name : ListBlockDevices())
    if (name.starts_with("md")) AddArray(name, known);
  for (const auto& disk : view.disks) {
    known.links.push_back(Sys("/class/block/" + disk.device));
    if (disk.device.starts_with("sd"))
      known.attributes.push_back(Sys("/block/" + disk.device + "/device/state"));
  }
  return known;
}

// Of the machine that is entered now.
const Known& Machine() {
  static std::string root;
  static Known known = FindOut();
  if (root != BelowRoot("/")) root = BelowRoot("/"), known = FindOut();
  return known;
}

void LookFor(const std::string& path) { static_cast<void>(access(path.c_str(), F_OK) == 0); }

void ReadBelow(const char* path) { ReadFile(BelowRoot(path).c_str()); }

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
  ReadBelow("/etc/velainfo.conf");
  ReadBelow("/etc/fstab");
  ReadBelow("/proc/self/mountinfo");
  ReadBelow("/proc/swaps");
  ListFolder(Sys("/block").c_str());
  const Known& machine = Machine();
  for (const std::string& volume : machine.volumes) {
    const int root = open(volume.c_str(), O_PATH | O_CLOEXEC);
    struct stat status;
    struct statfs figures;
    fstat(root, &status);
    fstatfs(root, &figures);
    close(root);
  }
  for (const std::string& link : machine.links)
    if (readlink(link.c_str(), buffer.data(), buffer.size()) < 0) continue;
  for (const std::string& path : machine.there) LookFor(path);
  for (const std::string& folder : machine.folders) ListFolder(folder.c_str());
  ListFolder(BelowRoot("/var/lib/vela-platform/smart").c_str());
  LookFor(Sys("/class/enclosure"));
  for (const std::string& attribute : machine.attributes) ReadAttribute(attribute.c_str());
}

// What is left: hardware, daemons and the rest, none of which this machine needs to have.
void BareAnswer() {
  BareStorage();
  ReadBelow("/etc.defaults/velainfo.conf");
  ReadBelow("/etc/nut/nut.conf");
  ListFolder(Sys("/class/hwmon").c_str());
  ListFolder(Sys("/class/power_supply").c_str());
  ReadBelow("/run/vela-platform/ipmi.json");
  ReadBelow("/run/vela-platform/ses.json");
  ReadFile("/var/lib/securityscan/systemResult.json");
  for (const char* path : {"/usr/sbin/nginx", "/usr/sbin/apache2ctl", "/usr/sbin/lighttpd",
                           "/run/systemd/system", "/usr/sbin/crm_mon", "/proc/drbd"})
    LookFor(BelowRoot(path));
  struct stat status;
  stat(BelowRoot("/usr/local/bin/velaiscsiep").c_str(), &status);
  gethostname(buffer.data(), buffer.size());
  struct sysinfo uptime;
  sysinfo(&uptime);
  BareNetwork();
  LookFor("/sys/class/net/eth0/phy80211");
}

void BareFork() {
  const pid_t child = fork();
  if (child == 0) {
    execl("/bin/true", "true", nullptr);
    _exit(127);
  }
  waitpid(child, nullptr, 0);
}

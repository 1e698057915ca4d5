// A machine of tests/fixtures/linux/machines/ as it stands here: over the real root, with a bus,
// a UPS server and programs that are all well.
#pragma once

#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cstdio>
#include <ctime>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tests/linux/fake_server.h"
#include "tests/linux/hung_mount.h"
#include "tests/linux/machine_tree.h"
#include "tests/linux/private_bus.h"

// Of the lines, what follows `word` in those that begin with it.
inline std::vector<std::string> With(const std::vector<std::string>& lines,
                                     const std::string& word) {
  std::vector<std::string> found;
  for (const std::string& line : lines)
    if (line.starts_with(word + " ")) found.push_back(line.substr(word.size() + 1));
  return found;
}

// "UPS, SAN": the sources that failed.
inline std::string FailedIn(const std::vector<std::string>& lines) {
  std::string names;
  for (const std::string& source : With(lines, "source"))
    if (const std::size_t end = source.find(": failed"); end != std::string::npos)
      names += (names.empty() ? "" : ", ") + source.substr(0, end);
  return names;
}

// Milliseconds: the longest answer's, and what each took once what hangs was left alone.
inline std::pair<double, double> TimesIn(const std::vector<std::string>& lines) {
  std::pair<double, double> times = {};
  for (const std::string& line : With(lines, "longest"))
    sscanf(line.c_str(), "%lf ms, then %lf", &times.first, &times.second);
  return times;
}

class FullMachine : public MachineTree {
 public:
  explicit FullMachine(const std::string& name = "full") : MachineTree(name) {
    struct stat root = {};
    stat("/", &root);
    // The real root, or there is nothing to measure; a disk of its own where it has a number.
    root_ = std::to_string(major(root.st_dev)) + ":" + std::to_string(minor(root.st_dev));
    Disk("vda", "pci0/virtio0", static_cast<int>(major(root.st_dev)),
         static_cast<int>(minor(root.st_dev)));
    AlsoMounted("");
    Write("/proc/net/unix", "0: 2 0 10000 1 01 1 @pacemakerd\n");
    Collected(0);
    Program("/usr/sbin/nginx", "exit 0");
    Program("/usr/local/bin/velaiscsiep", "echo '{\"luns\": [], \"volumes\": []}'");
    Program("/usr/sbin/crm_mon", "cat " FIXTURES "/ha/normal.xml");
    bus = std::make_unique<PrivateBus>(*this);
    bus->Say("nginx.service", "LoadState", "loaded");
    bus->Say("nginx.service", "ActiveState", "active");
    bus->Say("pacemaker.service", "ActiveState", "active");
    Upsd([](int client) {
      while (FakeServer::Line(client).starts_with("GET VAR"))
        FakeServer::Send(client, "VAR rack ups.status \"OL\"\n");
    });
  }

  // Lets `serve` be the UPS server.
  void Upsd(std::function<void(int client)> serve) {
    upsd_ = std::make_unique<FakeServer>(std::move(serve));
    Write("/etc/velainfo.conf", "ups.monitor=rack@127.0.0.1:" + upsd_->Port() + "\n");
  }
  // A program of the machine: it and what it starts leave their numbers in "started".
  void Program(const std::string& path, const std::string& script) const {
    std::filesystem::permissions(
        Write(path,
              "#!/bin/sh\necho $$ >> " + (Path() / "started").string() + "\n" + script + "\n"),
        std::filesystem::perms(0755));
  }
  std::string Hang() const {
    return "sleep 1000 & echo $! >> " + (Path() / "started").string() + "; wait";
  }
  // What the collector wrote `age` seconds ago.
  void Snapshot(const std::string& source, const std::string& members, long age) const {
    Write("/run/vela-platform/" + source + ".json",
          R"({"boot_id": "this-boot", "period": 60, "written": )" +
              std::to_string(std::time(nullptr) - age) + ", " + members + "}");
  }
  void Collected(long age) const {
    Snapshot("ipmi", R"("supplies": [], "fans": [{"name": "FAN1", "state": "ok"}])", age);
    Snapshot("ses", R"("enclosures": [{"id": "5", "product": "JBOD", "fans": []}])", age);
  }
  void AlsoMounted(const std::string& lines) const {
    Mounts("1 0 " + root_ + " / / rw - ext4 /dev/vda rw\n" + lines);
  }

  ~FullMachine() {
    if (entered_) umount2("/sys", MNT_DETACH);
  }

  // Puts its /sys into the place of the real one, in a mount namespace of this thread and
  // its children. False: not allowed here.
  bool Enter() {
    return entered_ = unshare(CLONE_NEWNS) == 0 &&
                      mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                      mount((Path() / "sys").c_str(), "/sys", nullptr, MS_BIND, nullptr) == 0;
  }

  // What `answers` prints of this machine, line by line; `with` goes before its name, `count`
  // may have a number of threads behind it. It waits as long as tests do, or as `with` says.
  std::vector<std::string> Answers(const std::string& count, const std::string& with = "") const {
    const std::string command = "VELA_ROOT=" + Path().string() + " " + with +
                                " " VELA_ANSWERS " " VELA_MODULE " " + count + " 2>&1";
    FILE* stream = popen(command.c_str(), "r");
    std::vector<std::string> lines;
    char* line = nullptr;
    std::size_t capacity = 0;
    for (ssize_t size; (size = getline(&line, &capacity, stream)) > 0;)
      lines.emplace_back(line, static_cast<std::size_t>(size) - 1);
    free(line);
    status = pclose(stream);
    return lines;
  }

  std::unique_ptr<PrivateBus> bus;
  std::unique_ptr<HungMount> hungMount;
  mutable int status = -1;  // of the last Answers

 private:
  bool entered_ = false;
  std::string root_;
  std::unique_ptr<FakeServer> upsd_;
};

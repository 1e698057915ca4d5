// The real server and its dummy driver, with a configuration of the test's own.
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "platform/linux/base/deadline.h"
#include "platform/status/source_status.h"
#include "tests/linux/temporary_root.h"
#include "velac.h"

namespace {

using namespace std::chrono_literals;

// Below the range that the kernel gives to clients, and another one for each process: nobody
// takes it between this look and the server's own start.
int FreePort() {
  for (int port = 20000 + getpid() % 12000;; ++port) {
    const int probe = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    const bool isFree = bind(probe, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    close(probe);
    if (isFree) return port;
  }
}

class Daemon {
 public:
  Daemon(std::vector<std::string> command, std::vector<std::string> environment) {
    const auto pointers = [](std::vector<std::string>& texts) {
      std::vector<char*> all;
      for (std::string& text : texts) all.push_back(text.data());
      all.push_back(nullptr);
      return all;
    };
    if (posix_spawn(&pid_, command[0].c_str(), nullptr, nullptr, pointers(command).data(),
                    pointers(environment).data()) != 0)
      pid_ = -1;
  }
  ~Daemon() { End(); }
  Daemon(const Daemon&) = delete;
  Daemon& operator=(const Daemon&) = delete;
  void End() {
    if (pid_ <= 0) return;
    kill(pid_, SIGTERM);
    waitpid(pid_, nullptr, 0);
    pid_ = -1;
  }
  void Stop() const { kill(pid_, SIGSTOP); }
  void Continue() const { kill(pid_, SIGCONT); }

 private:
  pid_t pid_ = -1;
};

// A machine that stalls for a second looks like a silent server: the pause that follows is not
// what is tested here.
VELA_UPS_INFO Ask() {
  linux_platform::CircuitBreaker::CloseAll();
  VELAPlatformSourcesReset();
  VELA_UPS_INFO record = {};
  EXPECT_EQ(VELAUPSInfoGet(&record), 0);
  return record;
}

std::string Reason() {
  VELASourceReport reports[11];
  VELAPlatformSources(reports, 11);
  return reports[4].reason;
}

// Whether the answer becomes so within half a minute.
template <typename Answer>
bool Becomes(const Answer& answer) {
  for (int i = 0; i < 600; ++i) {
    if (answer(Ask())) return true;
    std::this_thread::sleep_for(50ms);
  }
  return false;
}

TEST(UpsWithNut, FollowsTheRealServerThroughAPowerCut) {
  if (access("/lib/nut/upsd", X_OK) != 0 || access("/lib/nut/dummy-ups", X_OK) != 0)
    GTEST_SKIP() << "needs NUT's server: apt-get install nut-server";
  TemporaryRoot root;
  const std::string port = std::to_string(FreePort());
  // The driver reads again what has another time of change, in whole seconds.
  auto changed = std::filesystem::file_time_type::clock::now() - 1h;
  const auto put = [&root, &changed](const std::string& status) {
    const std::filesystem::path folder = root.Path() / "etc/nut";
    root.Write("/etc/nut/new.dev", "ups.status: " + status + "\nbattery.charge: 50\n");
    std::filesystem::last_write_time(folder / "new.dev", changed += 10s);
    std::filesystem::rename(folder / "new.dev", folder / "rack.dev");
  };
  put("OL");
  root.Write(
      "/etc/nut/ups.conf",
      "[rack]\n driver = dummy-ups\n port = rack.dev\n mode = dummy-once\n pollinterval = 1\n");
  root.Write("/etc/nut/upsd.conf", "LISTEN 127.0.0.1 " + port + "\nMAXAGE 3\n");
  root.Write("/etc/nut/upsd.users", "");
  root.Write("/etc/velainfo.conf", "ups.monitor=rack@127.0.0.1:" + port + "\n");
  for (const char* file : {"ups.conf", "upsd.conf", "upsd.users"})
    std::filesystem::permissions(root.Path() / "etc/nut" / file, std::filesystem::perms(0600));
  const std::filesystem::path state = root.Path() / "state";
  std::filesystem::create_directory(state);
  std::filesystem::permissions(state, std::filesystem::perms(0700));
  const std::vector<std::string> environment = {
      "NUT_CONFPATH=" + (root.Path() / "etc/nut").string(), "NUT_STATEPATH=" + state.string(),
      "NUT_ALTPIDPATH=" + state.string(), "PATH=/usr/bin:/bin"};
  const std::string user = getuid() == 0 ? "root" : "nut";

  Daemon driver({"/lib/nut/dummy-ups", "-F", "-u", user, "-a", "rack"}, environment);
  Daemon server({"/lib/nut/upsd", "-F", "-u", user}, environment);
  const auto isState = [](int expected) {
    return [expected](const VELA_UPS_INFO& ups) {
      return ups.enabled == 1 && ups.connected == 1 && ups.state == expected;
    };
  };
  Ask();
  if (Reason().starts_with("this platform was built without")) GTEST_SKIP() << Reason();
  ASSERT_TRUE(Becomes(isState(1))) << Reason();
  put("OB DISCHRG");
  EXPECT_TRUE(Becomes(isState(2))) << Reason();
  put("OB LB");
  EXPECT_TRUE(Becomes(isState(3))) << Reason();
  put("OL CHRG LB");
  EXPECT_TRUE(Becomes(isState(1))) << Reason();

  driver.End();
  EXPECT_TRUE(Becomes([](const VELA_UPS_INFO& ups) { return ups.enabled && !ups.connected; }));
  EXPECT_NE(Reason().find("on UPS rack: "), std::string::npos) << Reason();

  server.Stop();
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(Ask().connected, 0);
  EXPECT_LT(std::chrono::steady_clock::now() - start, 5s);
  EXPECT_NE(Reason().find("did not answer in time"), std::string::npos) << Reason();
  server.Continue();
  server.End();
  EXPECT_EQ(Ask().enabled, 1);
  EXPECT_NE(Reason().find("Connection refused"), std::string::npos) << Reason();
}

}  // namespace

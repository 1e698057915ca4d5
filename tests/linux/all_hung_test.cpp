// Every daemon of the machine hangs at once: one answer must still come in time.
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>

#include "platform/linux/hardware.h"
#include "platform/linux/patience.h"
#include "platform/voice/voice.h"
#include "tests/linux/fake_server.h"
#include "tests/linux/private_bus.h"
#include "tests/linux/system_log.h"
#include "tests/linux/temporary_root.h"
#include "vela_webserver.h"
#include "velac.h"

namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds, std::chrono::steady_clock;
using namespace vela::linuxplatform;

// What a request asks of the areas that talk to somebody; returns how long it took.
milliseconds Ask() {
  NewRequest();
  ForgetHardware();
  VELAPlatformSourcesReset();
  const auto start = steady_clock::now();
  VELA_SYS_STATUS status = {};
  EXPECT_EQ(VELASysStatusGet(&status), 0);
  if (VELAServiceIsHttpDefaultConf() > 0) velaw3::NginxConfManager(velaw3::NGINXCONF_APPLY).run();
  VELA_UPS_INFO ups = {};
  EXPECT_EQ(VELAUPSInfoGet(&ups), 0);
  EXPECT_EQ(ups.enabled, 1);
  char text[64] = {};
  if (VELAHAIsRunning() != 0) VELAHAGetOverviewStatusDL(text, sizeof text);
  return std::chrono::ceil<milliseconds>(steady_clock::now() - start);
}

std::string Failed() {
  VELASourceReport reports[11];
  VELAPlatformSources(reports, 11);
  std::string names;
  for (const VELASourceReport& report : reports)
    if (report.state == 2) names += std::string(report.name) + ' ';
  return names;
}

std::ptrdiff_t Entries(const char* folder) {
  return std::distance(std::filesystem::directory_iterator(folder), {});
}

TEST(AllHung, OneAnswerTakesLessThanTwoSecondsAndTheNextOnesNone) {
  TemporaryRoot root;
  PrivateBus bus(root);
  if (!bus.Runs()) GTEST_SKIP() << "needs dbus-daemon: apt-get install dbus-daemon";
  if (geteuid() != 0) GTEST_SKIP() << "needs root, as the servers' own tests do";
  FakeServer upsd([](int client) { FakeServer::Line(client), FakeServer::Line(client); });
  root.Write("/etc/velainfo.conf", "ups.monitor=rack@127.0.0.1:" + upsd.Port() + "\n");
  root.Write("/proc/net/unix", "0: 2 0 10000 1 01 1 @pacemakerd\n");
  for (const char* program : {"/usr/sbin/nginx", "/usr/sbin/crm_mon"})
    std::filesystem::permissions(root.Write(program, "#!/bin/sh\nsleep 60\n"),
                                 std::filesystem::perms(0755));
  bus.Say("nginx.service", "LoadState", "loaded");
  bus.Say("nginx.service", "ActiveState", "failed");
  bus.Say("pacemaker.service", "ActiveState", "active");

  for (const bool busHangs : {true, false}) {
    SCOPED_TRACE(busHangs ? "with the bus" : "nginx instead of the bus");
    if (busHangs) bus.StopDaemon();
    CircuitBreaker::CloseAll();
    milliseconds longest{}, settled{};
    // A source that got no turn in one request gets it in the next.
    for (int request = 0; request < 4; ++request) longest = std::max(longest, settled = Ask());
    EXPECT_LT(longest, 1900ms);
    EXPECT_LT(settled, 100ms);
    EXPECT_EQ(Failed(), "web server UPS high availability ");
    printf("longest %lld ms, then %lld ms\n", static_cast<long long>(longest.count()),
           static_cast<long long>(settled.count()));
    const auto descriptors = Entries("/proc/self/fd"), threads = Entries("/proc/self/task");
    for (int request = 0; request < 1000; ++request) Ask();
    EXPECT_EQ(Entries("/proc/self/fd"), descriptors);
    EXPECT_EQ(Entries("/proc/self/task"), threads);
    if (busHangs) bus.ContinueDaemon();
  }
  CircuitBreaker::CloseAll();
  TakeSystemLog();
}

TEST(AllHung, ASourceThatGotNoTurnIsNotBlamed) {
  TemporaryRoot root;
  FakeServer upsd([](int client) {
    if (FakeServer::Line(client) == "GET VAR rack ups.status")
      FakeServer::Send(client, "VAR rack ups.status \"OB\"\n");
  });
  root.Write("/etc/velainfo.conf", "ups.monitor=rack@127.0.0.1:" + upsd.Port() + "\n");
  NewRequest();
  WaitUntil(1ms);
  std::this_thread::sleep_for(1510ms);  // what another source takes
  VELA_UPS_INFO ups = {};
  EXPECT_EQ(VELAUPSInfoGet(&ups), 0);
  EXPECT_EQ(ups.connected, 0);
  NewRequest();
  EXPECT_EQ(VELAUPSInfoGet(&ups), 0);
  EXPECT_EQ(ups.state, 2);
  TakeSystemLog();
}

}  // namespace

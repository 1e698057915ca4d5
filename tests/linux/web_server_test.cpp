#include "vela_webserver.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "platform/linux/base/deadline.h"
#include "platform/linux/base/snapshot.h"
#include "platform/linux/contract/request.h"
#include "tests/linux/machine_snapshot.h"
#include "tests/linux/private_bus.h"
#include "tests/linux/source_statuses.h"
#include "tests/linux/system_log.h"
#include "tests/linux/table.h"
#include "tests/linux/timeout_factor.h"
#include "tests/linux/told_evidence.h"
#include "velac.h"

namespace {

SourceReport Said() { return SourceReports()["web server"]; }

// What a request makes of both queries.
std::string Ask() {
  const linux_platform::RequestScope request;
  VELAPlatformSourcesReset();
  const int suspicion = VELAServiceIsHttpDefaultConf();
  const bool sound = velaw3::NginxConfManager(velaw3::NGINXCONF_APPLY).run();
  EXPECT_TRUE(sound || suspicion == 1);
  return suspicion < 0 ? "unknown" : sound ? "well" : "failed";
}

class WebServerTest : public testing::Test {
 protected:
  WebServerTest() { Forget(); }
  ~WebServerTest() override { Forget(); }
  // The platform remembers across requests: a machine without a web server forgets.
  void Forget() {
    for (const char* path : {"usr", "etc"}) std::filesystem::remove_all(root_.Path() / path);
    linux_platform::CircuitBreaker::CloseAll();
    EXPECT_EQ(Ask(), "well");
    EXPECT_EQ(Said().reason, "no web server is installed");
    TakeSystemLog();
  }

  MachineSnapshot root_;
};

TEST_F(WebServerTest, WithoutSystemdNothingIsKnownAndABusThatIsGoneIsSaidOnce) {
  root_.Install("/usr/sbin/nginx", "exit 1");
  EXPECT_EQ(Ask(), "well");
  EXPECT_EQ(Said().reason, "systemd does not run this machine");
  EXPECT_TRUE(TakeSystemLog().empty());
  std::filesystem::create_directories(root_.Path() / "run/systemd/system");
  EXPECT_EQ(Ask(), "unknown");
  EXPECT_EQ(Ask(), "well") << "the module logs what is unknown, so only once";
  EXPECT_EQ(Said().reason,
            "systemd could not be asked over the system bus: No such file or directory");
  EXPECT_EQ(TakeSystemLog().size(), 1U);
}

class WebServerOnBusTest : public WebServerTest {
 protected:
  void SetUp() override {
    if (!bus_.Runs() || geteuid() != 0) GTEST_SKIP() << "needs root and dbus-daemon";
    Unit("nginx.service", "active", "success");
    root_.Install("/usr/sbin/nginx", "touch " + tested_.string() + "; test \"$*\" = '-t -q' && . " +
                                         root_.Path().string() + "/ends");
    EndTest("exit 0");
  }
  void Unit(const std::string& unit, const std::string& active, const std::string& reload) {
    bus_.Say(unit, "LoadState", "loaded");
    bus_.Say(unit, "ActiveState", active);
    bus_.Say(unit, "ReloadResult", reload);
  }
  // How nginx's test of its configuration ends: "exit 1".
  void EndTest(const std::string& command) { root_.TemporaryRoot::Write("/ends", command + "\n"); }

  PrivateBus bus_{root_};
  const std::filesystem::path tested_ = root_.Path() / "tested";
};

TEST_F(WebServerOnBusTest, OnlyASuspicionThatTheTestConfirmsIsAFailure) {
  for (const auto& row : ReadTable("web-server", 6)) {
    SCOPED_TRACE(testing::PrintToString(row));
    std::filesystem::remove(tested_);
    Unit("nginx.service", row[0], row[1]);
    EndTest(row[2]);
    EXPECT_EQ(Ask(), row[3]);
    EXPECT_EQ(std::filesystem::exists(tested_) ? "tested" : "", row[4]);
    EXPECT_EQ(Said().state, row[5].empty() ? 1 : 2);
    EXPECT_EQ(Said().reason, row[5]);
  }
  EXPECT_EQ(TakeSystemLog().size(), 4U);
}

TEST_F(WebServerOnBusTest, WhyTheConfigurationIsRefusedIsTold) {
  for (const auto& row : ReadTable("web-server-evidence", 4)) {
    SCOPED_TRACE(row[2]);
    Unit("nginx.service", row[0], "exit-code");
    bus_.Say("nginx.service", "InactiveEnterTimestamp", row[1]);
    EndTest("printf '" + row[2] + "' >&2; exit 1");
    const linux_platform::RequestScope request;
    EXPECT_EQ(Ask(), "failed");
    EXPECT_EQ(ToldEvidence(), row[3]);
  }
  EndTest("echo well; exit 0");
  const linux_platform::RequestScope request;
  EXPECT_EQ(Ask() + ToldEvidence(), "well");
}

TEST_F(WebServerOnBusTest, AMuteSystemdIsGivenUpAndThenLeftAlone) {
  const TimeoutFactor usual(1);
  bus_.Mute();
  EXPECT_EQ(Ask(), "unknown");
  EXPECT_EQ(Said().reason, "the system bus or systemd did not answer in time");
  EXPECT_EQ(Ask(), "well") << "which is no news";
  EXPECT_NE(Said().reason.find("left alone for 30 s"), std::string::npos);
  EXPECT_EQ(Said().state, 2);
}

TEST_F(WebServerOnBusTest, TheServerInUseCounts) {
  Unit("nginx.service", "inactive", "success");
  Unit("apache2.service", "failed", "success");
  root_.Install("/usr/sbin/apache2ctl", "test \"$*\" != -t");
  EXPECT_EQ(Ask(), "failed") << "nginx is installed but not used";
  root_.TemporaryRoot::Write("/etc/velainfo.conf", "web.unit=nginx.service\n");
  EXPECT_EQ(Ask(), "well");
  root_.TemporaryRoot::Write("/etc/velainfo.conf", "web.unit=caddy.service\n");
  EXPECT_EQ(Ask(), "well");
  EXPECT_EQ(Said().reason, "no unit caddy.service");
  Unit("caddy.service", "failed", "success");
  EXPECT_EQ(Ask(), "well");
  EXPECT_EQ(Said().reason,
            "caddy.service is in trouble; how to test its configuration is not known");
}

// As the installed service does: a user who may not test the configuration himself.
TEST_F(WebServerOnBusTest, AServiceWithoutRightsTakesTheCollectorsWord) {
  Unit("nginx.service", "active", "exit-code");
  for (const auto& row : ReadTable("web-server-collected", 5)) {
    SCOPED_TRACE(testing::PrintToString(row));
    if (!row[0].empty()) root_.Write("web_server", row[0], std::stoi(row[1]));
    EXPECT_EQ(AsNobody(Ask), row[2]);
    EXPECT_EQ(Said().Name(), row[3]);
    EXPECT_NE(Said().reason.find(row[4]), std::string::npos) << Said().reason;
  }
  EXPECT_FALSE(std::filesystem::exists(tested_));
  EndTest("exit 1");
  EXPECT_EQ(Ask(), "failed") << "who can ask himself takes nobody's word";
  EXPECT_EQ(Said().reason, "");
}

TEST_F(WebServerOnBusTest, TheCollectorTestsWhatIsUnderSuspicion) {
  const std::string command = VELA_COLLECTOR " --trust-root --once --part web_server --root ";
  const auto collect = [&] {
    Json::Value seen;
    std::string reason;
    EXPECT_EQ(std::system((command + root_.Path().string() + " 2>/dev/null").c_str()), 0);
    linux_platform::ReadSnapshot("web_server", seen, reason);
    return reason.empty()
               ? seen["unit"].asString() + ' ' + seen["test"].asString() + seen["words"].asString()
               : reason;
  };
  EXPECT_EQ(collect(), "nginx.service ");
  EXPECT_FALSE(std::filesystem::exists(tested_)) << "no suspicion, no test";
  Unit("nginx.service", "failed", "success");
  EXPECT_EQ(collect(), "nginx.service passed");
  EndTest("echo no >&2; exit 1");
  EXPECT_EQ(collect(), "nginx.service refusedno");
  EndTest("kill -9 $$");
  EXPECT_NE(collect().find("did not come to its end"), std::string::npos);
}

}  // namespace

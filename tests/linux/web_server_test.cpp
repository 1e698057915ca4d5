#include "vela_webserver.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "platform/linux/base/deadline.h"
#include "platform/linux/base/snapshot.h"
#include "platform/linux/contract/request.h"
#include "platform/status/source_status.h"
#include "tests/linux/machine_snapshot.h"
#include "tests/linux/private_bus.h"
#include "tests/linux/system_log.h"
#include "tests/linux/timeout_factor.h"
#include "velac.h"

namespace {

using linux_platform::CircuitBreaker, linux_platform::ReadSnapshot;

VELASourceReport Said() {
  VELASourceReport reports[11];
  VELAPlatformSources(reports, 11);
  return reports[3];
}

// What a request makes of both questions.
enum class Verdict { Well, Failed, Unknown };
void PrintTo(Verdict verdict, std::ostream* out) { *out << static_cast<int>(verdict); }

Verdict Ask() {
  const linux_platform::RequestScope request;
  VELAPlatformSourcesReset();
  const int suspicion = VELAServiceIsHttpDefaultConf();
  if (suspicion <= 0) return suspicion < 0 ? Verdict::Unknown : Verdict::Well;
  return velaw3::NginxConfManager(velaw3::NGINXCONF_APPLY).run() ? Verdict::Well : Verdict::Failed;
}

class WebServerTest : public testing::Test {
 protected:
  WebServerTest() { Forget(); }
  ~WebServerTest() override { Forget(); }
  // The platform remembers across requests: a machine without a web server forgets.
  void Forget() {
    std::filesystem::remove_all(root_.Path() / "usr");
    std::filesystem::remove(root_.Path() / "etc/velainfo.conf");
    CircuitBreaker::CloseAll();
    Ask();
    TakeSystemLog();
  }
  void Install(const std::string& program, const std::string& script) {
    std::filesystem::permissions(root_.TemporaryRoot::Write(program, "#!/bin/sh\n" + script + "\n"),
                                 std::filesystem::perms(0755));
  }

  MachineSnapshot root_;
};

TEST_F(WebServerTest, AMachineWithoutOneOrWithoutSystemdIsSilent) {
  EXPECT_EQ(Ask(), Verdict::Well);
  EXPECT_STREQ(Said().reason, "no web server is installed");
  Install("/usr/sbin/nginx", "exit 1");
  EXPECT_EQ(Ask(), Verdict::Well);
  EXPECT_STREQ(Said().reason, "systemd does not run this machine");
  EXPECT_TRUE(TakeSystemLog().empty());
}

TEST_F(WebServerTest, ABusThatIsGoneIsSaidOnce) {
  Install("/usr/sbin/nginx", "exit 1");
  std::filesystem::create_directories(root_.Path() / "run/systemd/system");
  EXPECT_EQ(Ask(), Verdict::Unknown);
  EXPECT_EQ(Ask(), Verdict::Well) << "the module logs what is unknown, so only once";
  EXPECT_STREQ(Said().reason,
               "systemd could not be asked over the system bus: No such file or directory");
  EXPECT_EQ(TakeSystemLog().size(), 1U);
}

class WebServerOnBusTest : public WebServerTest {
 protected:
  void SetUp() override {
    if (!bus_.Runs()) GTEST_SKIP() << "needs dbus-daemon: apt-get install dbus-daemon";
    if (geteuid() != 0) GTEST_SKIP() << "needs root, as the servers' own tests do";
    Unit("nginx.service", "active", "success");
    Install("/usr/sbin/nginx", "touch " + (root_.Path() / "tested").string() +
                                   "; test \"$*\" = '-t -q' && exit $(cat " +
                                   (root_.Path() / "status").string() + ")");
    Status("0");
  }
  void Unit(const std::string& unit, const std::string& active, const std::string& reload) {
    bus_.Say(unit, "LoadState", "loaded");
    bus_.Say(unit, "ActiveState", active);
    bus_.Say(unit, "ReloadResult", reload);
  }
  void Status(const std::string& status) { root_.TemporaryRoot::Write("/status", status); }

  PrivateBus bus_{root_};
};

TEST_F(WebServerOnBusTest, OnlyASuspicionThatTheTestConfirmsIsAFailure) {
  const struct {
    const char *active, *reload, *status;
    Verdict verdict;
    bool tested;
    const char* says;
  } cases[] = {
      {"active", "success", "1", Verdict::Well, false, ""},
      {"inactive", "success", "1", Verdict::Well, false, ""},
      {"active", "exit-code", "1", Verdict::Failed, true, ""},
      {"active", "exit-code", "0", Verdict::Well, true, ""},
      {"failed", "success", "1", Verdict::Failed, true, ""},
      {"failed", "success", "0", Verdict::Well, true, ""},
      {"active", "", "1", Verdict::Well, false, ""},
      {"failed", "org.freedesktop.DBus.Error.UnknownProperty", "1", Verdict::Failed, true, ""},
      {"active", "org.freedesktop.DBus.Error.UnknownInterface", "1", Verdict::Well, false, ""},
      {"active", "org.freedesktop.DBus.Error.AccessDenied", "1", Verdict::Unknown, false,
       "systemd could not be asked over the system bus: systemd says no"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.active) + ' ' + c.reload + ' ' + c.status);
    std::filesystem::remove(root_.Path() / "tested");
    Unit("nginx.service", c.active, c.reload);
    Status(c.status);
    EXPECT_EQ(Ask(), c.verdict);
    EXPECT_EQ(std::filesystem::exists(root_.Path() / "tested"), c.tested);
    EXPECT_EQ(Said().state, c.verdict == Verdict::Unknown ? 2 : 1);
    EXPECT_STREQ(Said().reason, c.says);
  }
  EXPECT_EQ(TakeSystemLog().size(), 1U);
}

TEST_F(WebServerOnBusTest, ASuspicionLastsForItsRequestOnly) {
  Unit("nginx.service", "failed", "success");
  Status("1");
  EXPECT_EQ(Ask(), Verdict::Failed);
  Unit("nginx.service", "active", "success");
  std::filesystem::remove(root_.Path() / "tested");
  EXPECT_TRUE(velaw3::NginxConfManager(velaw3::NGINXCONF_APPLY).run());
  EXPECT_FALSE(std::filesystem::exists(root_.Path() / "tested"));
}

TEST_F(WebServerOnBusTest, TheServerInUseCounts) {
  Unit("nginx.service", "inactive", "success");
  Unit("apache2.service", "failed", "success");
  Install("/usr/sbin/apache2ctl", "exit 1");
  EXPECT_EQ(Ask(), Verdict::Failed) << "nginx is installed but not used";
  root_.TemporaryRoot::Write("/etc/velainfo.conf", "web.unit=nginx.service\n");
  EXPECT_EQ(Ask(), Verdict::Well);
  root_.TemporaryRoot::Write("/etc/velainfo.conf", "web.unit=caddy.service\n");
  EXPECT_EQ(Ask(), Verdict::Well);
  EXPECT_EQ(Said().state, 0) << Said().reason;
  Unit("caddy.service", "failed", "success");
  EXPECT_EQ(Ask(), Verdict::Well);
  EXPECT_STREQ(Said().reason,
               "caddy.service is in trouble; how to test its configuration is not known");
}

// As the installed service does: a user who may not test the configuration itself.
TEST_F(WebServerOnBusTest, AServiceWithoutRightsTakesTheCollectorsWord) {
  const char* timer = "vela-platform-collect.timer";
  std::filesystem::permissions(root_.Path(), std::filesystem::perms(0755));
  Unit("nginx.service", "active", "exit-code");
  const struct {
    const char* seen;
    int age;
    Verdict verdict;
    int state;
    const char* says;
  } cases[] = {
      {"", 0, Verdict::Well, 2, timer},
      {R"("unit": "nginx.service", "active": "active", "reload": "exit-code", "test": "refused")",
       40, Verdict::Failed, 1, "seen by vela-platform-collect 4"},
      {R"("unit": "nginx.service", "active": "active", "reload": "exit-code", "test": "passed")", 0,
       Verdict::Well, 1, "seen by vela-platform-collect "},
      {R"("unit": "nginx.service", "active": "active", "reload": "exit-code", "test": "refused")",
       200, Verdict::Well, 2, timer},
      {R"("unit": "nginx.service", "active": "failed", "reload": "success", "test": "refused")", 0,
       Verdict::Well, 2, "within a minute"},
      {R"("unit": "nginx.service", "active": "active", "reload": "timeout", "test": "refused")", 0,
       Verdict::Well, 2, "within a minute"},
      {R"("unit": "apache2.service", "active": "active", "reload": "exit-code", "test": "refused")",
       0, Verdict::Well, 2, "within a minute"},
      {R"("unit": "nginx.service", "active": "active", "reload": "exit-code")", 0, Verdict::Well, 2,
       "within a minute"},
      {R"("error": "it hangs")", 0, Verdict::Well, 2, "web_server: it hangs"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.seen);
    if (*c.seen != '\0') root_.MachineSnapshot::Write("web_server", c.seen, c.age);
    ASSERT_EQ(seteuid(65534), 0);
    const Verdict verdict = Ask();
    ASSERT_EQ(seteuid(0), 0);
    EXPECT_EQ(verdict, c.verdict);
    EXPECT_EQ(Said().state, c.state);
    EXPECT_NE(std::string(Said().reason).find(c.says), std::string::npos) << Said().reason;
  }
  EXPECT_FALSE(std::filesystem::exists(root_.Path() / "tested"));
  Status("1");
  EXPECT_EQ(Ask(), Verdict::Failed) << "who can ask himself takes nobody's word";
  EXPECT_STREQ(Said().reason, "");
}

// What the collector makes of the same machine.
TEST_F(WebServerOnBusTest, TheCollectorTestsWhatIsUnderSuspicion) {
  const auto collect = [&] {
    Json::Value seen;
    std::string reason;
    const std::string command =
        VELA_COLLECTOR " --once --part web_server --root " + root_.Path().string();
    EXPECT_EQ(std::system((command + " 2>/dev/null").c_str()), 0);
    ReadSnapshot("web_server", seen, reason);
    return reason.empty() ? seen["unit"].asString() + ' ' + seen["test"].asString() : reason;
  };
  EXPECT_EQ(collect(), "nginx.service ");
  EXPECT_FALSE(std::filesystem::exists(root_.Path() / "tested")) << "no suspicion, no test";
  Unit("nginx.service", "failed", "success");
  EXPECT_EQ(collect(), "nginx.service passed");
  Status("1");
  EXPECT_EQ(collect(), "nginx.service refused");
  Install("/usr/sbin/nginx", "kill -9 $$");
  EXPECT_NE(collect().find("did not come to its end"), std::string::npos);
}

TEST_F(WebServerOnBusTest, AMuteSystemdIsUnknownUntilItAnswers) {
  const auto mute = [this] {
    const TimeoutFactor usual(1);
    bus_.Mute(true);
    EXPECT_EQ(Ask(), Verdict::Unknown);
    EXPECT_EQ(Ask(), Verdict::Well);
    EXPECT_EQ(Said().state, 2);
    bus_.Mute(false);
    CircuitBreaker::CloseAll();
  };
  mute();
  EXPECT_EQ(Ask(), Verdict::Well);
  EXPECT_EQ(Said().state, 1);
  mute();  // which is news, since it had recovered
  EXPECT_EQ(TakeSystemLog().size(), 2U);
}

}  // namespace

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <atomic>
#include <chrono>
#include <filesystem>

#include "platform/linux/base/deadline.h"
#include "platform/linux/contract/request.h"
#include "platform/linux/ups/ups_status.h"
#include "platform/status/source_status.h"
#include "tests/linux/eventually.h"
#include "tests/linux/fake_server.h"
#include "tests/linux/system_log.h"
#include "tests/linux/temporary_root.h"
#include "tests/linux/timeout_factor.h"
#include "velac.h"

namespace {

using namespace linux_platform;
using namespace std::chrono_literals;
using std::chrono::steady_clock;

TEST(UpsStatus, TheWordsDecide) {
  const struct {
    const char* words;
    int state;
  } cases[] = {
      {"FSD", 3},        {"FSD OL", 3},     {"OB LB", 3},    {"LB DISCHRG OB", 3},
      {"LB", 3},         {"LB RB", 3},      {"OB", 2},       {"OB DISCHRG", 2},
      {"OB LB CAL", 2},  {"OB CAL", 2},     {"OL", 1},       {"OL LB", 1},
      {"OL CHRG LB", 1}, {"OL DISCHRG", 1}, {"ALARM OL", 1}, {"OL RB BOOST", 1},
      {"OL CAL LB", 1},  {"OL OFF", 1},     {"BYPASS", 0},   {"OFF", 0},
      {"WAIT", 0},       {"", 0},           {"   ", 0},      {"ol ob lb", 0},
      {"LOB FSDX", 0},   {"OL  OB\tLB", 3},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.words);
    EXPECT_EQ(static_cast<int>(JudgeUpsWords(c.words)), c.state);
  }
}

TEST(UpsConfiguration, OnlyLoopbackAddressesAreHosts) {
  const struct {
    const char* text;
    UpsAddress address;
  } cases[] = {
      {"rack", {"rack", "127.0.0.1", 3493}},
      {"rack@localhost", {"rack", "127.0.0.1", 3493}},
      {"rack@127.0.0.2:4000", {"rack", "127.0.0.2", 4000}},
      {"rack@[::1]:4000", {"rack", "::1", 4000}},
      {"@localhost:4000", {"", "127.0.0.1", 4000}},
      {"rack@localhost:bad", {"rack", "127.0.0.1", 3493}},
      {"rack@nas.example", {"rack", "", 3493}},
      {"rack@127.evil.example", {"rack", "", 3493}},
      {"rack@192.0.2.1", {"rack", "", 3493}},
      {"rack@[::1", {"rack", "::1", 3493}},
      {"rack@[", {"rack", "127.0.0.1", 3493}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(ParseUpsAddress(c.text), c.address);
  }
}

TEST(UpsConfiguration, MonitorLinesNameTheUpses) {
  const auto monitors = ParseMonitors(
      "# MONITOR no@localhost 1 u p master\nMINSUPPLIES 1\n"
      "MONITOR rack@localhost 1 admin \"pass word\" primary\r\n"
      "  MONITOR \"desk@127.0.0.1:4000\" 0 admin pass secondary\nMONITORS x\nMONITOR");
  ASSERT_EQ(monitors.size(), 3U);
  EXPECT_EQ(monitors[0], (UpsAddress{"rack", "127.0.0.1", 3493}));
  EXPECT_EQ(monitors[1], (UpsAddress{"desk", "127.0.0.1", 4000}));
}

VELASourceReport Said() {
  VELASourceReport reports[11];
  VELAPlatformSources(reports, 11);
  return reports[4];
}

// One request of its own.
VELA_UPS_INFO Ask() {
  VELAPlatformSourcesReset();
  VELA_UPS_INFO record;
  memset(&record, 0x55, sizeof record);
  EXPECT_EQ(VELAUPSInfoGet(&record), 0);
  return record;
}

class UpsTest : public testing::Test {
 protected:
  UpsTest() { TearDown(); }
  void TearDown() override {
    // The platform remembers across requests: a machine without NUT forgets.
    Monitor("");
    std::filesystem::remove(root_.Path() / "etc/velainfo.conf");
    CircuitBreaker::CloseAll();
    Ask();
    TakeSystemLog();
  }
  void Monitor(const std::string& value) {
    root_.Write("/etc/velainfo.conf", "ups.monitor=\"" + value + "\"\n");
  }

  TemporaryRoot root_;
};

std::string At(const FakeServer& server) { return "rack@127.0.0.1:" + server.Port(); }

void ServeStatus(int client, const std::string& rack, const std::string& desk) {
  for (std::string line; !(line = FakeServer::Line(client)).empty() && line != "LOGOUT";) {
    if (line == "LIST UPS")
      FakeServer::Send(client,
                       "BEGIN LIST UPS\nUPS rack \"A \\\"big\\\" one\"\n"
                       "UPS desk \"\"\nEND LIST UPS\n");
    if (line == "GET VAR rack ups.status")
      FakeServer::Send(client, "VAR rack ups.status \"" + rack + "\"\n");
    if (line == "GET VAR desk ups.status") FakeServer::Send(client, desk + "\n");
  }
}

TEST_F(UpsTest, AMachineWithoutAUpsIsSilent) {
  const struct { const char* nut; } cases[] = {{nullptr}, {"MODE=none\n"}, {"# nothing\n"}};
  for (const auto& c : cases) {
    if (c.nut != nullptr) root_.Write("/etc/nut/nut.conf", c.nut);
    const VELA_UPS_INFO record = Ask();
    EXPECT_EQ(record.enabled, 0);
    EXPECT_EQ(record.state, 0);
    EXPECT_EQ(record.connected, 0);
    EXPECT_EQ(Said().state, 0);
  }
  EXPECT_TRUE(TakeSystemLog().empty());
}

TEST_F(UpsTest, TheWorstOfSeveralCountsHoweverTheyAreNamed) {
  FakeServer server([](int client) { ServeStatus(client, "OL", "VAR desk ups.status \"OB\""); });
  const std::string port = server.Port(), desk = "desk@127.0.0.1:" + port;
  root_.Write("/etc/nut/nut.conf", "MODE = standalone\n");
  root_.Write("/etc/nut/upsmon.conf", "MONITOR desk@localhost:" + port + " 1 a b master\n");
  EXPECT_EQ(Ask().state, 2) << "NUT's own configuration is enough";
  std::filesystem::remove_all(root_.Path() / "etc/nut");
  for (const auto& [named, state] :
       {std::pair(At(server) + " " + desk, 2),
        {desk + " " + At(server), 2},
        {"@localhost:" + port, 1}}) {  // the last: the first that the server lists
    Monitor(named);
    const VELA_UPS_INFO record = Ask();
    EXPECT_EQ(record.state, state) << named;
    EXPECT_EQ(record.connected, 1);
  }
  EXPECT_EQ(Said().state, 1);
}

TEST_F(UpsTest, AServerThatRefusesIsSaidAndLoggedOnce) {
  {
    FakeServer server([](int client) { ServeStatus(client, "OL", "ERR DRIVER-NOT-CONNECTED"); });
    Monitor("desk@127.0.0.1:" + server.Port());
    for (int i = 0; i < 3; ++i) {
      const VELA_UPS_INFO record = Ask();
      EXPECT_EQ(record.enabled, 1);
      EXPECT_EQ(record.connected, 0);
    }
    EXPECT_EQ(Said().state, 2);
    const std::string reason =
        "upsd at 127.0.0.1 port " + server.Port() + " on UPS desk: DRIVER-NOT-CONNECTED";
    EXPECT_EQ(Said().reason, reason);
    EXPECT_EQ(VLIBCErrGet(), 0x0C00U);
    EXPECT_EQ(TakeSystemLog(), std::vector<std::string>{"warning UPS: " + reason +
                                                        " (said once until it is read again)"});
    Monitor(At(server));
    EXPECT_EQ(Ask().connected, 1);
    Monitor("desk@127.0.0.1:" + server.Port());
    Ask();
    EXPECT_EQ(TakeSystemLog().size(), 1U) << "it had recovered";
  }
  Ask();
  EXPECT_NE(std::string(Said().reason).find("Connection refused"), std::string::npos)
      << Said().reason;
  Monitor("rack@192.0.2.1");
  Ask();
  EXPECT_STREQ(Said().reason, "UPS rack belongs to another machine: only a local upsd is asked");
}

TEST_F(UpsTest, HalfALineIsNoAnswerAndTheServerIsThenLeftAlone) {
  FakeServer server([](int client) {
    FakeServer::Send(client, "VAR rack ups.status \"OL");
    FakeServer::Line(client), FakeServer::Line(client);
  });
  Monitor(At(server));
  const TimeoutFactor usual(1);
  EXPECT_EQ(Ask().connected, 0) << "and an answer comes: the library alone would wait for ever";
  Ask();
  EXPECT_TRUE(Eventually([&server] { return server.Clients() > 0; }));
  EXPECT_EQ(server.Clients(), 1);
  EXPECT_NE(std::string(Said().reason).find("left alone for 30 s"), std::string::npos);
}

TEST_F(UpsTest, ASourceThatGotNoTurnIsNotBlamed) {
  FakeServer server([](int client) { ServeStatus(client, "OB", ""); });
  Monitor(At(server));
  std::optional<RequestScope> request(std::in_place);
  (*request)->SetWaited(TimesFactor(1510ms));  // what another source took
  VELA_UPS_INFO ups = {};
  EXPECT_EQ(VELAUPSInfoGet(&ups), 0);
  EXPECT_EQ(ups.connected, 0);
  request.reset();
  EXPECT_EQ(Ask().state, 2) << "the next request asks it";
}

TEST_F(UpsTest, AServerThatHangsUpOrFloodsEndsAtOnceAndRaisesNoSignal) {
  const struct {
    const char* what;
    std::function<void(int)> serve;
    const char* says = " hung up, or sent something that is no answer";
  } cases[] = {
      {"close", [](int) {}},
      {"close when asked", [](int client) { FakeServer::Line(client); }},
      {"flood",
       [](int client) {
         while (FakeServer::Send(client, std::string(65536, 'x'))) {
         }
       }},
      {"flood of lines",
       [](int client) {
         while (FakeServer::Send(client, std::string(65536, '\n'))) {
         }
       }},
      {"other variable",
       [](int client) { FakeServer::Send(client, "VAR rack ups.load \"OB\"\n"); }},
      {"no UPS", [](int client) { FakeServer::Send(client, "BEGIN LIST UPS\nEND LIST UPS\n"); },
       " knows no UPS: see /etc/nut/ups.conf"},
      {"endless list",
       [](int client) {
         FakeServer::Send(client, "BEGIN LIST UPS\n");
         while (FakeServer::Send(client, "UPS a \"\"\n")) {
         }
       }},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    FakeServer server(c.serve);
    const bool listed = std::string(c.what) == "endless list" || std::string(c.what) == "no UPS";
    Monitor((listed ? "" : "rack") + ("@127.0.0.1:" + server.Port()));
    for (int i = 0; i < 20; ++i) {
      const auto start = steady_clock::now();
      EXPECT_EQ(Ask().connected, 0);
      EXPECT_LT(steady_clock::now() - start, TimesFactor(900ms));
      EXPECT_EQ(Said().state, 2);
      EXPECT_EQ(Said().reason, "upsd at 127.0.0.1 port " + server.Port() + c.says);
    }
    EXPECT_EQ(server.Clients(), 20);
  }
  sigset_t pending, mask;
  sigpending(&pending);
  pthread_sigmask(SIG_SETMASK, nullptr, &mask);
  EXPECT_EQ(sigismember(&pending, SIGPIPE), 0);
  EXPECT_EQ(sigismember(&mask, SIGPIPE), 0);
}

TEST_F(UpsTest, ItsConnectionIsNotHandedDownToChildren) {
  std::atomic<int> sockets = 0, handedDown = 0;
  FakeServer server([&](int client) {
    FakeServer::Line(client);
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
      std::error_code gone;
      if (!std::filesystem::read_symlink(entry, gone).string().starts_with("socket:")) continue;
      ++sockets;
      handedDown += (fcntl(std::stoi(entry.path().filename()), F_GETFD) & FD_CLOEXEC) == 0;
    }
  });
  Monitor(At(server));
  Ask();
  EXPECT_EQ(sockets, 3) << "the listening one and both ends";
  EXPECT_EQ(handedDown, 0);
}

}  // namespace

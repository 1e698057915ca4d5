#include <gtest/gtest.h>
#include <signal.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <regex>

#include "platform/linux/base/deadline.h"
#include "platform/linux/contract/request.h"
#include "platform/linux/notes/notes.h"
#include "platform/linux/parts/parts.h"
#include "platform/linux/ups/ups_address.h"
#include "platform/linux/ups/ups_status.h"
#include "tests/linux/fake_server.h"
#include "tests/linux/machine_snapshot.h"
#include "tests/linux/source_statuses.h"
#include "tests/linux/system_log.h"
#include "tests/linux/table.h"
#include "tests/linux/temporary_root.h"
#include "tests/linux/timeout_factor.h"
#include "tests/linux/told_evidence.h"
#include "velac.h"

namespace {

using namespace linux_platform;
using namespace std::chrono_literals;

// Every set of words that 715 real UPSes were seen with, and more.
TEST(UpsStatus, TheWordsDecide) {
  for (const auto& row : ReadTable("ups-words", 3)) {
    EXPECT_EQ(std::to_string(static_cast<int>(JudgeUpsWords(row[0]))), row[1]) << row[0];
    VELAPlatformSourcesReset();
    TellUpsNotes("a", row[0]);
    const std::string noted = std::regex_replace(ToldNotes(" "), std::regex(" a 0/0 .upsc a."), "");
    EXPECT_EQ(noted, row[2].empty() ? "" : " " + row[2]) << row[0];
  }
}

TEST(UpsConfiguration, MonitorLinesNameTheUpsesOfThisMachine) {
  std::string text, expected, parsed;
  for (const auto& row : ReadTable("ups-monitors", 2)) {
    text += "\n" + row[0];
    if (!row[1].empty()) expected += row[1] + "\n";
  }
  for (const std::string& monitor : ParseMonitors(text)) {
    const UpsAddress address = ParseUpsAddress(monitor, "nas");
    parsed += address.name + "@" + address.host + ":" + std::to_string(address.port) + "\n";
  }
  EXPECT_EQ(parsed, expected);
  EXPECT_EQ(ParseUpsAddress("rack@nas", "nas.example").host, kThisMachine);
  EXPECT_EQ(ParseUpsAddress("rack@nas.lan", "nas.example").host, "");
}

SourceReport Said() { return SourceReports()["UPS"]; }

// What one request makes of it: "off", its state, or why it is not known (of port "N").
std::string Ask() {
  VELAPlatformSourcesReset();
  VELA_UPS_INFO record;
  memset(&record, 0x55, sizeof record);
  EXPECT_EQ(VELAUPSInfoGet(&record), 0);
  if (record.connected != 0) return std::to_string(record.state);
  EXPECT_EQ(record.state, 0);
  if (Said().state == 0 && record.enabled == 0) return "off";
  EXPECT_GE(Said().state, record.enabled != 0 ? 2 : 3);
  return std::regex_replace(Said().reason, std::regex("port \\d+"), "port N");
}

class UpsTest : public testing::Test {
 protected:
  UpsTest() { TearDown(); }
  // The platform remembers across requests: a machine without NUT forgets.
  void TearDown() override {
    std::filesystem::remove_all(root_.Path() / "etc");
    CircuitBreaker::CloseAll();
    EXPECT_EQ(Ask(), "off");
    TakeSystemLog();
  }
  std::string AskAbout(const std::string& value) {
    root_.Write("/etc/velainfo.conf", "ups.monitor=\"" + value + "\"\n");
    return Ask();
  }
  std::string AskAbout(const std::string& name, const FakeServer& server) {
    return AskAbout(name + "@127.0.0.1:" + server.Port());
  }

  TemporaryRoot root_;
};

// A server of two UPSes, which says `rack` and `desk` of them.
std::function<void(int)> Serve(const std::string& rack, const std::string& desk) {
  return [rack, desk](int client) {
    for (std::string line; !(line = FakeServer::Line(client)).empty() && line != "LOGOUT";) {
      if (line == "LIST UPS")
        FakeServer::Send(client, "BEGIN LIST UPS\nUPS rack \"A\"\nUPS desk \"\"\nEND LIST UPS\n");
      if (line.starts_with("GET VAR"))
        FakeServer::Send(client, (line == "GET VAR rack ups.status"   ? rack
                                  : line == "GET VAR desk ups.status" ? desk
                                                                      : "ERR UNKNOWN-UPS") +
                                     "\n");
    }
  };
}

TEST_F(UpsTest, NutsOwnConfigurationIsEnough) {
  root_.Write("/etc/nut/nut.conf", "# nothing\n");
  EXPECT_EQ(Ask(), "off");
  FakeServer server(Serve("VAR rack ups.status \"OL\"", "VAR desk ups.status \"OB\""));
  root_.Write("/etc/nut/upsmon.conf", "MONITOR rack@localhost:" + server.Port() +
                                          " 1 a b master\nMONITOR rack@localhost:1 1 a b slave\n");
  root_.Write("/etc/nut/nut.conf", "MODE = standalone\n");
  EXPECT_EQ(Ask(), "2") << "of all that a server lists";
  EXPECT_EQ(Said().state, 3) << "and of another server nobody knows";
  EXPECT_EQ(Said().reason, "upsd at localhost port 1: Connection failure: Connection refused");
  root_.Write("/etc/nut/upsmon.conf",
              "MONITOR a@other.example 1\nMONITOR @localhost:" + server.Port() + " 1 a b master\n");
  root_.Write("/etc/nut/ups.conf", "maxretry = 3\n[rack]\n  driver = x\n # [none]\n [cellar]\n");
  EXPECT_EQ(Ask(), "2");
  EXPECT_EQ(Said().reason,
            "upsd at localhost port " + server.Port() + " on UPS cellar: UNKNOWN-UPS")
      << "it is not gone without a word";
  root_.Write("/etc/nut/nut.conf", "MODE=netclient\n");
  EXPECT_EQ(Ask(), "2");
  EXPECT_EQ(Said().reason.find("cellar"), std::string::npos);
}

// As the installed service: nut.conf and upsmon.conf are root's and NUT's.
TEST_F(UpsTest, WhoMayNotReadNutsFilesTakesTheCollectorsWord) {
  if (geteuid() != 0) GTEST_SKIP() << "needs root, to be somebody else";
  FakeServer server(Serve("VAR rack ups.status \"OL\"", "VAR desk ups.status \"OB\""));
  root_.Write("/etc/nut/upsmon.conf", "MONITOR desk@localhost:" + server.Port() + " 1 me secret\n");
  root_.Write("/etc/nut/nut.conf", "MODE=standalone\n");
  root_.Write("/proc/sys/kernel/random/boot_id", "this-boot\n");
  root_.Write("/run/none", "");
  for (const char* path : {"", "etc/nut/upsmon.conf", "etc/nut/nut.conf"})
    permissions(root_.Path() / path, std::filesystem::perms(*path != '\0' ? 0600 : 0755));
  EXPECT_NE(AsNobody(Ask).find("nut.conf could not be read"), std::string::npos);
  EXPECT_EQ(Said().state, 3);
  permissions(root_.Path() / "etc/nut/nut.conf", std::filesystem::perms(0644));
  EXPECT_NE(AsNobody(Ask).find("upsmon.conf could not be read"), std::string::npos);
  const std::string path = root_.Path().string();
  permissions(root_.Path() / "etc/nut/nut.conf", std::filesystem::perms(0600));
  for (const auto& [mode, told] : {std::pair("standalone", "2"), {"none", "off"}}) {
    root_.Write("/etc/nut/nut.conf", std::string("MODE=") + mode + "\n");
    EXPECT_EQ(std::system((VELA_COLLECTOR " --once --part nut --root " + path).c_str()), 0);
    EXPECT_NE(std::system(("grep -rE 'secret' " + path + "/run/*/*.json").c_str()), 0);
    EXPECT_EQ(AsNobody(Ask), told);
  }
}

// Over a server that listens at one of the places where this machine's may.
TEST_F(UpsTest, AllThatIsAskedForCountsHoweverAndWhereverItIs) {
  for (auto row : ReadTable("ups-answers", 7)) {
    SCOPED_TRACE(testing::PrintToString(row));
    FakeServer server(Serve(row[1], row[2]), row[0]);
    row[3] = std::regex_replace(row[3], std::regex("PORT"), server.Port());
    row[3] = std::regex_replace(row[3], std::regex("OWN"), ReadHostName());
    EXPECT_EQ(AskAbout(row[3]), row[4]);
    EXPECT_EQ(std::to_string(Said().state), row[5]);
    EXPECT_EQ(Said().reason + ToldNotes("; "), row[6]);
    EXPECT_EQ(server.Clients(), 1) << "one server is one connection";
  }
}

// A server of the UPS rack, which has the `variables` "ups.status=OB;battery.charge=43"; to all
// other questions it answers nothing whole, if it `drips`.
std::function<void(int)> ServeVariables(const std::string& variables, bool drips = false) {
  return [=](int client) {
    for (std::string line; !(line = FakeServer::Line(client)).empty() && line != "LOGOUT";) {
      const std::string name = line.substr(line.rfind(' ') + 1);
      std::smatch found;
      const bool has = std::regex_search(variables, found, std::regex(name + "=([^;]*)"));
      while (!has && drips && FakeServer::Send(client, "V")) std::this_thread::sleep_for(50ms);
      FakeServer::Send(client, has ? "VAR rack " + name + " \"" + found.str(1) + "\"\n"
                                   : "ERR VAR-NOT-SUPPORTED\n");
    }
  };
}

// The second conversation: only for who asks why, and once a request, whatever is asked.
TEST_F(UpsTest, HowLongTheBatteryLastsIsAskedOnlyForPartsAndEvidence) {
  for (const auto& row : ReadTable("ups-evidence", 3)) {
    SCOPED_TRACE(row[0]);
    FakeServer server(ServeVariables(row[0]));
    const RequestScope request;
    AskAbout("rack", server);
    EXPECT_EQ(server.Clients(), 1) << "the answer is not delayed";
    const std::string told = ToldEvidence();
    EXPECT_EQ(server.Clients(), told.empty() ? 1 : 2) << "a UPS on mains explains nothing";
    EXPECT_EQ(std::regex_replace(told, std::regex("127.0.0.1:\\d+"), "server"), row[1]);
    std::string parts;
    TellUpsParts(request->GetUpses(), [&parts](const VELAPart& part) {
      parts += source_status::kPartStateNames[static_cast<std::size_t>(part.state)];
      parts += " " + std::to_string(part.reading) + part.unit + "/" + std::to_string(part.mark) +
               " (" + part.model + "," + part.serial + ") " + std::to_string(part.runtime) + "s";
    });
    EXPECT_EQ(parts, row[2]);
    EXPECT_EQ(server.Clients(), 2) << "and is asked once";
  }
}

TEST_F(UpsTest, AServerThatTellsItsStateAloneIsAskedForNoMoreAndBelieved) {
  FakeServer server(ServeVariables("ups.status=OB", true));
  const TimeoutFactor usual(1);
  for (const int clients : {2, 3}) {
    const RequestScope request;
    EXPECT_EQ(AskAbout("rack", server), "2");
    EXPECT_TRUE(ToldEvidence().starts_with("ups_discharges rack 0/0 "));
    EXPECT_EQ(server.Clients(), clients);
  }
}

TEST_F(UpsTest, AServerThatRefusesIsSaidAndLoggedOnce) {
  const char* refused = "upsd at 127.0.0.1 port N on UPS desk: DRIVER\x1B[2J-NOT-CONNECTED";
  {
    FakeServer server(Serve("VAR rack ups.status \"OL\"", "ERR DRIVER\x1B[2J-NOT-CONNECTED"));
    for (int i = 0; i < 3; ++i) EXPECT_EQ(AskAbout("desk", server), refused);
    EXPECT_EQ(VLIBCErrGet(), 0x0C00U);
    const std::vector<std::string> log = TakeSystemLog();
    ASSERT_EQ(log.size(), 1U);
    EXPECT_NE(log[0].find("DRIVER\uFFFD[2J-NOT"), log[0].npos) << "a log may show on a terminal";
    EXPECT_EQ(AskAbout("rack", server), "1");
    EXPECT_EQ(AskAbout("desk", server), refused);
    EXPECT_EQ(TakeSystemLog().size(), 1U) << "it had recovered";
  }
  EXPECT_EQ(Ask(), "upsd at 127.0.0.1 port N: Connection failure: Connection refused");
}

TEST_F(UpsTest, AServerThatDripsIsGivenUpAndThenLeftAlone) {
  FakeServer server([](int client) {
    while (FakeServer::Send(client, "V")) std::this_thread::sleep_for(50ms);
  });
  const TimeoutFactor usual(1);
  EXPECT_EQ(AskAbout("rack", server), "upsd at 127.0.0.1 port N did not answer in time");
  EXPECT_NE(Ask().find("left alone for 30 s"), std::string::npos);
  EXPECT_EQ(server.Clients(), 1);
}

TEST_F(UpsTest, ASourceThatGotNoTurnIsNotBlamed) {
  FakeServer server(Serve("VAR rack ups.status \"OB\"", ""));
  {
    const RequestScope request;
    request->SetWaited(TimesFactor(1510ms));  // what another source took
    EXPECT_NE(AskAbout("rack", server).find("in time"), std::string::npos);
  }
  EXPECT_EQ(Ask(), "2") << "the next request asks it";
}

TEST_F(UpsTest, AServerThatHangsUpOrFloodsEndsAtOnceAndRaisesNoSignal) {
  const char* noAnswer = "upsd at 127.0.0.1 port N hung up, or sent something that is no answer";
  const struct {
    const char* name;
    std::string sends, floods;
    const char* says;
  } cases[] = {
      {"rack", "", "", noAnswer},
      {"rack", "", std::string(65536, 'x'), noAnswer},
      {"rack", "", std::string(65536, '\n'), noAnswer},
      {"rack", "VAR rack ups.load \"OB\"\n", "", noAnswer},
      {"rack", "VAR rack ups.status \"OB\n", "", noAnswer},
      {"", "BEGIN LIST UPS\nEND LIST UPS\n", "",
       "upsd at 127.0.0.1 port N knows no UPS: see /etc/nut/ups.conf"},
      {"", "UPS rack \"\"\nEND LIST UPS\n", "", noAnswer},
      {"", "BEGIN LIST UPS\n", "UPS a \"\"\n", noAnswer},
  };
  for (const auto& c : cases) {
    FakeServer server([c](int client) {
      if (!c.sends.empty()) FakeServer::Send(client, c.sends);
      while (!c.floods.empty() && FakeServer::Send(client, c.floods)) continue;
    });
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < 20; ++i) EXPECT_EQ(AskAbout(c.name, server), c.says);
    EXPECT_LT(std::chrono::steady_clock::now() - start, TimesFactor(900ms));
    EXPECT_EQ(server.Clients(), 20);
  }
  sigset_t pending, mask;
  sigpending(&pending);
  pthread_sigmask(SIG_SETMASK, nullptr, &mask);
  EXPECT_EQ(sigismember(&pending, SIGPIPE) + sigismember(&mask, SIGPIPE), 0);
}

TEST_F(UpsTest, ItsConnectionIsNotHandedDownToChildren) {
  std::atomic<int> found = 0;
  FakeServer server([&](int client) {
    FakeServer::Line(client);
    found = std::system("ls -l /proc/self/fd </dev/null 2>/dev/null | grep -q socket:");
  });
  AskAbout("rack", server);
  EXPECT_NE(found, 0);
}

}  // namespace

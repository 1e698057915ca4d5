// Whatever hangs, floods or is stuck, alone or all at once: an answer comes within two
// seconds, names the source, has the rest intact, and leaves nothing behind.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

#include "tests/linux/eventually.h"
#include "tests/linux/full_machine.h"

namespace {

// Milliseconds, with the usual time-outs: that an answer may take, whatever happens, and that it
// takes once what hangs is left alone.
constexpr double kLongest = 2000, kSettled = 200;

struct Trouble {
  const char* name;
  const char* failed;  // the sources that must be named, and no others
  const char* reason;  // a part of what is said about them
  void (*befall)(FullMachine& machine);
  int answers = 20;
};

// A mount that hangs, and the disk file system on top of one of its folders.
void HangAbove(FullMachine& machine) {
  const std::filesystem::path folder = machine.Path() / "hangs";
  create_directories(folder);
  machine.hungMount = std::make_unique<HungMount>(folder.string());
  machine.AlsoMounted("2 1 0:50 / " + folder.string() +
                      " rw - fuse.sshfs server:/x rw\n3 2 8:17 / " + folder.string() +
                      "/data rw - ext4 /dev/none/sdb1 rw\n");
}

// What each source does by itself when it hangs is its own test's matter.
const Trouble kTroubles[] = {
    {"NginxHangs", "web server", "nginx",
     [](auto& machine) {
       machine.bus->Say("nginx.service", "ActiveState", "failed");
       machine.Program("/usr/sbin/nginx", machine.Hang());
     }},
    {"SanToolForks", "SAN", "velaiscsiep",
     [](auto& machine) {
       machine.Program("/usr/local/bin/velaiscsiep", "for i in 1 2 3; do sleep 1000 & echo $! >> " +
                                                         (machine.Path() / "started").string() +
                                                         "; done; exit 0");
     }},
    {"FuseHangs", "volumes", "lies behind", HangAbove},
    {"Everything", "SAN, UPS, expansion units, hardware, high availability, volumes, web server",
     "lies behind",
     [](auto& machine) {
       HangAbove(machine);
       machine.Upsd([](int client) { FakeServer::Line(client), FakeServer::Line(client); });
       machine.bus->StopDaemon();
       machine.Program("/usr/sbin/crm_mon", machine.Hang());
       machine.Program("/usr/local/bin/velaiscsiep", machine.Hang());
       machine.Collected(200);
     },
     1000},
};

class TroubledMachine : public testing::TestWithParam<Trouble> {};
void PrintTo(const Trouble& trouble, std::ostream* out) { *out << trouble.name; }

// The document but its uptime, which comes last.
std::string DocumentIn(const std::vector<std::string>& lines) {
  const std::string document = With(lines, "document").at(0);
  return document.substr(0, document.find(",\"uptime\""));
}

// Of the programs that the machine started, those that still run. Who ended and was not ours
// is for the first process to reap.
std::string Survivors(const FullMachine& machine) {
  std::ifstream started(machine.Path() / "started");
  std::string left, line;
  while (std::getline(started, line)) {
    std::ifstream status("/proc/" + line + "/stat");
    std::string text;
    if (std::getline(status, text) && text.find(") Z ") == std::string::npos) left += text + "; ";
  }
  return left;
}

// What is not as it must be when `well` is all else that the machine has to say, with so many
// times the usual time-outs.
testing::Message Complaints(const FullMachine& machine, const Trouble& trouble,
                            const std::string& well, int factor) {
  const int answers = factor == 1 ? trouble.answers : 6;
  const auto lines =
      machine.Answers(std::to_string(answers), "VELA_TIMEOUT_FACTOR=" + std::to_string(factor));
  testing::Message complaints;
  const auto expect = [&complaints](bool isTrue, const char* what) {
    if (!isTrue) complaints << what << "; ";
  };
  expect(machine.status == 0, "it did not exit well");
  expect(DocumentIn(lines) == well, "another answer");
  expect(FailedIn(lines) == trouble.failed, "other sources failed");
  const std::string sources = testing::PrintToString(With(lines, "source"));
  expect(sources.find(trouble.reason) != std::string::npos, "another reason");
  const auto [longest, settled] = TimesIn(lines);
  expect(longest < kLongest * factor, "an answer came late");
  expect(settled < kSettled * factor, "what hangs was not left alone");
  expect(With(lines, "changed").empty(), "something stayed behind in the process");
  auto log = With(lines, "log");
  std::erase_if(log, [](const std::string& line) { return line.starts_with("debug "); });
  std::ranges::sort(log);
  expect(std::ranges::adjacent_find(log) == log.end(), "a failure was logged twice");
  if (!complaints.GetString().empty()) complaints << testing::PrintToString(lines);
  return complaints;
}

TEST_P(TroubledMachine, AnswersInTimeAndLosesNothingElse) {
  const Trouble& trouble = GetParam();
  FullMachine machine(
      "mirror-lost-member");  // whatever else befalls it, the lost member must still be told
  if (!machine.bus->Runs()) GTEST_SKIP() << "needs dbus-daemon: apt-get install dbus-daemon";
  if (!machine.Enter()) GTEST_SKIP() << "needs root";
  const auto lines = machine.Answers("1");
  ASSERT_EQ(machine.status, 0) << testing::PrintToString(lines);
  EXPECT_EQ(FailedIn(lines), "");
  const std::string well = DocumentIn(lines);
  EXPECT_NE(well.find("storage_is_attention"), std::string::npos) << well;

  trouble.befall(machine);
  // On a machine that is busy with something else, with more time for everything.
  std::string complaints;
  for (const int factor : {1, 8}) {
    complaints = Complaints(machine, trouble, well, factor).GetString();
    if (complaints.empty()) break;
  }
  EXPECT_EQ(complaints, "");
  EXPECT_TRUE(Eventually([&machine] { return Survivors(machine).empty(); })) << Survivors(machine);
}

// With the suspicion that makes nginx test itself, too.
TEST(FullMachine, IsAskedWithoutAnyHarm) {
  FullMachine machine;
  if (!machine.bus->Runs() || !machine.Enter()) GTEST_SKIP() << "needs root and dbus-daemon";
  machine.bus->Say("nginx.service", "ActiveState", "failed");
  const auto lines = machine.Answers("3", VELA_HARMLESS);
  if (machine.status == 77 << 8) GTEST_SKIP() << "needs strace: apt-get install strace";
  EXPECT_EQ(machine.status, 0) << testing::PrintToString(lines);
  EXPECT_EQ(FailedIn(lines), "");
}

TEST(FullMachine, TellsManyThreadsTheSameAtOnce) {
  FullMachine machine("mirror-lost-member");
  if (!machine.bus->Runs() || !machine.Enter()) GTEST_SKIP() << "needs root and dbus-daemon";
  machine.bus->Say("nginx.service", "ActiveState", "failed");
  const auto lines = machine.Answers("25 4");
  SCOPED_TRACE(testing::PrintToString(lines));
  EXPECT_EQ(machine.status, 0);
  EXPECT_NE(DocumentIn(lines).find("storage_is_attention"), std::string::npos);
  EXPECT_EQ(With(lines, "changed"), std::vector<std::string>());
}

// As the installed service runs: it may test no configuration, ask no cluster and read no
// configuration of NUT. That is no fault of the machine, and it is said.
TEST(FullMachine, AUserWithoutRightsRaisesNoFalseAlarm) {
  FullMachine machine;
  if (!machine.bus->Runs() || !machine.Enter()) GTEST_SKIP() << "needs root and dbus-daemon";
  machine.bus->Say("nginx.service", "ActiveState", "failed");
  machine.Program("/usr/sbin/nginx", "exit 1");
  machine.Write("/usr/sbin/crm_mon",
                "#!/bin/sh\ncat " FIXTURES "/ha/not-connected.xml; exit 102\n");
  machine.Write("/etc/velainfo.conf", "");
  for (const char* file : {"/etc/nut/nut.conf", "/etc/nut/upsmon.conf"})
    std::filesystem::permissions(machine.Write(file, "MODE=standalone\n"),
                                 std::filesystem::perms(0640));
  std::filesystem::permissions(machine.Path(), std::filesystem::perms(0755));
  const std::string nobody = "setpriv --reuid 65534 --regid 65534 --clear-groups";
  const auto lines = machine.Answers("3", nobody);
  SCOPED_TRACE(testing::PrintToString(lines));
  EXPECT_NE(DocumentIn(lines).find("widget:system_ok"), std::string::npos);
  EXPECT_EQ(FailedIn(lines), "high availability, web server");
  const std::string sources = testing::PrintToString(With(lines, "source"));
  EXPECT_NE(sources.find("only root can test its configuration"), std::string::npos);
  EXPECT_NE(sources.find("UPS: absent no UPS is set up"), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Each, TroubledMachine, testing::ValuesIn(kTroubles),
                         [](const auto& each) { return std::string(each.param.name); });

}  // namespace

// Whatever hangs or is stuck, alone or all at once: an answer comes within two seconds, names the
// source, has the rest intact, and leaves nothing behind.
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>

#include <algorithm>
#include <atomic>
#include <fstream>

#include "tests/linux/eventually.h"
#include "tests/linux/fake_server.h"
#include "tests/linux/hung_mount.h"
#include "tests/linux/machine_tree.h"
#include "tests/linux/private_bus.h"
#include "tests/linux/table.h"

namespace {

using Lines = std::vector<std::string>;

// Milliseconds, with the usual time-outs: that an answer may take, whatever happens, and that it
// takes once what hangs is left alone.
constexpr double kLongest = 2000, kSettled = 200;

// Of the lines, what follows `word` in those that begin with it.
Lines With(const Lines& lines, const std::string& word) {
  Lines found;
  for (const std::string& line : lines)
    if (line.starts_with(word + " ")) found.push_back(line.substr(word.size() + 1));
  return found;
}

// "UPS, SAN": the sources that failed.
std::string FailedIn(const Lines& lines) {
  std::string names;
  for (const std::string& source : With(lines, "source"))
    for (const char* unread : {": failed", ": unwatched"})
      if (const std::size_t end = source.find(unread); end != std::string::npos)
        names += (names.empty() ? "" : ", ") + source.substr(0, end);
  return names;
}

// The document but its uptime, which comes last.
std::string DocumentIn(const Lines& lines) {
  const std::string document = With(lines, "document").at(0);
  return document.substr(0, document.find(",\"uptime\""));
}

// A machine with all its daemons, and a mount that hangs. systemd suspects nginx, which tests
// itself.
class FullMachine : public MachineTree {
 public:
  explicit FullMachine(const std::string& name) : MachineTree(name) {
    Load("daemons");
    Write("/etc/velainfo.conf", "ups.monitor=rack@127.0.0.1:" + upsd_.Port() + "\n");
    bus_.Say("nginx.service", "LoadState", "loaded");
    bus_.Say("nginx.service", "ActiveState", "active");
    bus_.Say("nginx.service", "ReloadResult", "exit-code");
    bus_.Say("pacemaker.service", "ActiveState", "active");
    create_directories(Path() / "hangs");
  }
  ~FullMachine() {
    if (entered_) umount2("/sys", MNT_DETACH);
  }

  // Puts its /sys into the place of the real one, in a mount namespace of this thread and
  // its children. False: not possible here.
  bool Enter() {
    entered_ = bus_.Runs() && unshare(CLONE_NEWNS) == 0 &&
               mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
               mount((Path() / "sys").c_str(), "/sys", nullptr, MS_BIND, nullptr) == 0;
    if (entered_) hungMount_ = std::make_unique<HungMount>((Path() / "hangs").string());
    return entered_;
  }
  void StopDaemons() {
    mute_ = true;
    bus_.StopDaemon();
  }

  // What `answers` prints of this machine, line by line; `with` goes before its name, `count`
  // may have a number of threads behind it. It waits as long as tests do, or as `with` says.
  Lines Answers(const std::string& count, const std::string& with = "") const {
    const std::string command = "VELA_ROOT_TRUST=yes VELA_ROOT=" + Path().string() + " " + with +
                                " " VELA_ANSWERS " " VELA_MODULE " " + count + " 2>&1";
    FILE* stream = popen(command.c_str(), "r");
    Lines lines;
    char line[64 << 10];
    while (fgets(line, sizeof line, stream) != nullptr) lines.emplace_back(line).pop_back();
    status = pclose(stream);
    return lines;
  }
  mutable int status = -1;  // of the last Answers

  // Of the programs that the machine started, those that still run. Who ended and was not ours
  // is for the first process to reap.
  std::string Survivors() const {
    std::ifstream started(Path() / "started");
    std::string left, line, text;
    while (std::getline(started, line)) {
      std::ifstream file("/proc/" + line + "/stat");
      if (std::getline(file, text) && text.find(") Z ") == std::string::npos) left += text + "; ";
    }
    return left;
  }

 private:
  bool entered_ = false;
  std::atomic<bool> mute_ = false;
  FakeServer upsd_{[this](int client) {
    while (FakeServer::Line(client).starts_with("GET VAR"))
      if (!mute_) FakeServer::Send(client, "VAR rack ups.status \"OL\"\n");
  }};
  PrivateBus bus_{*this};
  std::unique_ptr<HungMount> hungMount_;
};

// A row of the table "troubles": the machine, the sources that must be named, a part of what is
// said about them, and how often to ask.
using Trouble = std::vector<std::string>;

class TroubledMachine : public testing::TestWithParam<Trouble> {};

// What is not as it must be when `well` is all else that the machine has to say, with so many
// times the usual time-outs.
testing::Message Complaints(const FullMachine& machine, const Trouble& trouble,
                            const std::string& well, int factor) {
  const auto lines = machine.Answers(factor == 1 ? trouble[3] : "6",
                                     "VELA_TIMEOUT_FACTOR=" + std::to_string(factor));
  testing::Message complaints;
  const auto expect = [&complaints](bool isTrue, const char* what) {
    if (!isTrue) complaints << what << "; ";
  };
  expect(machine.status == 0, "it did not exit well");
  expect(DocumentIn(lines) == well, "another answer");
  expect(FailedIn(lines) == trouble[1], "other sources failed");
  const std::string sources = testing::PrintToString(With(lines, "source"));
  expect(sources.find(trouble[2]) != std::string::npos, "another reason");
  double longest = 0, settled = 0;
  sscanf(With(lines, "longest").at(0).c_str(), "%lf ms, then %lf", &longest, &settled);
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
  FullMachine machine("mirror-lost-member");  // which must be told, whatever else befalls it
  if (!machine.Enter()) GTEST_SKIP() << "needs root and dbus-daemon";
  const Lines lines = machine.Answers("1");
  ASSERT_EQ(machine.status, 0) << testing::PrintToString(lines);
  EXPECT_EQ(FailedIn(lines), "");
  const std::string well = DocumentIn(lines);
  EXPECT_NE(well.find("storage_is_attention"), std::string::npos) << well;

  machine.Load(trouble[0]);
  if (trouble[0] == "everything-hangs") machine.StopDaemons();
  // On a machine that is busy with something else, with more time for everything.
  std::string complaints;
  for (const int factor : {1, 8}) {
    complaints = Complaints(machine, trouble, well, factor).GetString();
    if (complaints.empty()) break;
  }
  EXPECT_EQ(complaints, "");
  EXPECT_TRUE(Eventually([&machine] { return machine.Survivors().empty(); }))
      << machine.Survivors();
}

TEST(FullMachine, IsAskedWithoutAnyHarm) {
  FullMachine machine("full");
  if (!machine.Enter()) GTEST_SKIP() << "needs root and dbus-daemon";
  const Lines lines = machine.Answers("3", VELA_HARMLESS);
  if (machine.status == 77 << 8) GTEST_SKIP() << "needs strace: apt-get install strace";
  EXPECT_EQ(machine.status, 0) << testing::PrintToString(lines);
  EXPECT_EQ(FailedIn(lines), "");
}

TEST(FullMachine, TellsManyThreadsTheSameAtOnce) {
  FullMachine machine("mirror-lost-member");
  if (!machine.Enter()) GTEST_SKIP() << "needs root and dbus-daemon";
  const Lines lines = machine.Answers("25 4");
  SCOPED_TRACE(testing::PrintToString(lines));
  EXPECT_EQ(machine.status, 0);
  EXPECT_NE(DocumentIn(lines).find("storage_is_attention"), std::string::npos);
  EXPECT_EQ(With(lines, "changed"), Lines());
}

// That it may not ask is no fault of the machine, and it is said.
TEST(FullMachine, AUserWithoutRightsRaisesNoFalseAlarm) {
  FullMachine machine("full");
  if (!machine.Enter()) GTEST_SKIP() << "needs root and dbus-daemon";
  machine.Load("without-rights");
  for (const char* file : {"etc/nut/nut.conf", "etc/nut/upsmon.conf"})
    permissions(machine.Path() / file, std::filesystem::perms(0640));
  permissions(machine.Path(), std::filesystem::perms(0755));
  const Lines lines = machine.Answers("3", "setpriv --reuid 65534 --regid 65534 --clear-groups");
  SCOPED_TRACE(testing::PrintToString(lines));
  EXPECT_NE(DocumentIn(lines).find("widget:system_ok"), std::string::npos);
  EXPECT_EQ(FailedIn(lines), "UPS, high availability, web server");
  const std::string sources = testing::PrintToString(With(lines, "source"));
  EXPECT_NE(sources.find("only root can test its configuration"), std::string::npos);
  EXPECT_NE(sources.find("UPS: unwatched /etc/nut/nut.conf could not be read"), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Each, TroubledMachine, testing::ValuesIn(ReadTable("troubles", 4)),
                         [](const auto& each) {
                           return std::regex_replace(each.param[0], std::regex("-"), "_");
                         });

}  // namespace

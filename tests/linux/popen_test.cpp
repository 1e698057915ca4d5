#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <regex>
#include <string>

#include "platform/linux/base/deadline.h"
#include "platform/linux/base/process.h"
#include "platform/linux/base/spawn.h"
#include "platform/linux/base/sysfs.h"
#include "platform/linux/contract/popen.h"
#include "tests/linux/eventually.h"
#include "tests/linux/source_statuses.h"
#include "tests/linux/table.h"
#include "tests/linux/temporary_root.h"
#include "velac.h"

namespace {

using namespace std::chrono_literals;
using linux_platform::Bounds, linux_platform::Child, linux_platform::CircuitBreaker,
    linux_platform::MayRunSanTool;

// What `stream` gives to its end; its wait status goes to `status`.
std::string ReadAll(FILE* stream, int* status = nullptr) {
  if (stream == nullptr) return "not started";
  std::string text;
  char part[4096];
  while (const std::size_t got = fread(part, 1, sizeof part, stream)) text.append(part, got);
  const int ended = VLIBCPclose(stream);
  if (status != nullptr) *status = ended;
  return text;
}

std::string Output(const char* script, int* status = nullptr) {
  return ReadAll(VLIBCPopen("/bin/sh", "r", "-c", script, nullptr), status);
}

// The same under bounds of the test's own; `cut` says how it ended.
std::string Bounded(const char* script, Bounds bounds, Child::Cut& cut) {
  std::string reason, text;
  Child child({"/bin/sh", "-c", script}, bounds, reason);
  char part[4096];
  for (ssize_t got; (got = child.Read(part, sizeof part)) > 0;)
    text.append(part, static_cast<std::size_t>(got));
  cut = child.WasCut();
  return text;
}

// How many processes have `word` in their arguments. A dead one has none.
int CountWith(const std::string& word) {
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
    const std::string line = linux_platform::Attribute(entry.path() / "cmdline");
    if (line.find(word) != std::string::npos) ++count;
  }
  return count;
}

TEST(Popen, AProgramRunsWithNothingOfThisProcessButThePipe) {
  setenv("VELA_SECRET", "leaked", 1);
  const int open = ::open("/", O_RDONLY);  // on purpose not closed on exec
  ASSERT_GE(open, 3);
  EXPECT_EQ(ReadAll(VLIBCPopen("/bin/ls", "r", "/proc/self/fd", nullptr)), "0\n1\n2\n3\n")
      << "the last one is the folder being listed";
  close(open);
  EXPECT_EQ(Output("tr '\\0' '\\n' < /proc/$$/environ | sort"),
            "LC_ALL=C\nPATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin\n");
  EXPECT_EQ(Output("readlink /proc/$$/fd/0; cat"), "/dev/null\n");
  EXPECT_EQ(Output("echo noise >&2; test $(cut -d' ' -f5 /proc/$$/stat) = $$ && echo leader"),
            "leader\n");
  EXPECT_EQ(ReadAll(VLIBCPopen("/bin/echo", "r", "a b", "$HOME", "'", nullptr)), "a b $HOME '\n");
}

// That the host's own signals stay as they were is seen by `answers`.
TEST(Popen, AProgramStartsWithDefaultSignalsAndItsStatusComesBack) {
  sigset_t blocked, mask;
  sigemptyset(&blocked);
  sigaddset(&blocked, SIGUSR2);
  pthread_sigmask(SIG_BLOCK, &blocked, &mask);
  signal(SIGPIPE, SIG_IGN);
  // glibc keeps its two internal signals, 32 and 33, ignored.
  EXPECT_EQ(Output("grep -E 'Sig(Blk|Ign)' /proc/$$/status | tr -d '\\t'"),
            "SigBlk:0000000000000000\nSigIgn:0000000180000000\n");
  signal(SIGPIPE, SIG_DFL);
  pthread_sigmask(SIG_SETMASK, &mask, nullptr);
  int status = 0;
  EXPECT_EQ(Output("echo x; exit 3", &status), "x\n");
  EXPECT_EQ(status, 3 << 8);
  signal(SIGCHLD, SIG_IGN);
  EXPECT_EQ(Output("echo x; exit 3"), "x\n") << "a host that ignores its children";
  signal(SIGCHLD, SIG_DFL);
}

TEST(Popen, WhatCannotBeStartedIsNull) {
  VELAPlatformSourcesReset();
  EXPECT_EQ(VLIBCPopen("/usr/local/bin/no-such-tool", "r", nullptr), nullptr);
  EXPECT_EQ(VLIBCErrGet(), 0x0A00U);
  EXPECT_EQ(SourceReports()["SAN"].reason,
            "/usr/local/bin/no-such-tool could not be started: No such file or directory");
  EXPECT_EQ(VLIBCPopen("/bin/true", "w", nullptr), nullptr);
}

TEST(Popen, ADocumentOfSixteenMebibytesArrivesWholeAndAFloodIsCut) {
  EXPECT_EQ(Output("head -c 16777216 /dev/zero").size(), 16777216U);
  EXPECT_LE(Output("cat /dev/zero").size(), 16777216U);
  EXPECT_EQ(Output("echo again"), "not started") << "it is left alone";
  CircuitBreaker::CloseAll();
  EXPECT_EQ(Output("echo again"), "again\n");
}

TEST(Popen, AToolThatWasStoppedIsTriedBeforeTheModuleSeesItAgain) {
  const TemporaryRoot root;
  const auto tool = [&](const std::string& script) {
    std::filesystem::permissions(
        root.Write("/usr/local/bin/velaiscsiep", "#!/bin/sh\n" + script + "\n"),
        std::filesystem::perms(0755));
    CircuitBreaker::CloseAll();  // as if the pause were over
  };
  const auto run = [] {
    return ReadAll(VLIBCPopen(linux_platform::kSanTool, "r", "--asked", nullptr)).size();
  };
  std::string reason;
  tool("cat /dev/zero");
  EXPECT_TRUE(MayRunSanTool(reason));
  EXPECT_GT(run(), 5U);
  tool("cat /dev/zero");
  EXPECT_FALSE(MayRunSanTool(reason));
  EXPECT_NE(reason.find("it printed more than 16 MiB"), std::string::npos) << reason;
  tool("test \"$*\" = --asked && echo fine");
  EXPECT_TRUE(MayRunSanTool(reason)) << reason;
  EXPECT_EQ(run(), 5U);
  tool("cat /dev/zero");
  EXPECT_TRUE(MayRunSanTool(reason)) << "it was well, so the module may see for itself";
  if (geteuid() != 0) return;
  linux_platform::SetRoot(root.Path().string(), false);
  EXPECT_FALSE(MayRunSanTool(reason));
  EXPECT_TRUE(reason.ends_with("was not started: root starts no program of another root"));
  EXPECT_EQ(VLIBCPopen(linux_platform::kSanTool, "r", nullptr), nullptr);
}

TEST(Child, WhateverItDoesItEndsInTimeWithAllThatItStarted) {
  const std::string day = "86400." + std::to_string(getpid());
  for (const auto& row : ReadTable("tools-that-hide", 3)) {
    SCOPED_TRACE(row[0]);
    const std::string script = std::regex_replace(row[2], std::regex("\\{day\\}"), day);
    Child::Cut cut;
    Bounded(script.c_str(), {row[1] == "late" ? 300ms : 60'000ms, 300}, cut);
    const char* const ends[] = {"done", "late", "flood"};  // None, Late, Long
    EXPECT_EQ(ends[static_cast<int>(cut)], row[1]);
    EXPECT_TRUE(Eventually([&day] { return CountWith(day) == 0; }));
  }
}

TEST(Child, ThatIsStoppedGoesOnWhileItsEndIsAwaited) {
  const pid_t child = fork();
  if (child == 0) {
    raise(SIGSTOP);
    _exit(0);
  }
  EXPECT_TRUE(linux_platform::AwaitDeath(child, 60s));
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
}

TEST(Child, EndsWithItsHostHoweverThatEnds) {
  const std::string day = "86401." + std::to_string(getpid()), sleep = "setsid sleep " + day;
  const pid_t host = fork();
  if (host == 0) {
    Child::Cut cut;
    Bounded((sleep + " & " + sleep).c_str(), {60s, 300}, cut);
    _exit(0);
  }
  EXPECT_TRUE(Eventually([&day] { return CountWith(day) >= 4; }));
  kill(host, SIGKILL);
  waitpid(host, nullptr, 0);
  EXPECT_TRUE(Eventually([&day] { return CountWith(day) == 0; }));
}

TEST(Popen, AHostThatClosedItsStandardDescriptorsIsServedToo) {
  const pid_t child = fork();
  if (child == 0) {
    close(0), close(1);
    std::string reason;
    Child tool({"/bin/echo", "fine"}, {30s, 4096}, reason);
    char text[16] = {};
    const bool fine = tool.Read(text, sizeof text) == 5 && std::string(text) == "fine\n";
    _exit(fine ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
}

}  // namespace

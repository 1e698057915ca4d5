// The real program over the real module and simulator.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "support/program.h"

namespace vela::host::test {
namespace {

constexpr const char* kGet = "/api/VELA.Core.System.SystemHealth/1/get";

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

std::string Scenario(const std::string& name, const std::string& state) {
  const std::filesystem::path folder = testing::TempDir() + "scenario-" + name;
  std::filesystem::create_directories(folder);
  std::ofstream(folder / "state.json") << state;
  return folder;
}

TEST(Program, TheExitStateTellsTheVerdict) {
  const struct {
    const char *name, *state;
    int status;
    const char* words;
  } cases[] = {
      {"well", R"({"why": "."})", 0, "Healthy: Everything is working well."},
      {"fan", R"({"why": ".", "hardware": {"fanFailed": true}})", 1,
       "Warning: A system fan has failed."},
      {"scan", R"({"why": ".", "securityScan": {"sysStatus": "danger"}})", 2,
       "Danger: The security scan found"},
      {"ups", R"({"why": ".", "ups": {"fails": true}})", 3, "Healthy as far as could be read."}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const Outcome outcome = RunProgram({"--scenario", Scenario(c.name, c.state), "--lang", "en"});
    EXPECT_EQ(outcome.status, c.status) << outcome.err;
    EXPECT_TRUE(Contains(outcome.out, c.words)) << outcome.out;
    EXPECT_EQ(Contains(outcome.out, "What to do:"), c.status == 1 || c.status == 2) << outcome.out;
    EXPECT_EQ(Contains(outcome.out, "Could not read UPS: "), c.status == 3) << outcome.out;
  }
}

std::vector<std::string> ScenariosNamed(const std::string& start) {
  std::vector<std::string> names;
  for (const auto& folder : std::filesystem::directory_iterator(VELA_SCENARIOS)) {
    const std::string name = folder.path().filename();
    if (folder.is_directory() && name.starts_with(start)) names.push_back(name);
  }
  std::sort(names.begin(), names.end());
  return names;
}

TEST(Program, WhatCouldNotBeReadIsNamedAndNeverCalledHealthy) {
  const std::vector<std::string> failing = ScenariosNamed("failing-");
  ASSERT_GT(failing.size(), 30U);
  for (const std::string& name : failing) {
    const Outcome outcome = RunProgram({"--scenario", name, "--lang", "en"});
    SCOPED_TRACE(name + "\n" + outcome.out);
    const bool finding = Contains(outcome.out, "What to do:");
    EXPECT_EQ(outcome.status == 3, !finding);
    EXPECT_EQ(outcome.out.starts_with("Healthy as far as could be read.\n"), !finding);
    EXPECT_TRUE(Contains(outcome.out, "  Could not read "));
  }
}

TEST(Program, JsonIsTheDocumentAndNothingElse) {
  const Outcome outcome = RunProgram({"status", "--json", "--scenario", "healthy"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out.find('\n'), outcome.out.size() - 1);
  EXPECT_TRUE(outcome.out.starts_with(R"({"hostname":"vela","interfaces":[{)")) << outcome.out;
  EXPECT_TRUE(Contains(outcome.out, R"("id":"system_health","priority":40.0,"type":2})"));
  EXPECT_EQ(outcome.err, "");
}

TEST(Program, WhatCannotBeAskedIsSaidWithWhatToDo) {
  const std::string text = testing::TempDir() + "text.so";
  std::ofstream(text) << "not a library";
  const std::string bad = Scenario("bad", "{\"why\": \".\",\n \"fanFailed\": true}");
  const struct {
    std::vector<std::string> arguments;
    int status;
    std::vector<std::string> words;
  } cases[] = {
      {{"--platform", "/nowhere/x.so"}, 69, {"the platform /nowhere/x.so", "no such file"}},
      {{"--platform", text}, 69, {"the platform " + text, "not a shared library"}},
      {{"--platform", "simulator", "--module", "/nowhere/m.so"}, 69, {"the module /nowhere/m.so"}},
      {{"--platform", "simulator", "--module", VELA_SIMULATOR}, 69, {"GetAPITable", "--module"}},
      {{"--platform", "simulator", "--module", VELA_HALF_MODULE}, 69, {"VELANobodyHasThis"}},
      {{"--platform", VELA_HALF_PLATFORM}, 69, {"the module", "which it needs"}},
      {{"--scenario", "no-such-machine"}, 66, {"no-such-machine", "scenarios"}},
      {{"--scenario", bad}, 66, {"state.json:2", "fanFailed"}},
      {{"--lang", "tlh"}, 64, {"tlh", "--lang"}},
      {{"--wrong"}, 64, {"--wrong", "--help"}},
      {{"serve", "--listen", "0.0.0.0:0"}, 64, {"0.0.0.0", "--allow-remote"}}};
  for (const auto& c : cases) {
    const Outcome outcome = RunProgram(c.arguments);
    SCOPED_TRACE(outcome.err);
    EXPECT_EQ(outcome.status, c.status);
    EXPECT_EQ(outcome.out, "");
    for (const std::string& words : c.words) {
      EXPECT_TRUE(Contains(outcome.err, words)) << words;
    }
  }
}

TEST(Program, LibrariesMayBeNamedInTheEnvironment) {
  EXPECT_EQ(RunProgram({}, {"VELA_HEALTH_PLATFORM=simulator"}).status, 0);
  EXPECT_EQ(
      RunProgram({}, {"VELA_HEALTH_PLATFORM=simulator", "VELA_HEALTH_MODULE=/nowhere"}).status, 69);
}

TEST(Program, ExplainShowsEveryCheckerAndWhatDecided) {
  const Outcome outcome =
      RunProgram({"explain", "--lang", "en", "--scenario", "fan-failed-and-cluster-trouble"});
  EXPECT_EQ(outcome.status, 1);
  for (const char* words :
       {"volume usage: nothing to report", "fan failed yes", "status danger",
        "1. 0  system status: A system fan has failed. <- the most urgent",
        "2. 0.5  high availability:", "system status 0 < high availability 0.5"}) {
    EXPECT_TRUE(Contains(outcome.out, words)) << words << " in\n" << outcome.out;
  }
  const Outcome json = RunProgram({"explain", "--json", "--scenario", "healthy"});
  EXPECT_TRUE(json.out.starts_with(R"({"checkers":[{"name":"volume usage","rule":null,)"));
}

TEST(Program, DiffTellsWhetherTheVerdictChanges) {
  const std::string saved = testing::TempDir() + "saved.json";
  std::ofstream(saved) << RunProgram({"--json", "--scenario", "volume-low"}).out;
  const struct {
    std::string a, b;
    int status;
    const char* words;
  } cases[] = {
      {"healthy", "volume-low", 1, "The verdict changes\n  healthy: Healthy: Everything"},
      {"volume-low", "healthy", 0, "The verdict changes"},
      {saved, "volume-low", 1, "Nothing changes: Notice: Volume 1: almost full"},
      {"system-fan-failed", "fan-failed-and-cluster-trouble", 1,
       "Nothing changes: Warning: A system fan has failed.\n+ Warning: The high-availability"},
      {"healthy", "no-such", 66, ""}};
  for (const auto& c : cases) {
    const Outcome outcome = RunProgram({"diff", "--lang", "en", c.a, c.b});
    SCOPED_TRACE(c.a + " " + c.b + outcome.out + outcome.err);
    EXPECT_EQ(outcome.status, c.status);
    EXPECT_TRUE(Contains(outcome.out, c.words));
  }
}

TEST(Program, TheFindingsPageIsUpToDate) {
  std::stringstream page;
  page << std::ifstream(VELA_FINDINGS_PAGE).rdbuf();
  EXPECT_EQ(RunProgram({"findings", "--markdown", "--lang", "en"}).out, page.str())
      << "run: vela-health findings --markdown --lang en > docs/findings.md";
}

TEST(Serve, TheDocumentIsTheModulesAndOtherPathsNameWhatExists) {
  Serving serving({"--scenario", "healthy"});
  const std::string answer = Get(serving.Port(), kGet);
  EXPECT_TRUE(answer.starts_with("HTTP/1.1 200 OK\r\n")) << answer;
  EXPECT_TRUE(Contains(answer, "Content-Type: application/json\r\n"));
  const std::string document = RunProgram({"--json", "--scenario", "healthy"}).out;
  EXPECT_EQ(answer.substr(answer.find("\r\n\r\n") + 4) + "\n", document);

  for (const char* path : {"/api/VELA.Core.System.SystemHealth/2/get", "/api/x", "/api/",
                           "/api/VELA.Core.System.SystemHealth/1/set",
                           "/api/VELA.Core.System.SystemHealth/99999999999999999999/get"}) {
    const std::string problem = Get(serving.Port(), path);
    SCOPED_TRACE(problem);
    EXPECT_TRUE(problem.starts_with("HTTP/1.1 404 "));
    EXPECT_TRUE(Contains(problem, "Content-Type: application/problem+json\r\n"));
    EXPECT_TRUE(Contains(problem, std::string("\"available\":[\"") + kGet + "\""));
  }
}

TEST(Serve, OneConnectionCarriesManyRequests) {
  Serving serving({"--scenario", "healthy"});
  const std::string request = std::string("GET ") + kGet + " HTTP/1.1\r\nHost: test\r\n\r\n";
  const std::string last =
      std::string("HEAD ") + kGet + " HTTP/1.1\r\nHost: test\r\nConnection: close\r\n\r\n";
  const std::string answers = Exchange(serving.Port(), request + request + last);
  std::size_t count = 0;
  for (std::size_t at = 0; (at = answers.find("HTTP/1.1 200 OK", at)) != std::string::npos; ++at) {
    ++count;
  }
  EXPECT_EQ(count, 3U) << answers;
  EXPECT_TRUE(answers.ends_with("\r\n\r\n")) << "HEAD has no body";
}

TEST(Serve, ThePageAndNothingElseOfTheDiskIsServedGuarded) {
  Serving serving({"--scenario", "healthy"});
  for (const char* path : {"/", "/style.css", "/widget.js", "/render.js", "/texts/zh-CN.json",
                           "/answer", "/healthz", "/metrics", "/nothing"}) {
    const std::string answer = Get(serving.Port(), path);
    SCOPED_TRACE(path);
    EXPECT_EQ(answer.starts_with("HTTP/1.1 200 "), std::string(path) != "/nothing");
    EXPECT_TRUE(Contains(answer, "Content-Security-Policy: default-src 'none'; script-src 'self'"));
    EXPECT_TRUE(Contains(answer, "X-Content-Type-Options: nosniff"));
    EXPECT_FALSE(answer.ends_with("\r\n\r\n")) << "a body is there";
  }
  for (const char* path : {"/texts/", "/texts/../www/index.html", "/%2e%2e/texts/en.json", "//",
                           "/../../../../etc/passwd", "/texts/en.json/", "/index.html"}) {
    EXPECT_TRUE(Get(serving.Port(), path).starts_with("HTTP/1.1 404 ")) << path;
  }
}

TEST(Serve, ThePageAlsoLearnsOfSourcesAndOfFindingsThatLost) {
  Serving serving({"--scenario", "fan-failed-and-cluster-trouble"});
  const std::string answer = Get(serving.Port(), "/answer");
  const std::string document =
      RunProgram({"--json", "--scenario", "fan-failed-and-cluster-trouble"}).out;
  EXPECT_TRUE(Contains(answer, "{\"answer\":" + document.substr(0, document.size() - 1) + ","))
      << answer;
  EXPECT_TRUE(Contains(answer, R"("id":"ha_status_warning","priority":0.5,"type":1}],)")) << answer;
  EXPECT_TRUE(Contains(answer, R"("name":"UPS","reason":"","state":"read"})")) << answer;
}

TEST(Serve, OnlyReadingIsAllowed) {
  Serving serving({"--scenario", "healthy"});
  const std::string answer = Exchange(
      serving.Port(), "POST / HTTP/1.1\r\nHost: test\r\nContent-Length: 9\r\n\r\n{\"a\": 1}\n");
  EXPECT_TRUE(answer.starts_with("HTTP/1.1 405 ")) << answer;
  EXPECT_TRUE(Contains(answer, "Allow: GET, HEAD\r\n"));
}

TEST(Serve, WhatIsNoRequestIsRefusedAndTheNextOneServed) {
  Serving serving({"--scenario", "healthy"});
  const std::string host = "Host: test\r\n", end = "\r\n", filler(20000, 'a');
  const struct {
    std::string request, status;
  } cases[] = {{"GET / FTP/1.0\r\n" + host + end, "HTTP/1.1 400"},
               {"GET / HTTP/1.1\r\n\r\n", "HTTP/1.1 400"},  // no host
               {"GET /" + filler + " HTTP/1.1\r\n" + host + end, "HTTP/1.1 4"},
               {"GET / HTTP/1.1\r\n" + host + "X: " + filler + end + end, "HTTP/1.1 4"},
               {"DELETE / HTTP/1.1\r\n" + host + end, "HTTP/1.1 405"},
               {"GET / HTTP/1.1\r\n" + host + "Content-Length: -1\r\n" + end, "HTTP/1.1 400"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.request.substr(0, 60));
    EXPECT_EQ(Exchange(serving.Port(), c.request, 2).substr(0, c.status.size()), c.status);
    EXPECT_TRUE(Get(serving.Port(), kGet).starts_with("HTTP/1.1 200"));
  }
}

TEST(Serve, HalfRequestsNeitherHoldUpOthersNorStayForEver) {
  Serving serving({"--scenario", "healthy"});
  std::vector<int> slow;
  for (int i = 0; i < 200; ++i) slow.push_back(Connect(serving.Port()));
  std::size_t ended = 0;
  for (int second = 0; second < 20 && ended < slow.size(); ++second) {
    ended = 0;
    for (const int socket : slow) {
      // One byte a second of a head that never ends.
      if (send(socket, "G", 1, MSG_NOSIGNAL | MSG_DONTWAIT) < 0) ++ended;
    }
    ASSERT_TRUE(Get(serving.Port(), kGet).starts_with("HTTP/1.1 200"));
    sleep(1);
  }
  EXPECT_EQ(ended, slow.size());
  for (const int socket : slow) close(socket);
}

TEST(Serve, BothSignalsEndItCleanlyAndFreeThePort) {
  for (const int signal : {SIGTERM, SIGINT}) {
    Serving serving({"--scenario", "healthy"});
    const int idle = Connect(serving.Port());  // an open connection does not hold it up
    EXPECT_EQ(serving.Stop(signal), 0);
    EXPECT_EQ(Connect(serving.Port()), -1);
    close(idle);
  }
}

TEST(Serve, ATakenPortIsSaid) {
  Serving serving({"--scenario", "healthy"});
  const Outcome outcome =
      RunProgram({"serve", "--scenario", "healthy", "--port", std::to_string(serving.Port())});
  EXPECT_EQ(outcome.status, 69);
  EXPECT_TRUE(Contains(outcome.err, "another program listens there")) << outcome.err;
}

}  // namespace
}  // namespace vela::host::test

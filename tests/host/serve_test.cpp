// `vela-health serve` on real sockets.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <vector>

#include "support/program.h"

namespace host::test {
namespace {

constexpr const char* kGet = "/api/VELA.Core.System.SystemHealth/1/get";

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
  const std::string request = std::string("GET ") + kGet + " HTTP/1.1\r\nHost: localhost\r\n\r\n";
  const std::string last =
      std::string("HEAD ") + kGet + " HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n\r\n";
  const std::string answers = Exchange(serving.Port(), request + request + last);
  std::size_t count = 0;
  for (std::size_t at = 0; (at = answers.find("HTTP/1.1 200 OK", at)) != std::string::npos; ++at) {
    ++count;
  }
  EXPECT_EQ(count, 3U) << answers;
  EXPECT_TRUE(answers.ends_with("\r\n\r\n")) << "HEAD has no body";
  EXPECT_TRUE(Contains(Get(serving.Port(), "/metrics"), "vela_health_answers_total 3\n"));
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
  EXPECT_TRUE(Contains(answer, R"("name":"UPS","state":"read"})")) << answer;
}

TEST(Serve, PreviewsAndTheGalleryExistOnlyInADemo) {
  Serving demo({"--demo"}), plain({"--scenario", "healthy"});
  const struct {
    const char *path, *status, *words;
  } cases[] = {
      {"/answer?scenario=overheating", "200", "temperature_warning"},
      {"/?scenario=overheating", "200", "<!doctype html>"},
      {"/gallery", "200", "<!doctype html>"},
      {"/gallery.json", "200", R"("scenario":"overheating"},)"},
      {"/?scenario=no-such", "404", "/gallery lists"},
      {"/answer?scenario=", "404", "/gallery lists"},
      {"/answer?scenario=../scenarios/overheating", "404", "application/problem+json"},
      {"/answer?scenario=%2e%2e%2fscenarios%2foverheating", "404", "application/problem+json"},
      {"/answer?scenario=README.md", "404", "application/problem+json"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.path);
    const std::string answer = Get(demo.Port(), c.path);
    EXPECT_TRUE(answer.starts_with(std::string("HTTP/1.1 ") + c.status)) << answer;
    EXPECT_TRUE(Contains(answer, c.words)) << answer;
    EXPECT_TRUE(Get(plain.Port(), c.path).starts_with("HTTP/1.1 404")) << c.path;
  }
  const Outcome outcome = RunProgram({"serve", "--demo", "--platform", "linux"});
  EXPECT_EQ(outcome.status, 64);
  EXPECT_TRUE(Contains(outcome.err, "Leave --platform out")) << outcome.err;
}

TEST(Serve, FilesArePackedForThoseWhoCanUnpackThemAndSentOnce) {
  Serving serving({"--scenario", "healthy"});
  const struct {
    const char* accepted;
    bool packed;
  } cases[] = {{"gzip, deflate, br", true},
               {"br;q=1, gzip;q=0.2", true},
               {"gzip;q=0", false},
               {"identity", false}};
  for (const auto& c : cases) {
    const std::string answer = Exchange(
        serving.Port(), std::string("GET /texts/ja.json HTTP/1.1\r\nHost: localhost\r\n") +
                            "Connection: close\r\nAccept-Encoding: " + c.accepted + "\r\n\r\n");
    EXPECT_EQ(Contains(answer, "Content-Encoding: gzip\r\n"), c.packed) << c.accepted;
    EXPECT_EQ(answer.size() < 7000, c.packed) << c.accepted;
    EXPECT_TRUE(Contains(answer, "Vary: Accept-Encoding\r\n"));
    const std::size_t tag = answer.find("ETag: ") + 6;
    const std::string again = Exchange(
        serving.Port(), "GET /texts/ja.json HTTP/1.1\r\nHost: localhost\r\nIf-None-Match: " +
                            answer.substr(tag, answer.find('\r', tag) - tag) +
                            "\r\nConnection: close\r\nAccept-Encoding: " + c.accepted + "\r\n\r\n");
    EXPECT_TRUE(again.starts_with("HTTP/1.1 304 ") && again.ends_with("\r\n\r\n")) << again;
  }
}

TEST(Serve, WhatIsNoRequestOfOursIsRefusedAndTheNextOneServed) {
  Serving serving({"--scenario", "healthy"});
  const std::string host = "Host: localhost\r\n", end = "\r\n", filler(20000, 'a');
  const std::string line = "GET /healthz HTTP/1.1\r\n";
  constexpr bool kByLibrary = true;  // it answers by itself: no headers of ours
  const struct {
    std::string request, status;
    bool library = false;
  } cases[] = {{"GET / FTP/1.0\r\n" + host + end, "400", kByLibrary},
               {line + end, "400", kByLibrary},  // no host
               {"GET /" + filler + " HTTP/1.1\r\n" + host + end, "414", kByLibrary},
               {line + host + "X: " + filler + end + end, "431", kByLibrary},
               {line + host + "no colon" + end + end, "400", kByLibrary},
               {line + host + "Content-Length: -1\r\n" + end, "400", kByLibrary},
               {"PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n", "505", kByLibrary},
               {line + host + host + end, "400"},
               {line + host + "Content-Length: 3\r\n" + end + "abc", "413"},
               {line + host + "Transfer-Encoding: chunked\r\n" + end + "0\r\n" + end, "413"},
               {"POST / HTTP/1.1\r\n" + host + "Content-Length: 9\r\n" + end + "{\"a\": 1}", "405"},
               {"DELETE / HTTP/1.1\r\n" + host + end, "405"},
               {"OPTIONS * HTTP/1.1\r\n" + host + end, "405"},
               {"GET /healthz%00.html HTTP/1.1\r\n" + host + "Connection: close\r\n" + end, "404"},
               {"GET http://x/healthz HTTP/1.1\r\n" + host + "Connection: close\r\n" + end, "404"}};
  for (const auto& c : cases) {
    const std::string answer = Exchange(serving.Port(), c.request);
    SCOPED_TRACE(c.request.substr(0, 60) + "\n" + answer);
    EXPECT_EQ(answer.substr(0, 12), "HTTP/1.1 " + c.status);
    EXPECT_EQ(Contains(answer, "X-Content-Type-Options: nosniff\r\n"), !c.library);
    EXPECT_EQ(Contains(answer, "Content-Type: application/problem+json\r\n"), !c.library);
    EXPECT_EQ(Contains(answer, "Allow: GET, HEAD\r\n"), c.status == "405");
    EXPECT_TRUE(Get(serving.Port(), kGet).starts_with("HTTP/1.1 200"));
  }
}

TEST(Serve, OnlyItsOwnNamesAreAnsweredFor) {
  Serving local({"--scenario", "healthy", "--host-name", "NAS.example"});
  Serving remote({"--scenario", "healthy", "--allow-remote"});
  utsname machine = {};
  uname(&machine);
  const struct {
    std::string host;
    bool local, remote;
  } cases[] = {{"localhost", true, true},
               {"LocalHost.:8480", true, true},
               {"127.0.0.1:1", true, true},
               {"127.8.8.8", true, true},
               {"[::1]:8480", true, true},
               {"nas.example:443", true, false},
               {"192.0.2.7", false, true},
               {"[2001:db8::7]", false, true},
               {machine.nodename, false, true},
               {std::string(machine.nodename) + ".local", false, true},
               {"evil.example", false, false},
               {"localhost.evil.example", false, false},
               {"127.0.0.1.evil.example", false, false},
               {"", false, false}};
  for (const auto& c : cases) {
    const auto answer = [&c](const Serving& serving) {
      return Exchange(serving.Port(),
                      "GET /healthz HTTP/1.1\r\nHost: " + c.host + "\r\nConnection: close\r\n\r\n");
    };
    SCOPED_TRACE(c.host);
    EXPECT_EQ(answer(local).substr(0, 12), c.local ? "HTTP/1.1 200" : "HTTP/1.1 421");
    EXPECT_EQ(answer(remote).substr(0, 12), c.remote ? "HTTP/1.1 200" : "HTTP/1.1 421");
  }
  const std::string refused =
      Exchange(local.Port(), "GET / HTTP/1.1\r\nHost: evil.example\r\nConnection: close\r\n\r\n");
  EXPECT_TRUE(Contains(refused, "Content-Type: application/problem+json\r\n")) << refused;
  EXPECT_TRUE(Contains(refused, "--host-name")) << refused;
  EXPECT_TRUE(Exchange(local.Port(), "GET / HTTP/1.0\r\n\r\n").starts_with("HTTP/1.1 200"));
}

TEST(Serve, WhatRunsIsFinishedBeforeItStops) {
  const std::string request = std::string("GET ") + kGet + " HTTP/1.1\r\nHost: localhost\r\n\r\n";
  bool finished = false;
  for (int delay = 500; delay <= 8000 && !finished; delay *= 4) {
    const std::string state = R"({"why": ".", "hardware": {"delay": )" + std::to_string(delay);
    Serving serving({"--scenario", Scenario("pause", state + "}}")});
    const int waiting = Connect(serving.Port());
    send(waiting, request.data(), request.size(), MSG_NOSIGNAL);
    usleep(static_cast<useconds_t>(delay) * 500);  // it runs by now, if the machine is not too busy
    EXPECT_TRUE(Get(serving.Port(), "/healthz").starts_with("HTTP/1.1 200"));
    EXPECT_EQ(serving.Stop(SIGTERM), 0);
    finished = ReadAll(waiting).starts_with("HTTP/1.1 200");
    close(waiting);
  }
  EXPECT_TRUE(finished);
}

TEST(Serve, HalfRequestsNeitherHoldUpOthersNorStayForEver) {
  Serving serving({"--scenario", "healthy"});
  std::vector<int> slow;
  for (int i = 0; i < 200; ++i) slow.push_back(Connect(serving.Port()));
  std::size_t ended = 0;
  for (int second = 0; second < 100 && ended < slow.size(); ++second) {
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

TEST(Serve, OneClientTakesNeitherAllPlacesNorAThread) {
  Serving serving({"--scenario", "healthy"});
  std::vector<int> held;
  for (int i = 0; i < 600; ++i) held.push_back(Connect(serving.Port()));
  const std::string request = "GET /texts/ja.json HTTP/1.1\r\nHost: localhost\r\n\r\n";
  const int reader = Connect(serving.Port(), "127.0.0.2");  // asks for megabytes and reads nothing
  for (int i = 0; i < 500; ++i) {
    send(reader, request.data(), request.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
  }
  for (int i = 0; i < 20; ++i) {
    const int other = Connect(serving.Port(), "127.0.0.3");
    const std::string last = "GET /healthz HTTP/1.0\r\n\r\n";
    const timeval bound = {60, 0};
    setsockopt(other, SOL_SOCKET, SO_RCVTIMEO, &bound, sizeof bound);
    send(other, last.data(), last.size(), MSG_NOSIGNAL);
    EXPECT_TRUE(ReadAll(other).starts_with("HTTP/1.1 200"));
    close(other);
  }
  for (const int socket : held) close(socket);
  close(reader);
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
}  // namespace host::test

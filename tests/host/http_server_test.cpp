// The server with a site that asks its machine for as long as the test wants.
#include "host/http/http_server.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <new>
#include <thread>
#include <vector>

#include "host/text/failure.h"

namespace host::test {
namespace {

constexpr int kWorkers = 9, kMostWaiting = 256;

// Answers with the number of its query and of those who get it: "7 for 2".
class CountingSite : public Site {
 public:
  std::variant<HttpAnswer, MachineQuery> Route(const HttpRequest& request) const override {
    if (request.path == "/now") return HttpAnswer{200, "text/plain", "now"};
    if (request.path == "/no-route") throw Failure(kInternal, "no route");
    if (request.path == "/no-memory") throw std::bad_alloc();
    return MachineQuery{std::string(request.path)};
  }

  HttpAnswer AskMachine(const MachineQuery& query, std::size_t requests) const override {
    if (query.path == "/no-answer") throw Failure(kInternal, "no answer");
    if (query.path == "/no-memory-left") throw std::bad_alloc();
    const int number = ++begun_, running = ++running_;
    begun_.notify_all();
    EXPECT_LE(running, kWorkers);
    if (query.path != "/quick") released_.wait(false);
    --running_;
    return {200, "text/plain", std::to_string(number) + " for " + std::to_string(requests)};
  }

  int Begun() const { return begun_; }
  void AwaitBegun(int queries) const {
    for (int begun; (begun = begun_) < queries;) begun_.wait(begun);
  }
  void Release() {
    released_ = true;
    released_.notify_all();
  }

 private:
  mutable std::atomic<int> begun_ = 0, running_ = 0;
  std::atomic<bool> released_ = false;
};

std::string Read(int socket) {
  std::string answer(2048, ' ');
  const ssize_t length = recv(socket, answer.data(), answer.size(), 0);
  answer.resize(static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
  return answer;
}

// Until the server closes.
std::string ReadAll(int socket) {
  std::string all;
  for (std::string part; !(part = Read(socket)).empty();) all += part;
  return all;
}

std::string Body(const std::string& answer) { return answer.substr(answer.find("\r\n\r\n") + 4); }

class Server : public testing::Test {
 protected:
  ~Server() override {
    site_.Release();
    for (const int socket : sockets_) close(socket);
  }

  // A connection from this address of the loopback.
  int Connect(const char* from = "127.0.0.1") {
    const std::string url = socket_.Url();
    const int socket = sockets_.emplace_back(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const timeval bound = {30, 0};  // a test that fails ends
    setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &bound, sizeof bound);
    sockaddr_in address = {AF_INET, 0, {inet_addr(from)}, {}};
    bind(socket, reinterpret_cast<sockaddr*>(&address), sizeof address);
    const auto port = static_cast<std::uint16_t>(std::stoi(url.substr(url.rfind(':') + 1)));
    address = {AF_INET, htons(port), {inet_addr("127.0.0.1")}, {}};
    connect(socket, reinterpret_cast<sockaddr*>(&address), sizeof address);
    return socket;
  }
  static void Ask(int socket, const std::string& words, const char* more = "") {
    const std::string request = words + " HTTP/1.1\r\nHost: localhost\r\n" + more + "\r\n";
    send(socket, request.data(), request.size(), MSG_NOSIGNAL);
  }
  int Send(const std::string& words, const char* from = "127.0.0.1") {
    const int socket = Connect(from);
    Ask(socket, words, "Connection: close\r\n");
    return socket;
  }
  // Connections are taken in their order: what was sent before has been read then.
  bool AnswersAtOnce() { return Body(ReadAll(Send("GET /now", "127.0.0.9"))) == "now"; }
  void OccupyWorkers() {
    for (int i = 1; i <= kWorkers; ++i) {
      Send("GET /slow/" + std::to_string(i));
      site_.AwaitBegun(i);
    }
  }

  CountingSite site_;
  const ListenSocket socket_{{"127.0.0.1", 0}, false};
  HttpServer server_{socket_, site_, AllowedHosts(false, {})};
  std::vector<int> sockets_;
};

TEST_F(Server, ABurstSharesOneQueryThatIsNoOlderThanItsRequests) {
  const int earlier = Send("GET /slow");
  site_.AwaitBegun(1);
  std::vector<int> burst;
  for (int i = 0; i < 20; ++i) burst.push_back(Send("GET /slow"));
  const int head = Send("HEAD /slow"), other = Send("GET /other");
  site_.AwaitBegun(2);  // a slow query holds up no other
  EXPECT_TRUE(AnswersAtOnce());
  site_.Release();
  EXPECT_EQ(Body(ReadAll(earlier)), "1 for 1");
  EXPECT_EQ(Body(ReadAll(other)), "2 for 1");
  for (const int socket : burst) EXPECT_EQ(Body(ReadAll(socket)), "3 for 21");
  EXPECT_TRUE(ReadAll(head).ends_with("\r\n\r\n"));
}

TEST_F(Server, OnlySoManyRequestsWaitAndWhoLeavesTakesNothingAlong) {
  OccupyWorkers();
  std::vector<int> waiting;
  for (int i = 0; i < kMostWaiting; ++i)
    waiting.push_back(Send("GET /" + std::to_string(i), "127.0.0.2"));
  EXPECT_TRUE(AnswersAtOnce());
  const std::string refused = ReadAll(Send("GET /1"));
  EXPECT_TRUE(refused.starts_with("HTTP/1.1 503")) << refused;
  EXPECT_NE(refused.find("Retry-After: 10\r\n"), refused.npos) << refused;
  EXPECT_EQ(ReadAll(Send("GET /now", "127.0.0.2")), "") << "no other of its address is idle";
  shutdown(waiting.front(), SHUT_RDWR);
  site_.Release();
  for (std::size_t i = 1; i < waiting.size(); ++i)
    EXPECT_TRUE(Body(ReadAll(waiting[i])).ends_with(" for 1")) << i;
}

TEST_F(Server, NobodyEverGetsAnAnswerOlderThanTheRequest) {
  std::vector<std::jthread> clients(8);
  for (std::jthread& client : clients) {
    client = std::jthread([this, socket = Connect()] {
      for (int i = 0; i < 60; ++i) {
        const int before = site_.Begun();
        Ask(socket, "GET /quick");
        EXPECT_GT(std::atoi(Body(Read(socket)).c_str()), before);
      }
    });
  }
}

TEST_F(Server, WhoIsIdleLongestMakesRoomAndNobodyWhoIsAnswered) {
  const int slow = Send("GET /slow", "127.0.0.2");
  site_.AwaitBegun(1);
  std::vector<int> kept, half;
  const auto isServed = [](int socket) {
    Ask(socket, "GET /quick");
    return Read(socket).ends_with(" for 1");
  };
  while (kept.size() < 511) kept.push_back(Connect(kept.size() < 255 ? "127.0.0.2" : "127.0.0.3"));
  for (const int socket : kept) EXPECT_TRUE(isServed(socket));
  EXPECT_TRUE(isServed(kept[0]));
  while (half.size() < 300) send(half.emplace_back(Connect("127.0.0.9")), "G", 1, 0);
  const auto start = std::chrono::steady_clock::now();
  for (int probe = 0; probe < 10; ++probe) EXPECT_TRUE(AnswersAtOnce());
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(9))
      << "a deadline helped";
  for (const int gone : {kept[1], kept[256], half[0], half[44]}) EXPECT_EQ(Read(gone), "");
  for (const int open : {kept[0], kept[257], kept[510]}) EXPECT_TRUE(isServed(open));
  Ask(half[60], "ET /now");
  EXPECT_TRUE(Read(half[60]).ends_with("now"));
  site_.Release();
  EXPECT_EQ(Body(ReadAll(slow)), "1 for 1");
}

TEST_F(Server, WhatFailsIsAnsweredToo) {
  for (const std::string what : {"route", "answer", "memory", "memory-left"}) {
    const bool memory = what.starts_with("memory");
    const std::string answer = ReadAll(Send("GET /no-" + what));
    EXPECT_TRUE(answer.starts_with(memory ? "HTTP/1.1 503" : "HTTP/1.1 500")) << answer;
    EXPECT_NE(answer.find(memory ? "Out of memory" : "no " + what), answer.npos) << answer;
  }
}

TEST_F(Server, WhatRunsAndWaitsIsAnsweredBeforeItStops) {
  OccupyWorkers();
  for (int i = 0; i < 9; ++i) send(Connect(), "GET / HTTP/1.1\r\n?\r\n", 19, 0);  // never begun
  const int waiting = Send("GET /waits"), idle = Connect(), kept = Connect();
  EXPECT_TRUE(AnswersAtOnce());
  std::jthread stop([this] { EXPECT_TRUE(server_.Stop()); });
  std::string answer = "not yet";
  for (int i = 0; i < 100000 && !answer.empty(); ++i) {
    Ask(kept, "GET /now");
    answer = Read(kept);
  }
  EXPECT_EQ(answer, "") << "requests are still begun";
  site_.Release();
  EXPECT_EQ(Body(ReadAll(waiting)), std::to_string(kWorkers + 1) + " for 1");
  EXPECT_EQ(ReadAll(idle), "");
}

}  // namespace
}  // namespace host::test

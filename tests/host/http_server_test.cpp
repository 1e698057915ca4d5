// The server with a site that asks its machine for as long as the test wants.
#include "host/http/http_server.h"

#include <thread>

#include "tests/host/support/served.h"

namespace host::test {
namespace {

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

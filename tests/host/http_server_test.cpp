// The server with a site whose queries take as long as the test wants.
#include "host/http/http_server.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "support/program.h"

namespace host::test {
namespace {

constexpr int kWorkers = 4, kWaiting = 64;

// Answers with the number of its query and of those who get it: "7 for 2".
class CountingSite : public Site {
 public:
  Reaction React(const HttpRequest& request) const override {
    if (request.path == "/now") return HttpAnswer{200, "text/plain", "now"};
    return Question{std::string(request.path)};
  }

  HttpAnswer Ask(const Question& question, std::size_t requests) const override {
    std::unique_lock lock(mutex_);
    const int number = ++begun_;
    most_ = std::max(most_, ++running_);
    changed_.notify_all();
    if (question.path == "/slow") {  // some long enough that another thread leads on
      changed_.wait_for(lock, std::chrono::milliseconds(number % 8));
    } else {
      changed_.wait(lock, [this] { return released_; });
    }
    --running_;
    return {200, "text/plain", std::to_string(number) + " for " + std::to_string(requests)};
  }

  int Begun() const {
    const std::lock_guard lock(mutex_);
    return begun_;
  }
  void AwaitBegun(int queries) const {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return begun_ >= queries; });
  }
  void Release() {
    const std::lock_guard lock(mutex_);
    released_ = true;
    changed_.notify_all();
  }
  int MostAtOnce() const { return most_; }

 private:
  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  mutable int begun_ = 0, running_ = 0, most_ = 0;
  bool released_ = false;
};

class Server : public testing::Test {
 protected:
  ~Server() override {
    site_.Release();
    for (const int socket : sockets_) close(socket);
  }

  int Port() const {
    const std::string url = socket_.Url();
    return std::stoi(url.substr(url.rfind(':') + 1));
  }
  int Send(const std::string& path, const std::string& method = "GET") {
    const std::string request =
        method + " " + path + " HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n\r\n";
    sockets_.push_back(Connect(Port()));
    const timeval bound = {30, 0};  // a test that fails ends
    setsockopt(sockets_.back(), SOL_SOCKET, SO_RCVTIMEO, &bound, sizeof bound);
    send(sockets_.back(), request.data(), request.size(), MSG_NOSIGNAL);
    return sockets_.back();
  }
  std::string Body(int socket) {
    const std::string answer = ReadAll(socket);
    return answer.substr(std::min(answer.find("\r\n\r\n"), answer.size() - 4) + 4);
  }
  // Connections are taken in their order: what was sent before has been read then.
  bool AnswersAtOnce() { return Body(Send("/now")) == "now"; }
  // As many queries as may run at once, each answered when the site is released.
  std::vector<int> OccupyWorkers() {
    std::vector<int> sockets;
    for (int i = 1; i <= kWorkers; ++i) {
      sockets.push_back(Send("/question"));
      site_.AwaitBegun(i);
    }
    return sockets;
  }

  CountingSite site_;
  const ListenSocket socket_{{"127.0.0.1", 0}, false};
  HttpServer server_{socket_, site_, HostNames(false, {})};
  std::vector<int> sockets_;
};

TEST_F(Server, ABurstSharesOneQueryThatIsNoOlderThanItsQuestions) {
  const std::vector<int> earlier = OccupyWorkers();
  std::vector<int> burst;
  for (int i = 0; i < 20; ++i) burst.push_back(Send("/question"));
  const int other = Send("/other"), head = Send("/question", "HEAD");
  EXPECT_TRUE(AnswersAtOnce());
  site_.Release();
  for (int i = 0; i < kWorkers; ++i) {
    EXPECT_EQ(Body(earlier[static_cast<std::size_t>(i)]), std::to_string(i + 1) + " for 1");
  }
  const std::string shared = Body(burst.front());
  EXPECT_TRUE(shared == "5 for 21" || shared == "6 for 21") << shared;
  for (std::size_t i = 1; i < burst.size(); ++i) EXPECT_EQ(Body(burst[i]), shared);
  EXPECT_TRUE(Body(other).ends_with(" for 1"));
  const std::string headAlone = ReadAll(head);
  EXPECT_TRUE(Contains(headAlone, "Content-Length: 8\r\n")) << headAlone;
  EXPECT_TRUE(headAlone.ends_with("\r\n\r\n")) << headAlone;
}

TEST_F(Server, SlowQueriesHoldUpNobodyElseAndOnlySoManyRequestsWait) {
  OccupyWorkers();
  std::vector<int> waiting;
  for (int i = 0; i < kWaiting; ++i) waiting.push_back(Send("/" + std::to_string(i)));
  EXPECT_TRUE(AnswersAtOnce());
  const std::string refused = ReadAll(Send("/question"));
  EXPECT_TRUE(refused.starts_with("HTTP/1.1 503")) << refused;
  EXPECT_TRUE(Contains(refused, "Retry-After: 10\r\n")) << refused;
  close(waiting.front());  // whoever goes meanwhile takes nothing along
  waiting.erase(waiting.begin());
  sockets_.clear();
  site_.Release();
  for (const int socket : waiting) {
    EXPECT_TRUE(Body(socket).ends_with(" for 1"));
    close(socket);
  }
  EXPECT_EQ(site_.MostAtOnce(), kWorkers);
}

TEST_F(Server, NobodyEverGetsAnAnswerOlderThanTheQuestion) {
  constexpr int kClients = 8, kRequests = 60;
  const std::string request = "GET /slow HTTP/1.1\r\nHost: localhost\r\n\r\n";
  std::vector<std::thread> clients;
  for (int client = 0; client < kClients; ++client) {
    clients.emplace_back([&, socket = Connect(Port())] {
      for (int i = 0; i < kRequests; ++i) {
        const int before = site_.Begun();
        send(socket, request.data(), request.size(), MSG_NOSIGNAL);
        char answer[2048] = {};
        const ssize_t got = recv(socket, answer, sizeof answer - 1, 0);
        const std::string text(answer, static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
        ASSERT_TRUE(text.starts_with("HTTP/1.1 200")) << text;
        EXPECT_GT(std::stoi(text.substr(text.find("\r\n\r\n") + 4)), before);
      }
      close(socket);
    });
  }
  for (std::thread& client : clients) client.join();
  EXPECT_LE(site_.MostAtOnce(), kWorkers);
  EXPECT_LT(site_.Begun(), kClients * kRequests) << "nothing was shared";
}

TEST_F(Server, WhatWaitsIsAnsweredBeforeItStops) {
  OccupyWorkers();
  const int waiting = Send("/question"), idle = Connect(Port());
  EXPECT_TRUE(AnswersAtOnce());
  std::thread release([this] {
    usleep(50000);
    site_.Release();
  });
  EXPECT_TRUE(server_.Stop());
  release.join();
  EXPECT_EQ(Body(waiting), "5 for 1");
  EXPECT_EQ(ReadAll(idle), "");
  close(idle);
}

}  // namespace
}  // namespace host::test

// A server whose site asks its machine for as long as the test wants, and its clients.
#pragma once

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <new>
#include <string>
#include <vector>

#include "host/http/http_server.h"
#include "host/text/failure.h"

namespace host::test {

constexpr int kWorkers = 10, kMostWaiting = 256;

// Answers with the number of its query and of those who get it: "7 for 2".
class CountingSite : public Site {
 public:
  std::variant<HttpAnswer, MachineQuery> Route(const HttpRequest& request) const override {
    if (request.path == "/now") return HttpAnswer{200, "text/plain", "now"};
    if (request.path == "/healthz") return AnswerHealthz(request);
    if (request.path == "/stuck") Wait();
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
  void Wait() const {
    ++begun_;
    begun_.notify_all();
    released_.wait(false);
  }

  mutable std::atomic<int> begun_ = 0, running_ = 0;
  std::atomic<bool> released_ = false;
};

inline std::string Read(int socket) {
  std::string answer(2048, ' ');
  const ssize_t length = recv(socket, answer.data(), answer.size(), 0);
  answer.resize(static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
  return answer;
}

// Until the server closes.
inline std::string ReadAll(int socket) {
  std::string all;
  for (std::string part; !(part = Read(socket)).empty();) all += part;
  return all;
}

inline std::string Body(const std::string& answer) {
  return answer.substr(answer.find("\r\n\r\n") + 4);
}

class Server : public testing::Test {
 protected:
  explicit Server(ServerWatch watch = {})
      : server_(socket_, site_, AllowedHosts(false, {}), watch) {}
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
  HttpServer server_;
  std::vector<int> sockets_;
};

}  // namespace host::test

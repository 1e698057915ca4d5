// A server on a loopback port that behaves as badly as it is told to.
#pragma once

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>

class FakeServer {
 public:
  // Serves one client after the other; each is closed when `serve` returns.
  explicit FakeServer(std::function<void(int client)> serve, const std::string& host = "127.0.0.1")
      : listening_(socket(host == "::1" ? AF_INET6 : AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address = {AF_INET, 0, {inet_addr(host.c_str())}, {}};
    sockaddr_in6 address6 = {AF_INET6, 0, 0, in6addr_loopback, 0};
    auto* const any = host == "::1" ? reinterpret_cast<sockaddr*>(&address6)
                                    : reinterpret_cast<sockaddr*>(&address);
    socklen_t size = host == "::1" ? sizeof address6 : sizeof address;
    bind(listening_, any, size);
    getsockname(listening_, any, &size);
    port_ = ntohs(host == "::1" ? address6.sin6_port : address.sin_port);
    listen(listening_, 16);
    thread_ = std::thread([this, serve] {
      for (int client; (client = accept4(listening_, nullptr, nullptr, SOCK_CLOEXEC)) >= 0;) {
        ++clients_;
        serve(client);
        close(client);
      }
    });
  }
  ~FakeServer() {
    shutdown(listening_, SHUT_RDWR);  // which ends the waiting for clients
    thread_.join();
    close(listening_);
  }

  std::string Port() const { return std::to_string(port_); }
  int Clients() const { return clients_; }

  // What the client sent up to the end of a line.
  static std::string Line(int client) {
    std::string line;
    for (char c; read(client, &c, 1) == 1 && c != '\n';) line += c;
    return line;
  }
  static bool Send(int client, const std::string& text) {
    return send(client, text.data(), text.size(), MSG_NOSIGNAL) ==
           static_cast<ssize_t>(text.size());
  }

 private:
  int listening_;
  unsigned port_ = 0;
  std::atomic<int> clients_ = 0;
  std::thread thread_;
};

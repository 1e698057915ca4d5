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
  explicit FakeServer(std::function<void(int client)> serve)
      : listening_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    bind(listening_, reinterpret_cast<sockaddr*>(&address), size);
    getsockname(listening_, reinterpret_cast<sockaddr*>(&address), &size);
    port_ = ntohs(address.sin_port);
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

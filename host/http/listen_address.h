// Where to listen.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace host {

struct ListenAddress {
  std::string host = "127.0.0.1";
  std::uint16_t port = 8480;  // 0: any free one
};

// "ADDR:PORT", "[ADDR6]:PORT", "ADDR" or ":PORT"; what is left out is the default's.
// Throws Failure(kUsage).
ListenAddress ParseListenAddress(const std::string& text);

// A bound, listening socket; closed with its owner.
class ListenSocket {
 public:
  // Refuses whatever is not this machine's loopback unless `remoteAllowed`. Throws Failure.
  ListenSocket(const ListenAddress& address, bool remoteAllowed);
  ~ListenSocket();
  ListenSocket(const ListenSocket&) = delete;
  ListenSocket& operator=(const ListenSocket&) = delete;

  int Descriptor() const { return descriptor_; }
  // "http://127.0.0.1:8480/", with the port that it got.
  std::string Url() const;

 private:
  int descriptor_ = -1;
};

}  // namespace host

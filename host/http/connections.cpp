#include "host/http/connections.h"

#include <netinet/in.h>

#include <algorithm>
#include <utility>

namespace host {
namespace {

using std::chrono::seconds;

constexpr seconds kFirstHead(10), kNextHead(30), kOneRequest(60);

}  // namespace

std::string Connections::AddressOf(const sockaddr& client) {
  const auto bytes = [](const auto& address) {
    return std::string(reinterpret_cast<const char*>(&address), sizeof address);
  };
  if (client.sa_family == AF_INET) {
    return bytes(reinterpret_cast<const sockaddr_in&>(client).sin_addr);
  }
  return bytes(reinterpret_cast<const sockaddr_in6&>(client).sin6_addr);
}

void Connections::Add(int socket, std::string address) {
  const Clock::time_point now = Clock::now();
  connections_[socket] = {std::move(address), now, now + kFirstHead};
}

void Connections::BeginRequest(int socket) {
  const auto entry = connections_.find(socket);
  if (entry == connections_.end()) return;
  entry->second.state = State::kAnswering;
  entry->second.deadline = Clock::now() + kOneRequest;
}

void Connections::EndRequest(int socket) {
  const auto entry = connections_.find(socket);
  if (entry == connections_.end()) return;
  Connection& connection = entry->second;
  connection.state = State::kIdle;
  connection.since = Clock::now();
  connection.deadline = connection.since + kNextHead;
}

void Connections::Remove(int socket) { connections_.erase(socket); }

bool Connections::AnyIdle() const {
  return std::any_of(connections_.begin(), connections_.end(),
                     [](const auto& entry) { return entry.second.state == State::kIdle; });
}

std::size_t Connections::CountOf(const std::string& address) const {
  const auto count =
      std::count_if(connections_.begin(), connections_.end(),
                    [&address](const auto& entry) { return entry.second.address == address; });
  return static_cast<std::size_t>(count);
}

bool Connections::EndLongestIdle(const std::optional<std::string>& address) {
  auto longest = connections_.end();
  for (auto it = connections_.begin(); it != connections_.end(); ++it) {
    const Connection& connection = it->second;
    if (connection.state != State::kIdle) continue;
    if (address && connection.address != *address) continue;
    if (longest == connections_.end() || connection.since < longest->second.since) longest = it;
  }
  if (longest == connections_.end()) return false;
  End(longest->first, longest->second);
  return true;
}

void Connections::EndLateOnes() {
  const Clock::time_point now = Clock::now();
  for (auto& [socket, connection] : connections_) {
    if (connection.deadline < now) End(socket, connection);
  }
}

void Connections::End(int socket, Connection& connection) {
  shutdown(socket, SHUT_RDWR);
  connection.state = State::kEnded;
}

}  // namespace host

#include "host/http/server_loop.h"

#include <microhttpd.h>
#include <netinet/in.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <new>
#include <utility>

namespace host {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr milliseconds kPause(100);
constexpr seconds kBetweenLooks(1);  // for late connections

bool IsShortage(int error) {
  return error == EMFILE || error == ENFILE || error == ENOBUFS || error == ENOMEM;
}

bool ConcernsOneConnection(int error) {
  return error == EAGAIN || error == EINTR || error == ECONNABORTED;
}

}  // namespace

ServerLoop::ServerLoop(MHD_Daemon& daemon, int listenSocket, Connections& connections,
                       Wakeup& wakeup, const std::atomic<bool>& stopping)
    : daemon_(daemon),
      listenSocket_(listenSocket),
      librarySocket_(MHD_get_daemon_info(&daemon, MHD_DAEMON_INFO_EPOLL_FD)->epoll_fd),
      connections_(connections),
      wakeup_(wakeup),
      stopping_(stopping),
      thread_([this] { Run(); }) {}

ServerLoop::~ServerLoop() {
  ending_ = true;
  wakeup_.Wake();
  thread_.join();
}

// One connection a turn: whoever sent a request has been read before anyone must make room.
void ServerLoop::Run() {
  while (!ending_) {
    const bool knocks = Wait();
    MHD_run(&daemon_);
    if (Clock::now() - lookedForLateOnes_ >= kBetweenLooks) {
      connections_.EndLateOnes();
      lookedForLateOnes_ = Clock::now();
    }
    if (knocks) Accept();
  }
}

// True when a connection is to be taken.
bool ServerLoop::Wait() {
  const bool paused = Clock::now() < pausedUntil_;
  const bool listens = !paused && !stopping_;
  pollfd sockets[] = {{librarySocket_, POLLIN, 0},
                      {wakeup_.Descriptor(), POLLIN, 0},
                      {listens ? listenSocket_ : -1, POLLIN, 0}};
  if (poll(sockets, std::size(sockets), TimeToWait(paused)) < 0) {
    std::this_thread::sleep_for(kPause);  // no memory: without a pause it would be asked at once
    return false;
  }
  if (sockets[1].revents != 0) wakeup_.Clear();
  return sockets[2].revents != 0;
}

// In milliseconds; -1 without a bound: an idle server wakes no processor up.
int ServerLoop::TimeToWait(bool paused) const {
  MHD_UNSIGNED_LONG_LONG library = 0;
  if (MHD_get_timeout(&daemon_, &library) == MHD_YES) return static_cast<int>(library);
  if (paused) return static_cast<int>(kPause.count());
  return connections_.Size() == 0 ? -1 : static_cast<int>(milliseconds(kBetweenLooks).count());
}

void ServerLoop::Accept() {
  if (connections_.Size() > kMostConnections ||
      (connections_.Size() == kMostConnections && !connections_.AnyIdle())) {
    Pause();
    return;
  }
  sockaddr_storage storage = {};
  auto& client = reinterpret_cast<sockaddr&>(storage);
  socklen_t size = sizeof storage;
  const int socket = accept4(listenSocket_, &client, &size, SOCK_NONBLOCK | SOCK_CLOEXEC);
  if (socket >= 0) {
    Add(socket, client, size);
  } else if (!ConcernsOneConnection(errno) &&
             !(IsShortage(errno) && connections_.EndLongestIdle())) {
    Pause();
  }
}

void ServerLoop::Add(int socket, const sockaddr& client, socklen_t size) {
  try {
    std::string address = Connections::AddressOf(client);
    if (!MakeRoom(address)) {
      close(socket);
      return;
    }
    connections_.Add(socket, std::move(address));
  } catch (const std::bad_alloc&) {
    close(socket);
    return;
  }
  if (MHD_add_connection(&daemon_, socket, &client, size) != MHD_YES) connections_.Remove(socket);
}

// Whoever makes room is gone in the next turn, and with it its descriptor. An address that has
// its share makes room by itself, so that it takes no other's place.
bool ServerLoop::MakeRoom(const std::string& address) {
  if (connections_.CountOf(address) >= kMostOfOneAddress) {
    return connections_.EndLongestIdle(address);
  }
  return connections_.Size() < kMostConnections || connections_.EndLongestIdle();
}

void ServerLoop::Pause() { pausedUntil_ = Clock::now() + kPause; }

}  // namespace host

// libupsclient, kept on a short leash: its time-outs are per byte, its writes may raise
// SIGPIPE, and its socket is handed down to children.
#include "platform/linux/ups/nut_client.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <stdint.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <time.h>

#include <upsclient.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <string_view>

namespace linux_platform {
namespace {

using std::chrono::milliseconds, std::chrono::seconds, std::chrono::steady_clock;

constexpr int kMostListed = 64;

// The library, opened when the first UPS is asked for: it brings a whole cryptography library
// along, which machines without a UPS need not load. Stays open.
struct Library {
  Library() : handle(dlopen(VELA_NUT_LIBRARY, RTLD_NOW | RTLD_LOCAL)) {
    if (handle == nullptr) return;
    Find(tryconnect, "upscli_tryconnect");
    Find(disconnect, "upscli_disconnect");
    Find(fd, "upscli_fd");
    Find(strerror, "upscli_strerror");
    Find(sendline, "upscli_sendline_timeout");
    Find(readline, "upscli_readline_timeout");
  }
  template <typename Function>
  void Find(Function*& function, const char* name) {
    function = reinterpret_cast<Function*>(dlsym(handle, name));
    if (function == nullptr) handle = nullptr;
  }

  void* handle;
  decltype(&upscli_tryconnect) tryconnect = nullptr;
  decltype(&upscli_disconnect) disconnect = nullptr;
  decltype(&upscli_fd) fd = nullptr;
  decltype(&upscli_strerror) strerror = nullptr;
  decltype(&upscli_sendline_timeout) sendline = nullptr;
  decltype(&upscli_readline_timeout) readline = nullptr;
};

const Library& Nut() {
  static const Library library;
  return library;
}

// A server that hangs up would end this process at the next write. The signal goes to the
// writing thread, so it is held back there and taken off before it can be seen.
class SigpipeHeld {
 public:
  SigpipeHeld() {
    sigset_t pending;
    sigemptyset(&pipe_);
    sigaddset(&pipe_, SIGPIPE);
    sigpending(&pending);
    others_ = sigismember(&pending, SIGPIPE) == 1;
    pthread_sigmask(SIG_BLOCK, &pipe_, &before_);
  }
  ~SigpipeHeld() {
    const timespec now = {};
    if (!others_)
      while (sigtimedwait(&pipe_, nullptr, &now) < 0 && errno == EINTR) continue;
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  }
  SigpipeHeld(const SigpipeHeld&) = delete;
  SigpipeHeld& operator=(const SigpipeHeld&) = delete;

 private:
  sigset_t pipe_, before_;
  bool others_;  // one was pending before: not ours to take
};

milliseconds Left(steady_clock::time_point deadline) {
  return std::max(std::chrono::ceil<milliseconds>(deadline - steady_clock::now()), milliseconds(0));
}

class Connection {
 public:
  Connection(const char* host, std::uint16_t port, steady_clock::time_point deadline)
      : deadline_(deadline) {
    const auto left = Left(deadline).count();
    timeval timeout = {left / 1000, (left % 1000) * 1000};
    connected_ = left > 0 && Nut().tryconnect(&server_, host, port, 0, &timeout) == 0;
    if (connected_) fcntl(Nut().fd(&server_), F_SETFD, FD_CLOEXEC);
  }
  ~Connection() {
    if (connected_) Nut().disconnect(&server_);
  }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  bool Connected() const { return connected_; }
  const char* Trouble() { return Nut().strerror(&server_); }

  // Sends one line and reads the first one of the answer.
  NutAnswer Ask(const std::string& question, std::string& answer) {
    if (Nut().sendline(&server_, question.data(), question.size(), 1) != 0)
      return NutAnswer::Refused;
    return ReadLine(answer);
  }
  NutAnswer ReadLine(std::string& line) {
    const NutAnswer whole = AwaitLine();
    if (whole != NutAnswer::Read) return whole;
    char text[UPSCLI_NETBUF_LEN];
    if (Nut().readline(&server_, text, sizeof text, 1) != 0) return NutAnswer::Refused;
    line = text;
    return NutAnswer::Read;
  }

 private:
  // Waits until the library can read a line without waiting.
  NutAnswer AwaitLine() {
    const std::string_view kept(server_.readbuf + server_.readidx,
                                server_.readlen - server_.readidx);
    if (kept.find('\n') != std::string_view::npos) return NutAnswer::Read;
    char text[UPSCLI_NETBUF_LEN];
    for (;;) {
      const ssize_t got = recv(Nut().fd(&server_), text, sizeof text, MSG_PEEK | MSG_DONTWAIT);
      if (got == 0) return NutAnswer::Refused;
      if (got < 0 && errno != EAGAIN && errno != EINTR) return NutAnswer::Refused;
      const std::string_view seen(text, static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
      if (seen.find('\n') != std::string_view::npos) return NutAnswer::Read;
      if (seen.size() == sizeof text) return NutAnswer::Refused;
      // The descriptor shows as readable only when there is more than was seen.
      const int more = static_cast<int>(seen.size()) + 1;
      setsockopt(Nut().fd(&server_), SOL_SOCKET, SO_RCVLOWAT, &more, sizeof more);
      pollfd ready = {Nut().fd(&server_), POLLIN, 0};
      const auto left = Left(deadline_).count();
      if (left == 0) return NutAnswer::Late;
      poll(&ready, 1, static_cast<int>(left));
    }
  }

  UPSCONN_t server_ = {};
  bool connected_ = false;
  steady_clock::time_point deadline_;
};

// Where a server that listens on "this machine" may be: the last is what Debian's /etc/hosts says
// of the machine's own name.
std::vector<const char*> ListHosts(const NutServer& server) {
  if (server.host != kThisMachine) return {server.host.c_str()};
  return {"127.0.0.1", "::1", "127.0.1.1"};
}

std::string Describe(const NutServer& server) {
  return "upsd at " + server.host + " port " + std::to_string(server.port);
}

NutAnswer Explain(NutAnswer answer, const NutServer& server, std::string& reason) {
  if (answer == NutAnswer::Late) reason = Describe(server) + " did not answer in time";
  if (answer == NutAnswer::Refused && reason.empty())
    reason = Describe(server) + " hung up, or sent something that is no answer";
  return answer;
}

// The first host where a server listens; `connection` is to it.
NutAnswer Connect(const NutServer& server, steady_clock::time_point deadline,
                  std::optional<Connection>& connection, std::string& reason) {
  for (const char* host : ListHosts(server)) {
    connection.emplace(host, server.port, deadline);
    if (connection->Connected()) return NutAnswer::Read;
    if (Left(deadline) == milliseconds(0)) return NutAnswer::Late;
    if (reason.empty()) reason = Describe(server) + ": " + connection->Trouble();
  }
  return NutAnswer::NoServer;
}

// Adds the names that the server lists.
NutAnswer ListUpses(Connection& connection, std::vector<std::string>& names) {
  std::string line;
  NutAnswer answer = connection.Ask("LIST UPS\n", line);
  if (answer == NutAnswer::Read && line != "BEGIN LIST UPS") return NutAnswer::Refused;
  for (int lines = 0; answer == NutAnswer::Read && lines <= kMostListed; ++lines) {
    answer = connection.ReadLine(line);
    if (answer != NutAnswer::Read || line == "END LIST UPS") return answer;
    if (!line.starts_with("UPS ")) continue;
    std::string name = line.substr(4, line.find(' ', 4) - 4);
    if (std::ranges::find(names, name) == names.end()) names.push_back(std::move(name));
  }
  return answer == NutAnswer::Read ? NutAnswer::Refused : answer;
}

NutAnswer ReadStatus(Connection& connection, UpsReading& reading) {
  std::string line;
  const NutAnswer answer = connection.Ask("GET VAR " + reading.name + " ups.status\n", line);
  if (answer != NutAnswer::Read) return answer;
  if (line.starts_with("ERR ")) {
    reading.refusal = line.substr(4);
    return NutAnswer::Read;
  }
  const std::string expected = "VAR " + reading.name + " ups.status \"";
  if (!line.starts_with(expected) || !line.ends_with('"')) return NutAnswer::Refused;
  reading.words = line.substr(expected.size(), line.size() - expected.size() - 1);
  return NutAnswer::Read;
}

}  // namespace

NutAnswer ReadUpses(const NutServer& server, steady_clock::time_point deadline,
                    std::vector<UpsReading>& readings, std::string& reason) {
  if (Nut().handle == nullptr) {
    reason = "NUT's client library " VELA_NUT_LIBRARY " cannot be loaded: install its package";
    return NutAnswer::Unsupported;
  }
  const SigpipeHeld held;
  std::optional<Connection> connection;
  NutAnswer answer = Connect(server, deadline, connection, reason);
  if (answer != NutAnswer::Read) return Explain(answer, server, reason);
  std::vector<std::string> names = server.names;
  if (server.all) answer = ListUpses(*connection, names);
  if (answer == NutAnswer::Read && names.empty()) {
    reason = Describe(server) + " knows no UPS: see /etc/nut/ups.conf";
    return NutAnswer::Refused;
  }
  for (std::size_t i = 0; answer == NutAnswer::Read && i < names.size(); ++i) {
    UpsReading reading = {names[i], {}, {}};
    answer = ReadStatus(*connection, reading);
    if (!reading.refusal.empty())
      reading.refusal = Describe(server) + " on UPS " + reading.name + ": " + reading.refusal;
    if (answer == NutAnswer::Read) readings.push_back(std::move(reading));
  }
  return Explain(answer, server, reason);
}

}  // namespace linux_platform

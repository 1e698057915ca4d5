#include "platform/linux/ups/nut_connection.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <stdint.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <time.h>

#include <algorithm>
#include <cerrno>
#include <string_view>

namespace linux_platform {

using std::chrono::milliseconds, std::chrono::steady_clock;

namespace {

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

}  // namespace

bool HasNutLibrary() { return Nut().handle != nullptr; }

SigpipeHeld::SigpipeHeld() {
  sigset_t pending;
  sigemptyset(&pipe_);
  sigaddset(&pipe_, SIGPIPE);
  sigpending(&pending);
  others_ = sigismember(&pending, SIGPIPE) == 1;
  pthread_sigmask(SIG_BLOCK, &pipe_, &before_);
}

SigpipeHeld::~SigpipeHeld() {
  const timespec now = {};
  if (!others_)
    while (sigtimedwait(&pipe_, nullptr, &now) < 0 && errno == EINTR) continue;
  pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

milliseconds TimeLeft(steady_clock::time_point deadline) {
  return std::max(std::chrono::ceil<milliseconds>(deadline - steady_clock::now()), milliseconds(0));
}

NutConnection::NutConnection(const char* host, std::uint16_t port,
                             steady_clock::time_point deadline)
    : deadline_(deadline) {
  const auto left = TimeLeft(deadline).count();
  timeval timeout = {left / 1000, (left % 1000) * 1000};
  connected_ = left > 0 && Nut().tryconnect(&server_, host, port, 0, &timeout) == 0;
  if (connected_) fcntl(Nut().fd(&server_), F_SETFD, FD_CLOEXEC);
}

NutConnection::~NutConnection() {
  if (connected_) Nut().disconnect(&server_);
}

const char* NutConnection::Trouble() { return Nut().strerror(&server_); }

NutAnswer NutConnection::Ask(const std::string& question, std::string& answer) {
  if (Nut().sendline(&server_, question.data(), question.size(), 1) != 0) return NutAnswer::Refused;
  return ReadLine(answer);
}

NutAnswer NutConnection::ReadLine(std::string& line) {
  const NutAnswer whole = AwaitLine();
  if (whole != NutAnswer::Read) return whole;
  char text[UPSCLI_NETBUF_LEN];
  if (Nut().readline(&server_, text, sizeof text, 1) != 0) return NutAnswer::Refused;
  line = text;
  return NutAnswer::Read;
}

// Waits until the library can read a line without waiting.
NutAnswer NutConnection::AwaitLine() {
  const std::string_view kept(server_.readbuf + server_.readidx, server_.readlen - server_.readidx);
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
    const auto left = TimeLeft(deadline_).count();
    if (left == 0) return NutAnswer::Late;
    poll(&ready, 1, static_cast<int>(left));
  }
}

}  // namespace linux_platform

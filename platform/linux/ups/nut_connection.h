// libupsclient, kept on a short leash: its time-outs are per byte, its writes may raise
// SIGPIPE, and its socket is handed down to children.
#pragma once

#include <signal.h>

#include <chrono>
#include <cstdint>
#include <string>

#include <upsclient.h>

#include "platform/linux/ups/nut_client.h"

namespace linux_platform {

// Whether the library could be loaded. It is opened when the first UPS is asked for: it brings a
// whole cryptography library along, which machines without a UPS need not load. It stays open.
bool HasNutLibrary();

// A server that hangs up would end this process at the next write. The signal goes to the
// writing thread, so it is held back there and taken off before it can be seen.
class SigpipeHeld {
 public:
  SigpipeHeld();
  ~SigpipeHeld();
  SigpipeHeld(const SigpipeHeld&) = delete;
  SigpipeHeld& operator=(const SigpipeHeld&) = delete;

 private:
  sigset_t pipe_, before_;
  bool others_;  // one was pending before: not ours to take
};

std::chrono::milliseconds TimeLeft(std::chrono::steady_clock::time_point deadline);

class NutConnection {
 public:
  NutConnection(const char* host, std::uint16_t port,
                std::chrono::steady_clock::time_point deadline);
  ~NutConnection();
  NutConnection(const NutConnection&) = delete;
  NutConnection& operator=(const NutConnection&) = delete;

  bool Connected() const { return connected_; }
  const char* Trouble();

  // Sends one line and reads the first one of the answer.
  NutAnswer Ask(const std::string& question, std::string& answer);
  NutAnswer ReadLine(std::string& line);

 private:
  NutAnswer AwaitLine();

  UPSCONN_t server_ = {};
  bool connected_ = false;
  std::chrono::steady_clock::time_point deadline_;
};

}  // namespace linux_platform

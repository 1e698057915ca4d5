// Questions to a NUT server on this machine.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/ups/ups_address.h"

namespace linux_platform {

enum class NutAnswer {
  Read,
  NoServer,     // nothing listens there
  Refused,      // an answer that is none, or a server without any UPS
  Late,         // nothing whole by the deadline
  Unsupported,  // without libupsclient, built or installed
};

struct NutServer {
  std::string host;  // as in UpsAddress
  std::uint16_t port = 0;
  std::vector<std::string> names;  // the UPSes to ask for
  bool all = false;                // and every other that the server lists
};

struct UpsReading {
  std::string name, words;
  std::string refusal;  // why the server has no words for it; "" when it has
};

// A UPS that has told its state, and what else it tells whoever asks for it.
struct HeardUps {
  std::string name, words;
  std::string host;  // its server, as in UpsAddress
  std::uint16_t port = 0;
  std::string model, serial;            // empty where it tells none, like the next two
  std::optional<std::int64_t> charge;   // per cent
  std::optional<std::int64_t> runtime;  // seconds that the battery lasts
  std::int64_t lowCharge = 0;           // per cent, at which it calls the battery low; 0: not told
};

// Asks one server, over one connection, for the status words of its UPSes, which `readings`
// gains. `reason` says what else than Read happened. Raises no signal; may be called from several
// threads.
NutAnswer ReadUpses(const NutServer& server, std::chrono::steady_clock::time_point deadline,
                    std::vector<UpsReading>& readings, std::string& reason);

// The same for all else that its `upses` tell of themselves.
NutAnswer DescribeUpses(const NutServer& server, std::chrono::steady_clock::time_point deadline,
                        const std::vector<HeardUps*>& upses, std::string& reason);

}  // namespace linux_platform

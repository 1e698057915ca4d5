// Runs the built vela-health as its users do.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace host::test {

struct Outcome {
  int status;  // exit state; -1 when a signal ended it
  std::string out, err;
};

// To its end; for the child alone, `environment` ("NAME=value") comes on top of ours.
Outcome RunProgram(const std::vector<std::string>& arguments,
                   const std::vector<std::string>& environment = {});

// `vela-health serve --port 0 ...`, until destroyed or stopped.
class Serving {
 public:
  explicit Serving(std::vector<std::string> arguments);
  ~Serving();
  Serving(const Serving&) = delete;
  Serving& operator=(const Serving&) = delete;

  int Port() const { return port_; }
  pid_t Process() const { return process_; }
  // Sends `signal` and waits for the end; the exit state, -1 when a signal ended it.
  int Stop(int signal);

 private:
  pid_t process_ = -1;
  int port_ = 0;
};

// A socket connected to 127.0.0.1, from this address of the loopback; -1 when it is refused.
int Connect(int port, const char* from = "127.0.0.1");
// Reads until the server closes.
std::string ReadAll(int socket);
// Sends `request` as it is and reads until the server closes.
std::string Exchange(int port, const std::string& request);
// One GET; the whole answer, head and body.
std::string Get(int port, const std::string& path);

bool Contains(const std::string& text, const std::string& part);

// A folder of its own with this state.json; its path.
std::string Scenario(const std::string& name, const std::string& state);

}  // namespace host::test

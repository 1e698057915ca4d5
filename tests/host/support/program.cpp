#include "program.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <utility>

#include "tests/support/own_folder.h"

namespace host::test {
namespace {

// An unnamed file: a child may write any amount to it without a reader.
int TemporaryFile() {
  const int file = open("/tmp", O_TMPFILE | O_RDWR, 0600);
  if (file < 0) throw std::runtime_error("no temporary file");
  return file;
}

std::string Contents(int file) {
  std::string text;
  std::array<char, 4096> part;
  lseek(file, 0, SEEK_SET);
  for (ssize_t got; (got = read(file, part.data(), part.size())) > 0;) {
    text.append(part.data(), static_cast<std::size_t>(got));
  }
  close(file);
  return text;
}

pid_t Start(std::vector<std::string> arguments, std::vector<std::string> environment, int out,
            int err) {
  arguments.insert(arguments.begin(), VELA_HEALTH);
  for (char** entry = environ; *entry != nullptr; ++entry) environment.emplace_back(*entry);
  std::vector<char*> argv, envp;
  for (std::string& argument : arguments) argv.push_back(argument.data());
  for (std::string& entry : environment) envp.push_back(entry.data());
  argv.push_back(nullptr);
  envp.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, out, STDOUT_FILENO);
  if (err >= 0) posix_spawn_file_actions_adddup2(&actions, err, STDERR_FILENO);
  pid_t process = -1;
  const int error = posix_spawn(&process, VELA_HEALTH, &actions, nullptr, argv.data(), envp.data());
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) throw std::runtime_error("cannot start " VELA_HEALTH);
  return process;
}

int WaitFor(pid_t process) {
  int status = 0;
  waitpid(process, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace

Outcome RunProgram(const std::vector<std::string>& arguments,
                   const std::vector<std::string>& environment) {
  const int out = TemporaryFile(), err = TemporaryFile();
  const int status = WaitFor(Start(arguments, environment, out, err));
  return {status, Contents(out), Contents(err)};
}

Serving::Serving(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), {"serve", "--port", "0"});
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  process_ = Start(std::move(arguments), {}, ends[1], -1);
  close(ends[1]);
  std::string line;
  for (char c = 0; c != '\n' && read(ends[0], &c, 1) == 1;) line += c;
  close(ends[0]);
  const std::size_t colon = line.rfind(':');
  if (colon == std::string::npos) throw std::runtime_error("does not serve: " + line);
  port_ = std::stoi(line.substr(colon + 1));
}

Serving::~Serving() {
  if (process_ > 0) Stop(SIGKILL);
}

int Serving::Stop(int signal) {
  kill(process_, signal);
  return WaitFor(std::exchange(process_, -1));
}

int Connect(int port, const char* from) {
  const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  inet_pton(AF_INET, from, &address.sin_addr);
  bind(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address);
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (connect(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
    close(descriptor);
    return -1;
  }
  return descriptor;
}

std::string ReadAll(int socket) {
  std::string answer;
  std::array<char, 4096> part;
  for (ssize_t got; (got = recv(socket, part.data(), part.size(), 0)) > 0;) {
    answer.append(part.data(), static_cast<std::size_t>(got));
  }
  return answer;
}

std::string Exchange(int port, const std::string& request) {
  const int descriptor = Connect(port);
  if (descriptor < 0) return {};
  const timeval bound = {60, 0};  // no machine is as slow as that
  setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &bound, sizeof bound);
  send(descriptor, request.data(), request.size(), MSG_NOSIGNAL);
  std::string answer = ReadAll(descriptor);
  close(descriptor);
  return answer;
}

std::string Get(int port, const std::string& path) {
  return Exchange(port,
                  "GET " + path + " HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n\r\n");
}

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

std::string Scenario(const std::string& name, const std::string& state) {
  const std::filesystem::path folder = test_support::OwnFolder() + name;
  std::filesystem::create_directories(folder);
  std::ofstream(folder / "state.json") << state;
  return folder;
}

}  // namespace host::test

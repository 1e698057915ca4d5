#include "host/notify/hook.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <set>
#include <thread>

#include "host/text/failure.h"

namespace host {
namespace {

namespace fs = std::filesystem;
using Processes = std::set<pid_t>;

class File {
 public:
  explicit File(int number) : number_(number) {}
  ~File() {
    if (number_ >= 0) close(number_);
  }
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  int Number() const { return number_; }

 private:
  int number_;
};

bool IsHookName(const std::string& name) {
  return std::ranges::all_of(name, [](unsigned char each) {
    return each < 0x80 && (std::isalnum(each) != 0 || each == '_' || each == '-');
  });
}

// Those of this process, orphans of what it started included.
Processes ListChildren() {
  Processes children;
  std::ifstream list("/proc/thread-self/children");
  for (pid_t child = 0; list >> child;) children.insert(child);
  return children;
}

// A hook may leave a mail program behind that delivers: what was there before is left alone.
// What hangs in the kernel is not waited for.
void KillAll(pid_t hook, const Processes& before) {
  kill(-hook, SIGKILL);
  for (int tries = 0; tries < 50; ++tries) {
    Processes left = ListChildren();
    std::erase_if(left, [&before](pid_t each) { return before.contains(each); });
    if (left.empty()) return;
    for (const pid_t each : left) {
      kill(each, SIGKILL);
      waitpid(each, nullptr, WNOHANG);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
}

// "NAME=value", this program's own environment and the message's.
std::vector<std::string> ListEnvironment(const Message& message) {
  std::vector<std::string> list;
  for (char** each = environ; *each != nullptr; ++each) {
    const std::string line = *each;
    if (!message.environment.contains(line.substr(0, line.find('=')))) list.push_back(line);
  }
  for (const auto& [name, value] : message.environment)
    list.push_back(std::string(name).append("=").append(value));
  return list;
}

std::vector<char*> ToPointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

// In the child, which only makes system calls: a group of its own, so that it can be killed whole,
// and it does not outlive this program.
[[noreturn]] void Become(const char* path, int input, char* const* arguments,
                         char* const* environment) {
  setpgid(0, 0);
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  signal(SIGPIPE, SIG_DFL);
  signal(SIGXFSZ, SIG_DFL);
  dup2(input, STDIN_FILENO);
  dup2(STDERR_FILENO, STDOUT_FILENO);
  execve(path, arguments, environment);
  const char failed[] = "vela-health: this hook cannot be executed\n";
  (void)!write(STDERR_FILENO, failed, sizeof failed - 1);
  _exit(126);
}

// What a hook reads, in memory: it may leave it unread without anybody waiting for it.
bool WriteInput(int file, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(file, text.data(), text.size());
    if (written <= 0) return false;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
  return lseek(file, 0, SEEK_SET) == 0;
}

HookResult Fail(const std::string& what) {
  return {HookResult::Kind::Failed, what + ": " + std::strerror(errno)};
}

HookResult JudgeStatus(int status) {
  using Kind = HookResult::Kind;
  if (WIFSIGNALED(status))
    return {Kind::Failed, "signal " + std::to_string(WTERMSIG(status)) + " ended it"};
  const int code = WEXITSTATUS(status);
  if (code == kHookIsOff) return {Kind::Off, ""};
  if (code == 0) return {Kind::Told, ""};
  return {Kind::Failed, "it ended with status " + std::to_string(code)};
}

// Whether the process ends in time.
bool AwaitEnd(int process, std::chrono::seconds timeout) {
  const auto end = std::chrono::steady_clock::now() + timeout;
  while (true) {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
    pollfd ended{process, POLLIN, 0};
    const int ready = poll(&ended, 1, static_cast<int>(std::max<std::int64_t>(left.count(), 0)));
    if (ready > 0) return true;
    if (ready == 0 || errno != EINTR) return false;
  }
}

}  // namespace

std::vector<std::string> ListHooks(const fs::path& folder) {
  std::vector<std::string> names;
  std::error_code error;
  const fs::directory_iterator entries(folder, error);
  if (error)
    throw Failure(kNoInput, "Cannot read the hooks in " + folder.string() + ": " + error.message() +
                                ". Name their folder with --hooks.");
  for (const auto& entry : entries) {
    const std::string name = entry.path().filename();
    if (IsHookName(name) && entry.is_regular_file(error) && access(entry.path().c_str(), X_OK) == 0)
      names.push_back(name);
  }
  std::ranges::sort(names);
  return names;
}

HookResult RunHook(const fs::path& hook, const Message& message, std::chrono::seconds timeout) {
  const File input(memfd_create("answer", MFD_CLOEXEC));
  if (input.Number() < 0 || !WriteInput(input.Number(), message.json))
    return Fail("cannot hand over the answer");
  std::string path = hook.string();
  std::vector<std::string> texts = ListEnvironment(message);
  const std::vector<char*> environment = ToPointers(texts);
  char* const arguments[] = {path.data(), nullptr};
  // What it starts and disowns becomes a child of this program, which then knows whom to kill.
  prctl(PR_SET_CHILD_SUBREAPER, 1);
  const Processes before = ListChildren();
  const pid_t child = fork();
  if (child == 0) Become(path.c_str(), input.Number(), arguments, environment.data());
  if (child < 0) return Fail("it cannot be started");
  setpgid(child, child);
  const File process(static_cast<int>(syscall(SYS_pidfd_open, child, 0)));
  if (process.Number() < 0 || !AwaitEnd(process.Number(), timeout)) {
    KillAll(child, before);
    return {HookResult::Kind::Hung,
            "it did not end within " + std::to_string(timeout.count()) + " seconds and was killed"};
  }
  int status = 0;
  waitpid(child, &status, 0);
  return JudgeStatus(status);
}

}  // namespace host

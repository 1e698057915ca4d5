// answers PLATFORM MODULE COUNT: asks the shipped module over the shipped platform COUNT times,
// as a host does, and tells what came of it: the last document, how long the answers took,
// what each source said, what was logged, and what the host process has to show for it.
#include <dlfcn.h>
#include <locale.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>

#include <json/writer.h>

#include "platform/voice/voice.h"
#include "tests/linux/system_log.h"
#include "tests/support/recorded_response.h"

namespace {

using Milliseconds = std::chrono::duration<double, std::milli>;
using Table = const VELA::APIMethodRow* (*)();

constexpr int kSettling = 4;  // a source that got no turn in one request gets it in the next

void* Load(const char* path, int flags) {
  void* library = dlopen(path, flags);
  if (library == nullptr) std::fprintf(stderr, "%s\n", dlerror()), std::exit(1);
  return library;
}

template <typename Function>
Function Find(void* library, const char* name) {
  return reinterpret_cast<Function>(dlsym(library, name));
}

std::string Children() {
  std::string children;
  for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
    std::ifstream file(entry.path() / "stat");
    std::string line;
    std::getline(file, line);
    const std::size_t name = line.rfind(')');
    if (name == std::string::npos) continue;
    if (std::atoi(line.c_str() + name + 4) == getpid()) children += line.substr(0, name + 3) + " ";
  }
  return children;
}

std::string Names(const char* folder) {
  std::string names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    std::error_code gone;
    const auto target = std::filesystem::read_symlink(entry, gone);
    if (target != "/proc/" + std::to_string(getpid()) + "/fd")
      names += entry.path().filename().string() + " " + target.string() + ", ";
  }
  return names;
}

std::string Signals() {
  std::string text;
  sigset_t blocked, pending;
  pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
  sigpending(&pending);
  for (int number = 1; number < NSIG; ++number) {
    struct sigaction action = {};
    if (sigaction(number, nullptr, &action) != 0) continue;
    text += std::to_string(reinterpret_cast<std::uintptr_t>(action.sa_sigaction)) + '/' +
            std::to_string(sigismember(&blocked, number)) +
            std::to_string(sigismember(&pending, number)) + ' ';
  }
  return text;
}

// All that a request must leave as it was.
std::map<std::string, std::string> Process() {
  const mode_t mask = umask(0);
  umask(mask);
  return {{"children", Children()},
          {"descriptors", Names("/proc/self/fd")},
          {"threads", Names("/proc/self/task")},
          {"signals", Signals()},
          {"folder", std::filesystem::current_path().string()},
          {"mask", std::to_string(mask)},
          {"locale", setlocale(LC_ALL, nullptr)}};
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 4) return std::fprintf(stderr, "usage: answers PLATFORM MODULE COUNT\n"), 64;
  setlocale(LC_ALL, "C.UTF-8");
  void* platform = Load(arguments[1], RTLD_NOW | RTLD_GLOBAL);
  const auto handler = Find<Table>(Load(arguments[2], RTLD_NOW), "GetAPITable")()->handler;
  const auto reset =
      Find<decltype(&VELAPlatformSourcesReset)>(platform, "VELAPlatformSourcesReset");
  const auto sources = Find<decltype(&VELAPlatformSources)>(platform, "VELAPlatformSources");

  const auto before = Process();
  VELA::RecordedResponse response;
  Milliseconds longest{}, later{};
  const int requests = std::atoi(arguments[3]);
  for (int i = 0; i < requests; ++i) {
    reset();
    const auto start = std::chrono::steady_clock::now();
    handler(nullptr, response.AsResponse());
    const Milliseconds time = std::chrono::steady_clock::now() - start;
    longest = std::max(longest, time);
    if (i >= kSettling) later += time;
  }

  VELASourceReport reports[16];
  const int told = sources(reports, 16);
  for (const auto& [what, now] : Process())
    if (now != before.at(what))
      std::printf("changed %s: %s -> %s\n", what.c_str(), before.at(what).c_str(), now.c_str());
  Json::StreamWriterBuilder line;
  line["indentation"] = "";
  std::printf("document %s\n", Json::writeString(line, response.document).c_str());
  std::printf("longest %.1f ms, then %.1f ms each; %d answers\n", longest.count(),
              later.count() / std::max(1, requests - kSettling), response.answers);
  for (int i = 0; i < told; ++i)
    std::printf("source %s: %s %s\n", reports[i].name,
                reports[i].state == 2   ? "failed"
                : reports[i].state == 1 ? "read"
                                        : "absent",
                reports[i].reason);
  for (const std::string& each : TakeSystemLog()) std::printf("log %s\n", each.c_str());
}

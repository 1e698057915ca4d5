// answers PLATFORM MODULE COUNT [THREADS]: asks the shipped module over the shipped platform
// COUNT times, as a host does, in each of THREADS threads at once, and tells what came of it: the
// last document, how long the answers took, what each source said, what was logged, and what the
// host process has to show for it.
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
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <json/writer.h>

#include "platform/status/source_status.h"
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

struct Asked {
  Json::Value document;
  Milliseconds longest{}, later{};
  VELASourceReport reports[16];
  int told = 0;
};

class Host {
 public:
  Host(const char* platform, const char* module)
      : platform_(Load(platform, RTLD_NOW | RTLD_GLOBAL)),
        handler_(Find<Table>(Load(module, RTLD_NOW), "GetAPITable")()->handler) {}

  Asked Ask(int requests) const {
    Asked asked;
    VELA::RecordedResponse response;
    for (int i = 0; i < requests; ++i) {
      reset_();
      const auto start = std::chrono::steady_clock::now();
      handler_(nullptr, response.AsResponse());
      const Milliseconds time = std::chrono::steady_clock::now() - start;
      asked.longest = std::max(asked.longest, time);
      if (i >= kSettling) asked.later += time / std::max(1, requests - kSettling);
    }
    asked.document.swap(response.document);
    asked.told = sources_(asked.reports, 16);
    return asked;
  }

  // As many threads at once; the last one's. None when not all were told the same.
  std::optional<Asked> Ask(int requests, int threads) const {
    std::vector<Asked> all(static_cast<std::size_t>(threads));
    std::vector<std::thread> running;
    for (Asked& each : all) running.emplace_back([this, requests, &each] { each = Ask(requests); });
    for (std::thread& thread : running) thread.join();
    for (Asked& each : all) each.document.removeMember("uptime");
    for (Asked& each : all) {
      if (each.document == all.back().document) continue;
      std::printf("one thread was told %s another %s", all.back().document.toStyledString().c_str(),
                  each.document.toStyledString().c_str());
      return std::nullopt;
    }
    return std::move(all.back());
  }

 private:
  void* platform_;
  void (*handler_)(VELA::APIRequest*, VELA::APIResponse*);
  decltype(&VELAPlatformSourcesReset) reset_ =
      Find<decltype(reset_)>(platform_, "VELAPlatformSourcesReset");
  decltype(&VELAPlatformSources) sources_ =
      Find<decltype(sources_)>(platform_, "VELAPlatformSources");
};

}  // namespace

int main(int count, char** arguments) {
  if (count < 4) {
    std::fprintf(stderr, "usage: answers PLATFORM MODULE COUNT [THREADS]\n");
    return 64;
  }
  setlocale(LC_ALL, "C.UTF-8");
  const Host host(arguments[1], arguments[2]);
  if (count > 4) std::thread([] {}).join();  // a sanitizer starts one of its own beside the first
  const auto before = Process();
  const int requests = std::atoi(arguments[3]);
  const auto asked = count > 4 ? host.Ask(requests, std::atoi(arguments[4])) : host.Ask(requests);
  if (!asked) return 1;

  for (const auto& [what, now] : Process())
    if (now != before.at(what))
      std::printf("changed %s: %s -> %s\n", what.c_str(), before.at(what).c_str(), now.c_str());
  Json::StreamWriterBuilder line;
  line["indentation"] = "";
  std::printf("document %s\n", Json::writeString(line, asked->document).c_str());
  std::printf("longest %.1f ms, then %.1f ms each\n", asked->longest.count(), asked->later.count());
  for (int i = 0; i < asked->told; ++i) {
    constexpr const char* kStates[] = {"absent", "read", "failed"};
    const VELASourceReport& report = asked->reports[i];
    std::printf("source %s: %s %s\n", report.name, kStates[report.state], report.reason);
  }
  for (const std::string& each : TakeSystemLog()) std::printf("log %s\n", each.c_str());
}

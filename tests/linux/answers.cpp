// answers MODULE COUNT [THREADS]: asks the shipped module over the shipped platform
// COUNT times, as a host does, in each of THREADS threads at once, and tells what came of it: the
// last document, how long the answers took, what each source said, what was logged, and what the
// host process has to show for it.
#include <dlfcn.h>
#include <locale.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <json/writer.h>

#include "tests/linux/source_statuses.h"
#include "tests/linux/system_log.h"
#include "tests/support/recorded_response.h"

namespace {

using Milliseconds = std::chrono::duration<double, std::milli>;
using Table = const VELA::APIMethodRow* (*)();

constexpr int kSettling = 4;  // a source that got no turn in one request gets it in the next

std::string List(const std::string& folder) {
  std::string names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    std::error_code gone;
    const auto target = std::filesystem::read_symlink(entry, gone);
    if (target != "/proc/" + std::to_string(getpid()) + "/fd")
      names += entry.path().filename().string() + " " + target.string() + ", ";
  }
  return names;
}

// Of this thread and process: masks, counts and identities, as the kernel writes them.
std::string Status() {
  std::ifstream file("/proc/thread-self/status");
  std::string text;
  for (std::string line; std::getline(file, line);)
    for (const char* key : {"Umask", "Sig", "Shd", "Uid", "Gid", "Threads"})
      if (line.starts_with(key) && !line.starts_with("SigQ")) text += line + ", ";
  return text;
}

// All that a request must leave as it was.
std::map<std::string, std::string> Process() {
  std::string children;
  std::ifstream file("/proc/thread-self/children");
  std::getline(file, children);
  return {{"children", children},
          {"descriptors", List("/proc/self/fd")},
          {"status", Status()},
          {"folder", std::filesystem::current_path().string()},
          {"locale", setlocale(LC_ALL, nullptr)}};
}

struct Asked {
  Json::Value document;
  Milliseconds longest{}, later{};
  std::map<std::string, SourceReport> reports;
};

void Ask(void (*handler)(VELA::APIRequest*, VELA::APIResponse*), int requests, Asked& asked) {
  VELA::RecordedResponse response;
  for (int i = 0; i < requests; ++i) {
    VELAPlatformSourcesReset();
    const auto start = std::chrono::steady_clock::now();
    handler(nullptr, response.AsResponse());
    const Milliseconds time = std::chrono::steady_clock::now() - start;
    asked.longest = std::max(asked.longest, time);
    if (i >= kSettling) asked.later += time / std::max(1, requests - kSettling);
  }
  asked.document.swap(response.document);
  asked.reports = SourceReports();
}

// In as many threads at once; the last one's. Ends when not all were told the same.
Asked AskInThreads(void (*handler)(VELA::APIRequest*, VELA::APIResponse*), int requests,
                   std::size_t threads) {
  std::vector<Asked> all(threads);
  std::vector<std::thread> running;
  for (Asked& each : all) running.emplace_back(Ask, handler, requests, std::ref(each));
  for (std::thread& thread : running) thread.join();
  for (Asked& each : all) each.document.removeMember("uptime");
  const auto differs = [&all](const Asked& each) { return each.document != all.back().document; };
  if (std::ranges::any_of(all, differs)) throw std::runtime_error("threads were told different");
  return std::move(all.back());
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 3) throw std::invalid_argument("usage: answers MODULE COUNT [THREADS]");
  setlocale(LC_ALL, "C.UTF-8");
  void* module = dlopen(arguments[1], RTLD_NOW);
  if (module == nullptr) throw std::runtime_error(dlerror());
  const auto handler = reinterpret_cast<Table>(dlsym(module, "GetAPITable"))()->handler;
  if (count > 3) std::thread([] {}).join();  // a sanitizer starts one of its own beside the first
  const auto before = Process();
  const int requests = std::atoi(arguments[2]);
  Asked asked;
  if (count > 3)
    asked = AskInThreads(handler, requests, std::stoul(arguments[3]));
  else
    Ask(handler, requests, asked);

  for (const auto& [what, now] : Process())
    if (now != before.at(what))
      std::printf("changed %s: %s -> %s\n", what.c_str(), before.at(what).c_str(), now.c_str());
  Json::StreamWriterBuilder line;
  line["indentation"] = "";
  std::printf("document %s\n", Json::writeString(line, asked.document).c_str());
  std::printf("longest %.1f ms, then %.1f ms each\n", asked.longest.count(), asked.later.count());
  for (const auto& [name, report] : asked.reports)
    std::printf("source %s: %s %s\n", name.c_str(), report.Name().c_str(), report.reason.c_str());
  for (const std::string& each : TakeSystemLog()) std::printf("log %s\n", each.c_str());
}

// The stream of a bounded child's output. The only program that the module runs is the
// SAN tool, so its troubles are that source's.
#include "platform/linux/contract/popen.h"

#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/base/log_once.h"
#include "platform/linux/base/open.h"
#include "platform/linux/base/process.h"
#include "platform/linux/base/root.h"
#include "platform/linux/contract/error.h"
#include "platform/linux/contract/request.h"
#include "platform/status/source_status.h"
#include "velac.h"

using namespace linux_platform;
using source_status::Source, source_status::SourceScope;

namespace {

using std::chrono::milliseconds, std::chrono::steady_clock;

constexpr auto kLongest = milliseconds(5000);  // less when the request has waited already
constexpr auto kShortest = milliseconds(50);   // a tool that is well takes five
constexpr auto kFairTry = milliseconds(900);
// A full SAN status of 100,000 LUNs is about 8 MiB.
constexpr std::size_t kMost = std::size_t{16} << 20;
constexpr std::size_t kBuffer = std::size_t{64} << 10;  // a pipe's capacity

constexpr const char* kRemedy = "velaiscsiep --get_service_status";

constinit CircuitBreaker breaker;
constinit LogOnce failures("SAN", kRemedy);

struct Stream {
  Stream(const std::vector<std::string>& command, milliseconds bound, std::string& reason)
      : arguments(command), time(bound), child(arguments, {time, kMost}, reason) {}

  const std::string& Program() const { return arguments.front(); }

  std::vector<std::string> arguments;
  milliseconds time;
  Child child;
  std::unique_ptr<char[]> buffer = std::make_unique_for_overwrite<char[]>(kBuffer);
};

// The arguments of the tool that was stopped and has not been well since; none otherwise.
class Stopped {
 public:
  std::vector<std::string> Get() {
    const std::lock_guard lock(mutex_);
    return arguments_;
  }
  void Set(std::vector<std::string> arguments) {
    const std::lock_guard lock(mutex_);
    arguments_ = std::move(arguments);
  }

 private:
  std::mutex mutex_;
  std::vector<std::string> arguments_;
};
Stopped& StoppedTool() {
  static Stopped stopped;
  return stopped;
}

// fclose has no way to say how a cookie ended.
thread_local constinit int lastStatus = -1;

// What stopped the tool, for people.
std::string WhyCut(const Stream& stream) {
  if (stream.child.WasCut() == Child::Cut::Long)
    return stream.Program() + " was stopped: it printed more than " + std::to_string(kMost >> 20) +
           " MiB";
  return stream.Program() + " was stopped: it did not finish within " +
         std::to_string(stream.time.count()) + " ms";
}

ssize_t OnRead(void* cookie, char* buffer, std::size_t size) {
  SourceScope scope(Source::San);
  auto& stream = *static_cast<Stream*>(cookie);
  const ssize_t got = stream.child.Read(buffer, size);
  if (got < 0)
    scope.Failed(kRemedy, "the output of %s could not be read: %s", stream.Program().c_str(),
                 std::strerror(errno));
  if (stream.child.WasCut() != Child::Cut::None) failures.Tell(scope, WhyCut(stream));
  return got;
}

// What a run that came to its end, or was stopped, teaches about the next one.
void Learn(const Stream& stream) {
  const Child::Cut cut = stream.child.WasCut();
  if (cut == Child::Cut::None) {
    failures.Recovered();
    return StoppedTool().Set({});
  }
  // With little left of the request's time, being late proves nothing.
  if (cut == Child::Cut::Late && stream.time < TimesFactor(kFairTry)) return;
  breaker.Trip(WhyCut(stream));
  StoppedTool().Set(stream.arguments);
}

int OnClose(void* cookie) {
  SourceScope scope(Source::San);
  const std::unique_ptr<Stream> stream(static_cast<Stream*>(cookie));
  Learn(*stream);
  lastStatus = stream->child.Finish();
  return 0;
}

// How long the tool may run, for all that the request has waited already.
milliseconds RemainingTime(Request& request) {
  const auto deadline = request.GetTimeBudget().DeadlineFor(kLongest);
  return std::chrono::ceil<milliseconds>(deadline - steady_clock::now());
}

// A tool that was stopped is tried without the module, which would log each time that it is
// stopped again. False: it still is not well.
bool PassesTrial(milliseconds time, std::string& reason) {
  const std::vector<std::string> arguments = StoppedTool().Get();
  if (arguments.empty() || !Access(arguments[0], F_OK)) return true;
  Stream trial(arguments, time, reason);
  if (!trial.child.Started()) return false;
  while (trial.child.Read(trial.buffer.get(), kBuffer) > 0) continue;
  Learn(trial);
  if (trial.child.WasCut() == Child::Cut::None) return true;
  reason = WhyCut(trial);
  return false;
}

}  // namespace

bool linux_platform::MayRunSanTool(std::string& reason) {
  const std::string tool = BelowRoot(kSanTool);
  if (!MayStart(tool, reason)) return !Access(tool, F_OK);
  if (breaker.IsOpen(reason)) return false;
  const RequestScope request;
  const milliseconds time = RemainingTime(*request);
  if (time >= kShortest) return PassesTrial(time, reason);
  reason = std::string(kSanTool) + " was not run: other sources have used up the request's time";
  return false;
}

FILE* VLIBCPopen(const char* path, const char* mode, ...) {
  SourceScope scope(Source::San);
  if (path == nullptr || mode == nullptr || std::strcmp(mode, "r") != 0) {
    errno = EINVAL;
    SetError(Error::BadArgument);
    return nullptr;
  }
  std::vector<std::string> arguments = {BelowRoot(path)};
  std::va_list list;
  va_start(list, mode);
  while (const char* argument = va_arg(list, const char*)) arguments.emplace_back(argument);
  va_end(list);

  std::string reason;
  if (breaker.IsOpen(reason)) {
    scope.Failed(kRemedy, "%s was not started: %s", path, reason.c_str());
    SetError(Error::NotStarted);
    return nullptr;
  }
  const RequestScope request;
  auto stream = std::make_unique<Stream>(arguments, RemainingTime(*request), reason);
  FILE* file = nullptr;
  if (stream->child.Started())
    file = fopencookie(stream.get(), "r", {OnRead, nullptr, nullptr, OnClose});
  if (file == nullptr) {
    scope.Failed(kRemedy, "%s",
                 reason.empty() ? "no memory for the tool's output" : reason.c_str());
    SetError(Error::NotStarted);
    return nullptr;
  }
  setvbuf(file, stream.release()->buffer.get(), _IOFBF, kBuffer);
  return file;
}

int VLIBCPclose(FILE* stream) {
  if (stream == nullptr) return SetError(Error::BadArgument);
  lastStatus = -1;
  fclose(stream);
  return lastStatus;
}

// The stream of a bounded child's output. The only program that the module runs is the
// SAN tool, so its troubles are that source's.
#include "platform/linux/popen.h"

#include <sys/types.h>

#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/error.h"
#include "platform/linux/failure_log.h"
#include "platform/linux/patience.h"
#include "platform/linux/process.h"
#include "platform/linux/root.h"
#include "platform/voice/voice.h"
#include "velac.h"

using namespace vela::linuxplatform;
using vela::platform::Source, vela::platform::SourceScope;

namespace {

using std::chrono::milliseconds, std::chrono::steady_clock;

constexpr auto kLongest = milliseconds(5000);  // less when the request has waited already
constexpr auto kShortest = milliseconds(50);   // a tool that is well takes five
constexpr auto kFairTry = milliseconds(900);
// A full SAN status of 100,000 LUNs is about 8 MiB.
constexpr std::size_t kMost = std::size_t{16} << 20;
constexpr std::size_t kBuffer = std::size_t{64} << 10;  // a pipe's capacity

constinit CircuitBreaker breaker;
constinit FailureLog failures("SAN");

struct Stream {
  Stream(const std::vector<std::string>& arguments, milliseconds patience, std::string& reason)
      : program(arguments.at(0)), time(patience), child(arguments, {time, kMost}, reason) {}

  std::string program;
  milliseconds time;
  Child child;
  std::unique_ptr<char[]> buffer = std::make_unique_for_overwrite<char[]>(kBuffer);
};

// fclose has no way to say how a cookie ended.
thread_local constinit int lastStatus = -1;

// What stopped the tool, for people.
std::string WhyCut(const Stream& stream) {
  if (stream.child.WasCut() == Child::Cut::Long)
    return stream.program + " was stopped: it printed more than " + std::to_string(kMost >> 20) +
           " MiB";
  return stream.program + " was stopped: it did not finish within " +
         std::to_string(stream.time.count()) + " ms";
}

ssize_t OnRead(void* cookie, char* buffer, std::size_t size) {
  SourceScope scope(Source::San);
  auto& stream = *static_cast<Stream*>(cookie);
  const ssize_t got = stream.child.Read(buffer, size);
  if (got < 0)
    scope.Failed("the output of %s could not be read: %s", stream.program.c_str(),
                 std::strerror(errno));
  if (stream.child.WasCut() != Child::Cut::None) failures.Failed(scope, WhyCut(stream));
  return got;
}

int OnClose(void* cookie) {
  SourceScope scope(Source::San);
  const std::unique_ptr<Stream> stream(static_cast<Stream*>(cookie));
  // With little left of the request's patience, being late proves nothing.
  const Child::Cut cut = stream->child.WasCut();
  if (cut == Child::Cut::Long || (cut == Child::Cut::Late && stream->time >= Patient(kFairTry)))
    breaker.Trip(WhyCut(*stream));
  if (cut == Child::Cut::None) failures.Fine();
  lastStatus = stream->child.Finish();
  return 0;
}

}  // namespace

bool vela::linuxplatform::MayRunSanTool(std::string& reason) {
  if (breaker.IsOpen(reason)) return false;
  if (WaitUntil(kLongest) - steady_clock::now() >= kShortest) return true;
  reason = std::string(kSanTool) + " was not run: other sources have used up the request's time";
  return false;
}

FILE* VLIBCPopen(const char* path, const char* mode, ...) {
  SourceScope scope(Source::San);
  if (path == nullptr || mode == nullptr || std::strcmp(mode, "r") != 0) {
    errno = EINVAL;
    return SetError(Error::BadArgument), nullptr;
  }
  std::vector<std::string> arguments = {BelowRoot(path)};
  std::va_list list;
  va_start(list, mode);
  while (const char* argument = va_arg(list, const char*)) arguments.emplace_back(argument);
  va_end(list);

  std::string reason;
  if (breaker.IsOpen(reason)) {
    scope.Failed("%s was not started: %s", path, reason.c_str());
    return SetError(Error::NotStarted), nullptr;
  }
  const auto patience = std::chrono::ceil<milliseconds>(WaitUntil(kLongest) - steady_clock::now());
  auto stream = std::make_unique<Stream>(arguments, patience, reason);
  FILE* file = nullptr;
  if (stream->child.Started())
    file = fopencookie(stream.get(), "r", {OnRead, nullptr, nullptr, OnClose});
  if (file == nullptr) {
    scope.Failed("%s", reason.empty() ? "no memory for the tool's output" : reason.c_str());
    return SetError(Error::NotStarted), nullptr;
  }
  setvbuf(file, stream.release()->buffer.get(), _IOFBF, kBuffer);
  return file;
}

int VLIBCPclose(FILE* stream) {
  if (stream == nullptr) return SetError(Error::BadArgument), -1;
  lastStatus = -1;
  fclose(stream);
  return lastStatus;
}
